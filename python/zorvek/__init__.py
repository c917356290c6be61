"""Minimum-evolution trees from aligned DNA and from distances.

>>> import zorvek
>>> tree = zorvek.search(zorvek.distances("primates.nex"))
>>> print(tree.newick)

Distances are in the unit that they are given in; those of `distances` are in expected substitutions per
site, but for the model "p" (differences per site) and "spectral" (none). All functions let other threads
of Python run. Input at fault raises ValueError, with the words of the program zorvek-wide.
"""

from __future__ import annotations

import os
import warnings
from collections.abc import Callable, Iterable, Mapping, Sequence
from dataclasses import dataclass, field
from typing import Any, NamedTuple, Protocol, Union

import numpy as np
from numpy.typing import NDArray

from . import _core

__all__ = [
    "Distances",
    "Edges",
    "Tree",
    "bootstrap",
    "consensus",
    "distances",
    "evaluate",
    "neighbor_joining",
    "search",
]
__version__ = _core.version

_DEFAULT = _core.defaults


class Distances(NamedTuple):
    """Distances with the names of their taxa, as scikit-bio's DistanceMatrix has them."""

    data: NDArray[np.float64]
    """Shape (n, n), float64, symmetric, 0 on the diagonal; NaN where two taxa share no site."""
    ids: list[str]
    """The n names."""


class _WithIds(Protocol):
    data: Any
    ids: Sequence[str]


class _Record(Protocol):
    id: Any
    seq: Any


Matrix = Union[NDArray[Any], Sequence[Any], _WithIds]
"""What a function takes as D: an array or a list of shape (n, n) or, condensed as by SciPy's pdist,
(n (n - 1) / 2,); or an object with such `data` and with `ids`."""

Sequences = Union[str, "os.PathLike[str]", Mapping[str, str], Iterable[_Record]]
"""What a function takes as sequences: the path of a file in any format that zorvek-wide reads; names with
their sequences; or records with `id` and `seq`, as Biopython's."""

Progress = Callable[[str, float, float], object]
"""Called while a function works with the phase, the share of it that is done (0 to 1), and the length of
the tree (NaN in a bootstrap)."""


class Edges(NamedTuple):
    """The edges of a tree from its root on, each after the one above it. Arrays of shape (edges,).

    Nodes are numbers: the taxa have theirs in the order of the names, from 0 on, and inner nodes those
    from n on.
    """

    parent: NDArray[np.intc]
    child: NDArray[np.intc]
    length: NDArray[np.float64]
    """As estimated; negative at times."""
    support: NDArray[np.float64]
    """0 to 1; NaN where there is none."""


@dataclass(frozen=True)
class Tree:
    """An unrooted tree."""

    newick: str
    """In Newick's format: the first taxon at the top, negative lengths as 0, supports in percent."""
    length: float
    """What was made small, in the unit of the distances; of a tree that was not searched for the sum of
    its edges."""
    edges: Edges = field(repr=False, compare=False)
    names: list[str] = field(repr=False)
    """Of the taxa, in the order of the distances."""
    interrupted: bool = False
    """Whether Ctrl-C ended the work early."""
    replicates: list[str] = field(default_factory=list, repr=False)
    """The trees of a bootstrap, in Newick's format."""


def _tree(core: _core.Tree, length: float, names: list[str], interrupted: bool = False) -> Tree:
    if interrupted:
        warnings.warn("interrupted: this is the best tree so far", RuntimeWarning, stacklevel=3)
    return Tree(core.newick(names), length, Edges(*core.edges()), names, interrupted)


def _matrix(
    D: Matrix, names: Sequence[str] | None, float32: bool = False
) -> tuple[NDArray[Any], list[str], bool]:
    """D as a square array, the names, and whether the array is a copy of the caller's."""
    data: Any = D
    if not isinstance(data, np.ndarray) and hasattr(data, "ids"):
        names = data.ids if names is None else names
        data = data.data
    kept = np.float32 if float32 and getattr(data, "dtype", None) == np.float32 else np.float64
    given = np.ascontiguousarray(data, dtype=kept)
    array = _core.square(given) if given.ndim == 1 else given
    if array.ndim != 2 or array.shape[0] != array.shape[1]:
        raise ValueError(f"distances of shape {array.shape}; give a square or a condensed matrix")
    labels = [str(name) for name in (range(len(array)) if names is None else names)]
    checked = _core.checked(array, labels)
    return checked, labels, checked is not given


def _alignment(sequences: Sequences, format: str) -> _core.Alignment:
    if isinstance(sequences, (str, os.PathLike)):
        return _core.read_alignment(os.fspath(sequences), format)
    if isinstance(sequences, Mapping):
        pairs = list(sequences.items())
    else:
        pairs = [(record.id, record.seq) for record in sequences]
    return _core.make_alignment([str(name) for name, _ in pairs], [str(seq) for _, seq in pairs])


def distances(
    sequences: Sequences,
    model: str = _DEFAULT["model"],
    gamma: float = _DEFAULT["gamma"],
    *,
    format: str = "",
    threads: int = _DEFAULT["threads"],
) -> Distances:
    """The distances of every two of n aligned sequences of DNA or RNA, of shape (n, n), in float64.

    sequences: a path, a mapping of names to sequences, or records with `id` and `seq`.
    model: p, jc69, k80, f81, f84, tn93, logdet or spectral.
    gamma: the shape of gamma-distributed rates among the sites; 0 for none. For jc69, k80, f81, tn93.
    format: of the file at a path; empty for what its content shows.

    Gaps and ambiguity codes are left out pair by pair. Two sequences that are too far apart for the model
    get the largest finite distance.

    Raises ValueError for files and sequences at fault, and OSError never: a file that cannot be read is a
    ValueError too.
    """
    alignment = _alignment(sequences, format)
    settings = _core.ModelSettings(model, gamma)
    return Distances(_core.distances(alignment, settings, threads), alignment.labels)


def neighbor_joining(D: Matrix, names: Sequence[str] | None = None) -> Tree:
    """The neighbour-joining tree (Saitou and Nei 1987) with its own edge lengths.

    D, names: as for `search`.

    An array of float32 is worked on as such, which takes 4 n^2 bytes besides it, and 8 n^2 otherwise.

    Raises ValueError unless there are 4 taxa or more, with distances that are symmetric and 0 or more.
    """
    matrix, labels, own = _matrix(D, names, float32=True)
    return _tree(*_core.join(matrix, own), labels)


def search(
    D: Matrix,
    names: Sequence[str] | None = None,
    criterion: str = _DEFAULT["criterion"], search: str = _DEFAULT["search"],
    iterations: int | None = None, seed: int = _DEFAULT["seed"],
    threads: int = _DEFAULT["threads"], time: float = _DEFAULT["time"],
    progress: Progress | None = None, *,
    starts: int = _DEFAULT["starts"],
) -> Tree:
    """The shortest tree that is found: that of `zorvek-wide --matrix` with the same options.

    D: distances of shape (n, n), or (n (n - 1) / 2,) condensed, in any unit, which is then that of the
        lengths; or an object with such `data` and with `ids`. It is left as it is.
    names: n of them; the ids of D, or else the numbers from 0 on.
    criterion: balanced, the sum of the balanced edge lengths, or ols, that of the positive lengths by
        ordinary least squares.
    search: what improves the neighbour-joining tree: none, nni or spr.
    iterations: rounds of annealing after a descent by spr; without limit if a time is given.
    seed: of all random choices. The result does not depend on `threads`.
    time: seconds after which the search ends; 0 for none.
    starts: starting trees, of which all but the first are randomised joinings.

    Ctrl-C ends the search with the best tree so far and a RuntimeWarning. Memory: 32 n^2 bytes for each
    thread that has a tree under balanced, 16 n^2 under ols.

    Raises ValueError unless there are 4 taxa or more, with distances that are symmetric and 0 or more.
    """
    matrix, labels, _ = _matrix(D, names)
    settings = _core.SearchSettings(criterion, search, iterations, seed, threads, time, starts)
    core, length, interrupted = _core.search(matrix, settings, progress)
    return _tree(core, length, labels, interrupted)


def evaluate(
    newick: str,
    D: Matrix,
    names: Sequence[str] | None = None,
    criterion: str = _DEFAULT["criterion"],
) -> Tree:
    """A given tree with the edge lengths and the length that the criterion gives it.

    newick: the tree, which may be rooted anywhere and have nodes of many edges, which are resolved.
    D, names, criterion: as for `search`.

    Raises ValueError if it cannot be read or its taxa are not those of the distances, and as `search`.
    """
    matrix, labels, _ = _matrix(D, names)
    return _tree(*_core.evaluate(newick, matrix, labels, criterion), labels)


def bootstrap(
    sequences: Sequences,
    replicates: int,
    model: str = _DEFAULT["model"],
    gamma: float = _DEFAULT["gamma"],
    criterion: str = _DEFAULT["criterion"], search: str = _DEFAULT["search"],
    iterations: int | None = None, seed: int = _DEFAULT["seed"],
    threads: int = _DEFAULT["threads"], time: float = _DEFAULT["time"],
    progress: Progress | None = None, *,
    first: int = _DEFAULT["first"],
    support: str = _DEFAULT["support"],
    starts: int = _DEFAULT["starts"],
    format: str = "",
) -> Tree:
    """The tree of aligned sequences with supports: that of `zorvek-wide --bootstrap` with the same options.

    replicates: how often sites are drawn; the trees are in the result's `replicates`.
    first: number of the first replicate: what one draws depends on the seed and its number alone.
    support: fbp, the share of the trees that have a group (Felsenstein 1985), or tbe, the transfer
        bootstrap (Lemoine et al. 2018).

    The rest is as for `distances` and `search`, what is raised included; also ValueError if two of the
    sequences share no site. Ctrl-C in the bootstrap leaves the supports of the replicates that were done.
    """
    alignment = _alignment(sequences, format)
    settings = _core.SearchSettings(criterion, search, iterations, seed, threads, time, starts)
    core, length, interrupted, trees = _core.bootstrap(
        alignment, _core.ModelSettings(model, gamma), settings, replicates, first, support, progress
    )
    names = alignment.labels
    tree = _tree(core, length, names, interrupted)
    tree.replicates.extend(replicate.newick(names) for replicate in trees)
    return tree


def consensus(trees: Iterable[Tree | str]) -> Tree:
    """The majority-rule consensus (Margush and McMorris 1981) of trees with the same taxa.

    trees: results of this module, or trees in Newick's format.

    Supports are the shares of the trees that have a group, lengths the means over those. The length of
    the tree is the sum of its edges.

    Raises ValueError if a tree cannot be read or has other taxa than the first.
    """
    given = list(trees)
    text = "\n".join(tree.newick if isinstance(tree, Tree) else tree for tree in given)
    known = given[0].names if given and isinstance(given[0], Tree) else []
    return _tree(*_core.consensus(text, known))
