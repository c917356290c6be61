"""The workflows beside single runs of the program, which ZORVEK_WIDE names."""

import csv
import os
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "bench"))
import simulate

PROGRAM = os.environ["ZORVEK_WIDE"]
COUNT, TAXA, SITES = 20, 10, 120


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


class Workflow(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        simulate.write(self.path("in"), COUNT, TAXA, SITES)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def snakemake(self, file, **config):
        settings = {"results": "out", "alignments": "in", "program": PROGRAM, **config}
        return subprocess.run(
            ["snakemake", "--snakefile", os.path.join(ROOT, "workflow", file), "--cores", "2"]
            + ["--config", *(f"{name}={value}" for name, value in settings.items())],
            cwd=self.folder, capture_output=True, text=True,
        )

    def single(self, name, *options):
        """The Newick tree of one run of the program, and its summary."""
        done = subprocess.run(
            [PROGRAM, "--newick", "-", "--output", os.devnull, "--log", os.devnull, *options]
            + [self.path("in", name)],
            check=True, capture_output=True, text=True,
        )
        return done.stdout, done.stderr

    def rows(self):
        with open(self.path("out", "table.tsv"), encoding="utf-8") as file:
            return list(csv.DictReader(file, delimiter="\t"))

    def test_table_and_trees_are_those_of_single_runs(self):
        with open(self.path("in", "bad.fasta"), "w", encoding="utf-8") as file:
            file.write(">a\nACGT\n>b\nACGA\n")
        done = self.snakemake("Snakefile", batch=6, replicates=20)
        self.assertEqual(done.returncode, 0, done.stderr)
        names = [f"gene{k:04d}.fasta" for k in range(COUNT)]
        self.assertEqual([row["alignment"] for row in self.rows()], names)
        trees = read(self.path("out", "trees.nwk")).splitlines()
        for row, tree in zip(self.rows(), trees, strict=True):
            newick, summary = self.single(row["alignment"], "--bootstrap", "20")
            self.assertEqual(tree, newick.strip())
            self.assertEqual(read(self.path("out", "trees", row["alignment"] + ".nwk")), newick)
            self.assertEqual((row["taxa"], row["sites"]), (str(TAXA), str(SITES)))
            self.assertRegex(summary, rf"\nlength +{re.escape(row['length'])} ")
            supports = [float(number) for number in re.findall(r"\)(\d+\.\d)", newick)]
            self.assertAlmostEqual(
                float(row["mean support"]), sum(supports) / len(supports), delta=0.05
            )
        failed = read(self.path("out", "failed.tsv")).splitlines()
        self.assertEqual(len(failed), 2)
        self.assertRegex(failed[1], r"^bad\.fasta\t.*at least 4")

    def test_a_killed_job_goes_on_where_it_was(self):
        killer = self.path("killer")
        with open(killer, "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\ncase "$*" in *gene0012*) kill -9 $PPID;; esac\n{PROGRAM} "$@"\n')
        os.chmod(killer, 0o755)
        done = self.snakemake("Snakefile", batch=COUNT, replicates=5, program=killer)
        self.assertNotEqual(done.returncode, 0)
        trees = self.path("out", "trees")
        before = {name: os.stat(os.path.join(trees, name)).st_mtime_ns for name in os.listdir(trees)}
        done = self.snakemake("Snakefile", batch=COUNT, replicates=5)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(self.rows()), COUNT)
        for k in range(12):
            name = f"gene{k:04d}.fasta.nwk"
            self.assertEqual(os.stat(os.path.join(trees, name)).st_mtime_ns, before[name])
        # Other options make all trees again.
        done = self.snakemake("Snakefile", batch=COUNT, replicates=0)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual({row["mean support"] for row in self.rows()}, {"NA"})

    def test_a_bootstrap_in_parts_is_that_of_one_run(self):
        alignment = "gene0000.fasta"
        done = self.snakemake(
            "bootstrap.smk", alignment=f"in/{alignment}", replicates=23, part=10, threads=2
        )
        self.assertEqual(done.returncode, 0, done.stderr)
        replicates = self.path("whole.nwk")
        newick, _ = self.single(alignment, "--bootstrap", "23", "--bootstrap-trees", replicates)
        self.assertEqual(read(self.path("out", "replicates.nwk")), read(replicates))
        rounded = [
            re.sub(r":([0-9.e-]+)", lambda length: f":{float(length[1]):.9f}", tree)
            for tree in (newick, read(self.path("out", "tree.nwk")))
        ]
        self.assertEqual(*rounded)


if __name__ == "__main__":
    unittest.main()
