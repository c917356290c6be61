"""The Python module beside the program, which ZORVEK_WIDE names."""

import io
import os
import re
import subprocess
import sys
import tempfile
import threading
import unittest
import warnings

import numpy as np
import zorvek
from Bio import Phylo, SeqIO

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PROGRAM = os.environ["ZORVEK_WIDE"]
PRIMATES = os.path.join(ROOT, "examples", "primates.nex")


def program(*options):
    done = subprocess.run(
        [PROGRAM, "--output", os.devnull, "--log", os.devnull, "--newick", "-", *options],
        capture_output=True, text=True,
    )
    return done.stdout.strip() if done.returncode == 0 else done.stderr.strip()


def random_distances(n, seed=1):
    points = np.random.default_rng(seed).random((n, 10))
    return np.sqrt(((points[:, None] - points[None]) ** 2).sum(axis=2))


class Python(unittest.TestCase):
    def test_trees_are_those_of_the_program(self):
        self.assertEqual(
            zorvek.bootstrap(PRIMATES, 20, model="k80", gamma=0.5, support="tbe", threads=2).newick,
            program("-b", "20", "-m", "k80", "--gamma", "0.5", "--support", "tbe", PRIMATES),
        )
        with tempfile.TemporaryDirectory() as folder:
            matrix = os.path.join(folder, "matrix")
            program("--distances", matrix, PRIMATES)
            distances = zorvek.distances(PRIMATES)
            for criterion in ("balanced", "ols"):
                tree = zorvek.search(distances, criterion=criterion, iterations=500, seed=7)
                options = ("--criterion", criterion, "--iterations", "500", "--seed", "7")
                self.assertEqual(tree.newick, program("--matrix", *options, matrix))
                fitted = zorvek.evaluate(tree.newick, distances, criterion=criterion)
                self.assertAlmostEqual(fitted.length, tree.length, delta=1e-12)

    def test_distances_are_taken_in_every_form(self):
        square = random_distances(7)
        condensed = square[np.triu_indices(7, 1)]
        names = list("abcdefg")
        expected = zorvek.search(square, names)
        forms = (condensed, square.tolist(), np.asfortranarray(square), zorvek.Distances(square, names))
        for form in forms:
            self.assertEqual(zorvek.search(form, names), expected)
        joined = zorvek.neighbor_joining(square)
        nearly = square * (1 + 1e-9 * np.triu(np.ones((7, 7))))
        before = nearly.copy()
        for form in (*forms, nearly):
            self.assertAlmostEqual(zorvek.neighbor_joining(form).length, joined.length, delta=1e-6)
        np.testing.assert_array_equal(nearly, before)
        self.assertEqual(zorvek.search(forms[-1]).names, names)
        records = list(SeqIO.parse(PRIMATES, "nexus"))
        by_name = {record.id: str(record.seq) for record in records}
        for sequences in (records, by_name):
            np.testing.assert_array_equal(
                zorvek.distances(sequences).data, zorvek.distances(PRIMATES).data
            )

    def test_neighbour_joining_gives_back_the_lengths_of_a_tree(self):
        paths = np.array([3, 8, 16, 17, 9, 17, 18, 16, 17, 11.0])
        for kind in (np.float64, np.float32):
            joined = zorvek.neighbor_joining(paths.astype(kind), list("abcde"))
            self.assertEqual(joined.newick, "(a:1,b:2,(c:4,(d:5,e:6):7):3);")
            self.assertEqual(joined.length, 28)
            np.testing.assert_array_equal(np.sort(joined.edges.length), range(1, 8))
        tiny = zorvek.neighbor_joining(paths * 1e-170)
        self.assertAlmostEqual(tiny.length * 1e170, 28, 9)

    def test_bad_input_raises_the_words_of_the_program(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "bad.fasta")
            with open(path, "w", encoding="utf-8") as file:
                file.write(">a\nACGT\n>b\nACG\n>c\nAC!T\n>d\nACGT\n")
            with self.assertRaises(ValueError) as raised:
                zorvek.distances(path)
            told = program(path)
            with open(path, "w", encoding="utf-8") as file:
                file.write(">a\nA---\n>b\n-CGA\n>c\nACGA\n>d\nA---\n>e\nATTT\n")
            with self.assertRaises(ValueError) as undefined:
                zorvek.bootstrap(path, 1)
            self.assertIn("drop 'b', which", str(undefined.exception))
            told += "\n" + program(path).replace("give --drop-undefined or --leave-out", "drop")
            raised = f"{raised.exception}\n{undefined.exception}"
            self.assertEqual(raised, told.replace("zorvek-wide: ", ""))
        square = random_distances(5)
        bad = {name: square.copy() for name in ("asymmetric", "negative", "missing")}
        bad["asymmetric"][1, 0] = 9
        bad["negative"][1, 2] = bad["negative"][2, 1] = -1
        bad["missing"][3, 2] = bad["missing"][2, 3] = np.nan
        ids = ["a", "b", "A", "c", "d"]
        cases = [
            (lambda: zorvek.search(bad["asymmetric"]), "distance 9 of 1 to 0, but 0"),
            (lambda: zorvek.search(bad["negative"]), "distance -1 of 2 to 1"),
            (lambda: zorvek.neighbor_joining(bad["missing"]), "no distance for 1 pair"),
            (lambda: zorvek.search(square[:, :3]), "square"),
            (lambda: zorvek.search(square[0]), "5 distances; "),
            (lambda: zorvek.search(square[:3, :3]), "3 taxa; a tree needs at least 4"),
            (lambda: zorvek.search(square, ids), "label a belongs to 2 taxa"),
            (lambda: zorvek.search(square, ["a", "b"]), "2 names for 5 taxa"),
            (lambda: zorvek.search(square, criterion="best"), "criterion wants balanced or ols"),
            (lambda: zorvek.search(square, seed=-1), "seed wants a whole number of 0 or more"),
            (lambda: zorvek.bootstrap({"a": "AC", "b": "AC", "c": "AC"}, 1), "sequences: 3 taxa"),
            (lambda: zorvek.distances(PRIMATES, model="f84", gamma=1), "gamma does nothing"),
            (lambda: zorvek.evaluate("(a,b,(c,x));", square[:4, :4], list("abcd")), "x"),
        ]
        for call, words in cases:
            with self.assertRaisesRegex(ValueError, words.replace("(", r"\(")):
                call()

    def test_edges_supports_and_consensus_agree_with_what_others_read(self):
        tree = zorvek.bootstrap(PRIMATES, 30)
        read = Phylo.read(io.StringIO(tree.newick), "newick")
        self.assertEqual(sorted(tip.name for tip in read.get_terminals()),
                         sorted(name.replace(" ", "_") for name in tree.names))
        self.assertAlmostEqual(
            read.total_branch_length(), np.maximum(tree.edges.length, 0).sum(), delta=1e-9
        )
        shown = [clade.confidence for clade in read.get_nonterminals() if clade.confidence is not None]
        kept = tree.edges.support[~np.isnan(tree.edges.support)]
        np.testing.assert_allclose(sorted(shown), sorted(100 * kept), atol=0.051)
        majority = zorvek.consensus([tree, *tree.replicates])
        self.assertEqual(majority.names, tree.names)
        self.assertGreater(np.nanmin(majority.edges.support), 0.5)

    def test_the_example_of_the_readme_prints_what_it_says(self):
        with open(os.path.join(ROOT, "README.md"), encoding="utf-8") as file:
            code, shown = re.search(
                r"```python\n(.*?)```\n\nprints\n\n```\n(.*?)```", file.read(), re.S
            ).groups()
        done = subprocess.run(
            [sys.executable, "-c", code], cwd=ROOT, check=True, capture_output=True, text=True
        )
        self.assertEqual(done.stdout.rstrip(), shown.rstrip())

    def test_ctrl_c_and_callbacks_end_a_search(self):
        told = []
        interrupt = threading.Timer(0.5, lambda: os.kill(os.getpid(), 2))
        interrupt.start()
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            tree = zorvek.search(
                random_distances(150), time=60, progress=lambda *state: told.append(state)
            )
        self.assertTrue(tree.interrupted)
        self.assertIn("interrupted", str(caught[0].message))
        self.assertAlmostEqual(min(length for _, _, length in told), tree.length, 9)

        def fail(*state):
            raise KeyError("mine")

        with self.assertRaises(KeyError):
            zorvek.search(random_distances(150), time=60, progress=fail)


if __name__ == "__main__":
    unittest.main()
