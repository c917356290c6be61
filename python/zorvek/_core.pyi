"""The library as the package sees it; what users call stands in __init__.py."""

from collections.abc import Callable
from typing import Any

import numpy as np
from numpy.typing import NDArray

Ints = NDArray[np.intc]
Floats = NDArray[Any]  # float64, where float32 is worked on as such that too

version: str
defaults: dict[str, Any]

class Alignment:
    @property
    def labels(self) -> list[str]: ...

class Tree:
    def newick(self, labels: list[str]) -> str: ...
    def edges(self) -> tuple[Ints, Ints, Floats, Floats]: ...

class ModelSettings:
    def __init__(self, model: str, gamma: float) -> None: ...

class SearchSettings:
    def __init__(
        self, criterion: str, search: str, iterations: int | None, seed: int, threads: int,
        time: float, starts: int,
    ) -> None: ...

Progress = Callable[[str, float, float], object]

def read_alignment(path: str, format: str) -> Alignment: ...
def make_alignment(labels: list[str], sequences: list[str]) -> Alignment: ...
def distances(alignment: Alignment, model: ModelSettings, threads: int) -> Floats: ...
def square(condensed: Floats) -> Floats: ...
def checked(matrix: Floats, names: list[str]) -> Floats: ...
def join(matrix: Floats, own: bool) -> tuple[Tree, float]: ...
def search(
    matrix: Floats, settings: SearchSettings, progress: Progress | None
) -> tuple[Tree, float, bool]: ...
def evaluate(
    newick: str, matrix: Floats, names: list[str], criterion: str
) -> tuple[Tree, float]: ...
def bootstrap(
    alignment: Alignment, model: ModelSettings, settings: SearchSettings, replicates: int,
    first: int, support: str, progress: Progress | None,
) -> tuple[Tree, float, bool, list[Tree]]: ...
def consensus(newick: str, names: list[str]) -> tuple[Tree, float, list[str]]: ...
