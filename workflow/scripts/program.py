"""A run of zorvek-wide, and what its summary says."""

import re
import subprocess


class BadInput(Exception):
    """The program refuses its input; the text is what it says."""


def run(program, options, alignment):
    """Runs the program and returns its summary as a dict, the first word of each line as the key.

    Raises BadInput if the program refuses the alignment, and RuntimeError if it ends otherwise than it
    should, an interruption included: the tree of half a search is no result here.
    """
    command = [program, *options, alignment]
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode == 1:
        raise BadInput(done.stderr.strip())
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(command)}: status {done.returncode}: {done.stderr.strip()}")
    summary = dict(re.findall(r"^(\S+)\s+(.+)$", done.stdout, re.MULTILINE))
    if "interrupted" in summary.get("seed", ""):
        raise RuntimeError(f"{' '.join(command)}: interrupted")
    return summary


def replicates(summary):
    """The replicates of a bootstrap that was not interrupted, those given up included."""
    text = summary.get("support", "0 replicates")
    given_up = re.search(r"(\d+) given up", text)
    return int(text.split()[0]) + (int(given_up[1]) if given_up else 0)


def supports(newick):
    """The supports of a tree, in percent: the numbers between a parenthesis and a colon."""
    unquoted = re.sub(r"'(?:[^']|'')*'", "", newick)
    return [float(number) for number in re.findall(r"\)([0-9.]+)", unquoted)]
