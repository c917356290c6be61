"""Trees of some alignments, one after the other. Writes what collect.py reads on standard output.

Of each alignment, RESULTS/trees/NAME.nwk is its tree, RESULTS/logs/NAME.log the program's report, and
RESULTS/records/NAME.json says what the tree was made of and its row of the table. An alignment whose
record still holds is not done again.
"""

import argparse
import json
import os
import shlex
import subprocess
import sys

import program


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--options", required=True, help="of the program, as a shell takes them")
    parser.add_argument("--results", required=True)
    parser.add_argument("alignments", nargs="+")
    return parser.parse_args()


def made_of(alignment, options, version):
    """What a tree depends on; as it comes back from JSON."""
    file = os.stat(alignment)
    return {
        "alignment": os.path.abspath(alignment),
        "bytes": file.st_size,
        "modified": file.st_mtime_ns,
        "options": options,
        "version": version,
    }


def read_record(path):
    try:
        with open(path, encoding="utf-8") as file:
            return json.load(file)
    except FileNotFoundError:
        return {}


def write_record(path, record):
    with open(path + ".part", "w", encoding="utf-8") as file:
        json.dump(record, file)
    os.replace(path + ".part", path)


def row(alignment, summary, tree):
    with open(tree, encoding="utf-8") as file:
        supports = program.supports(file.read())
    return {
        "alignment": os.path.basename(alignment),
        "taxa": summary["taxa"],
        "sites": summary["sites"],
        "length": summary["length"].split()[0],
        "seconds": summary["time"].split()[0],
        "mean support": f"{sum(supports) / len(supports):.1f}" if supports else "NA",
    }


def main():
    arguments = parse_arguments()
    options = ["--threads", "1", *shlex.split(arguments.options)]
    version = subprocess.run(
        [arguments.program, "--version"], check=True, capture_output=True, text=True
    ).stdout.strip()
    folders = [os.path.join(arguments.results, name) for name in ("trees", "logs", "records")]
    for folder in folders:
        os.makedirs(folder, exist_ok=True)
    trees, logs, records = folders
    batch = {"done": [], "failed": []}
    for alignment in arguments.alignments:
        name = os.path.basename(alignment)
        tree = os.path.join(trees, name + ".nwk")
        record_path = os.path.join(records, name + ".json")
        wanted = made_of(alignment, options, version)
        record = read_record(record_path)
        if record.get("made of") != wanted or not os.path.exists(tree):
            try:
                summary = program.run(
                    arguments.program,
                    [*options, "--newick", tree, "--log", os.path.join(logs, name + ".log")]
                    + ["--output", os.devnull],
                    alignment,
                )
            except program.BadInput as fault:
                print(fault, file=sys.stderr)
                batch["failed"].append({"alignment": name, "fault": str(fault)})
                continue
            record = {"made of": wanted, "row": row(alignment, summary, tree)}
            write_record(record_path, record)
        batch["done"].append({"row": record["row"], "tree": tree})
    json.dump(batch, sys.stdout)


main()
