"""part.py PROGRAM ALIGNMENT TREE FIRST LAST TREES OPTION...: the trees of some replicates of a bootstrap.

They are those that one long bootstrap would make under these numbers. TREE saves the search.
"""

import sys

import program


def main():
    name, alignment, tree, first, last, trees, *options = sys.argv[1:]
    summary = program.run(
        name,
        [*options, "--threads", "1", "--evaluate", tree]
        + ["--bootstrap", f"{first}-{last}", "--bootstrap-trees", trees],
        alignment,
    )
    wanted = int(last) - int(first) + 1
    if program.replicates(summary) != wanted:
        sys.exit(f"interrupted after {program.replicates(summary)} of {wanted} replicates")


main()
