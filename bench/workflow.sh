#!/usr/bin/env bash
# bench/workflow.sh [COUNT]: the seconds that the workflow takes for COUNT alignments (1000) of 50 taxa x
# 1,000 sites with 100 replicates each, on 2 cores.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/build.sh"
install_missing snakemake
build release
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
python3 "$root/bench/simulate.py" "$folder/in" "${1:-1000}" 50 1000
cd "$folder"
time snakemake --snakefile "$root/workflow/Snakefile" --cores 2 --quiet \
  --config alignments=in results=out program="$root/build/release/zorvek-wide"
awk 'END { print NR - 1, "alignments in the table" }' out/table.tsv
