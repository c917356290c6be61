"""python_search.py PROGRAM MATRIX: the search of the Python module beside that of the program.

Of 11 alternated pairs the median ratio, on one thread: of the call to the whole program, which reads its matrix
from text, and of the search alone. That is what the SPR search takes beyond neighbour joining alone.
"""

import os
import resource
import statistics
import subprocess
import sys
import time

import numpy as np
import zorvek

PAIRS = 11


def program_seconds(program, matrix, search):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(
        [program, "--matrix", "--threads", "1", "--search", search, "--quiet"]
        + ["--output", os.devnull, "--log", os.devnull, matrix],
        check=True,
    )
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def module_seconds(distances, search):
    before = time.process_time()
    zorvek.search(distances, search=search)
    return time.process_time() - before


def main():
    program, matrix = sys.argv[1:]
    distances = np.loadtxt(matrix, skiprows=1, converters={0: lambda label: 0})[:, 1:]
    whole, alone = [], []
    for _ in range(PAIRS):
        theirs, theirs_joined = (program_seconds(program, matrix, s) for s in ("spr", "none"))
        ours, ours_joined = (module_seconds(distances, s) for s in ("spr", "none"))
        whole.append(ours / theirs)
        alone.append((ours - ours_joined) / (theirs - theirs_joined))
    print(f"{len(distances)} taxa: search() {ours:.2f} s, the program {theirs:.2f} s, last of {PAIRS} pairs")
    print(f"median ratio to the whole program {statistics.median(whole):.3f}")
    print(f"median ratio of the search alone {statistics.median(alone):.3f}")


main()
