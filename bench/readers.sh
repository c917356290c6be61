#!/bin/sh
# Reads every tree that zorvek-wide writes back with ape (R), DendroPy and Biopython, and compares
# labels, edge lengths and supports. What a reader cannot read in any form is named in readers.py.
# Usage: bench/readers.sh PATH/zorvek-wide
# Debian: r-cran-ape python3-dendropy python3-biopython
set -eu
program=$(realpath "$1")
here=$(realpath "$(dirname "$0")")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
/usr/bin/python3 "$here/readers.py" data
for data in headers.fasta blanks.nex signs.nex quotes.fasta; do
  for root in "" --midpoint "--outgroup $(cat $data.outgroup)"; do
    # shellcheck disable=SC2086 # two words or none
    "$program" $data --quiet -b 20 $root --newick newick --output nexus --bootstrap-trees many \
      --consensus consensus
    for file in newick nexus many consensus; do
      /usr/bin/python3 "$here/readers.py" compare $data $file
    done
  done
done
