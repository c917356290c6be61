#!/usr/bin/env bash
# Prints the README's table for zorvek-wide: minimum-evolution length and processor seconds beside ape's
# nj, bionj, fastme.ols and fastme.bal on the same distances: simulated ones, and those of the alignments
# given. Times of the peers are those of the method alone, those of zorvek-wide of the whole program.
# Usage: bench/wide_table.sh [ALIGNMENT...]   (r-cran-ape, libbenchmark-dev and the build's packages installed)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
alignments=()
for file in "$@"; do alignments+=("$(realpath "$file")"); done
cd "$here/.."
cmake --preset release -DZORVEK_BENCH=ON >&2
cmake --build --preset release --target zorvek-wide tree_lengths >&2
build=$PWD/build/release
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"

# wide MATRIX ROUNDS: "seconds length" of one thread
wide() {
  local TIMEFORMAT='%U %S' times
  times=$({ time "$build/zorvek-wide" --matrix "$1" --rounds "$2" --threads 1 \
    --newick "$1.wide.nwk" --output "$1.wide.nex" --quiet; } 2>&1)
  awk -v length_="$("$build/bench/tree_lengths" "$1" "$1.wide.nwk")" \
    '{ print $1 + $2, length_ }' <<<"$times"
}

# row NAME MATRIX
row() {
  local name seconds
  {
    echo "rounds0 $(wide "$2" 0)"
    echo "default $(wide "$2" 1000)"
    Rscript "$here/peers.R" "$2" 2>/dev/null | while read -r name seconds; do
      echo "$name $seconds $("$build/bench/tree_lengths" "$2" "$2.$name.nwk")"
    done
  } | awk -v row="$1" -v taxa="$(head -n 1 "$2" | tr -d ' ')" '
    { time[NR] = $2; length_[NR] = $3 }
    END {
      printf "| %s | %d ", row, taxa
      for (i = 1; i <= NR; ++i)
        printf "| %s, %.3g s ", i == 2 ? sprintf("%.8g", length_[2]) : \
          sprintf("%+.3f %%", 100 * (length_[i] / length_[2] - 1)), time[i]
      print "|"
    }'
}

echo "| distances | taxa | zorvek-wide --rounds 0 | zorvek-wide | nj | bionj | fastme.ols | fastme.bal |"
echo "|---|---|---|---|---|---|---|---|"
for taxa in 20 50 100 200 500 1000; do
  Rscript "$here/simulate.R" "$taxa" 500 "$taxa" "$scratch/simulated$taxa"
  row "simulated, 500 sites" "$scratch/simulated$taxa"
done
for file in ${alignments[@]+"${alignments[@]}"}; do
  matrix=$scratch/$(basename "$file").matrix
  "$build/zorvek-wide" "$file" --drop-undefined --rounds 0 --quiet --distances "$matrix" \
    --output "$scratch/tree" 2>/dev/null || [ -s "$matrix" ]
  row "$(basename "$file")" "$matrix"
done
