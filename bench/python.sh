#!/usr/bin/env bash
# bench/python.sh: the search of the Python module beside that of the program, and what a neighbour-joining
# tree of 20,000 points costs in single precision. In processor time, so that a busy machine will do.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/build.sh"
build release
build_python
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
python3 "$root/bench/simulate.py" "$folder" 1 2000 1000
"$root/build/release/zorvek-wide" --quiet --search none --distances "$folder/matrix" \
  --output /dev/null --log /dev/null "$folder/gene0000.fasta"
"$python" "$root/bench/python_search.py" "$root/build/release/zorvek-wide" "$folder/matrix"
"$python" "$root/bench/python_points.py" 20000
