#!/usr/bin/env bash
# Compares the distances of zorvek-wide with those of ape's dist.dna on simulated alignments with gaps and
# ambiguity codes and on the NEXUS files given: prints the largest difference for each model and file, and
# fails if one is above 1e-9, or if the two find other pairs too far apart.
# Usage: bench/ape_distances.sh [NEXUS_FILE...]   (r-cran-ape and the build's packages installed)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
files=()
for file in "$@"; do files+=("$(realpath "$file")"); done
cd "$here/.."
cmake --preset release >&2
cmake --build --preset release --target zorvek-wide >&2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
Rscript "$here/ape_distances.R" "$here/../build/release/zorvek-wide" ${files[@]+"${files[@]}"}
