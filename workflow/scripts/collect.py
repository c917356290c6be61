"""collect.py TREES TABLE FAILED BATCH...: puts the batches together.

TREES gets a tree a line, as programs that make a species tree of gene trees read them, TABLE a line for
each tree in the same order, FAILED a line for each alignment that the program refused.
"""

import json
import sys

COLUMNS = ("alignment", "taxa", "sites", "length", "seconds", "mean support")
HEADER = "\t".join(COLUMNS) + "\n"


def main():
    trees_path, table_path, failed_path, *batches = sys.argv[1:]
    with open(trees_path, "w", encoding="utf-8") as trees, open(
        table_path, "w", encoding="utf-8"
    ) as table, open(failed_path, "w", encoding="utf-8") as failed:
        table.write(HEADER)
        failed.write("alignment\tfault\n")
        for path in batches:
            with open(path, encoding="utf-8") as file:
                batch = json.load(file)
            for done in batch["done"]:
                table.write("\t".join(done["row"][column] for column in COLUMNS) + "\n")
                with open(done["tree"], encoding="utf-8") as tree:
                    trees.write(tree.read().strip() + "\n")
            for fault in batch["failed"]:
                failed.write(fault["alignment"] + "\t" + " ".join(fault["fault"].split()) + "\n")
                print(f"no tree of {fault['alignment']}, see {failed_path}", file=sys.stderr)


main()
