"""python_points.py N: distances of N random points in 10 dimensions, in single precision, to a tree."""

import resource
import sys
import time

import numpy as np
import zorvek


def distances(points):
    """Euclidean, in one matrix of the points' own precision."""
    squares = points @ points.T
    own = np.diag(squares).copy()
    squares *= -2
    squares += own[:, None]
    squares += own[None]
    np.maximum(squares, 0, out=squares)
    np.fill_diagonal(squares, 0)
    return np.sqrt(squares, out=squares)


def main():
    points = np.random.default_rng(1).random((int(sys.argv[1]), 10), dtype=np.float32)
    matrix = distances(points)
    before = time.perf_counter(), time.process_time()
    tree = zorvek.neighbor_joining(matrix)
    wall, processor = time.perf_counter() - before[0], time.process_time() - before[1]
    memory = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 2**20
    print(f"{len(tree.names)} points: {wall:.1f} s, processor {processor:.1f} s, {memory:.1f} GiB")


main()
