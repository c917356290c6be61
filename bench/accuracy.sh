#!/usr/bin/env bash
# Prints the README's table of accuracy: splits missed by models and methods on simulated alignments, beside
# other programs. With --stand-in it prints instead what should stand for the distances of pairs that are too
# far apart for a model.
# Usage: bench/accuracy.sh [--stand-in]   (r-cran-ape, fasttree, libbenchmark-dev and the build's packages)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/.."
cmake --preset release -DZORVEK_BENCH=ON >&2
cmake --build --preset release --target zorvek-wide accuracy_simulate >&2
build=$PWD/build/release
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
if [ "${1:-}" = --stand-in ]; then
  Rscript "$here/stand_in.R" "$build/zorvek-wide" "$build/bench/accuracy_simulate"
else
  Rscript "$here/accuracy.R" "$build/zorvek-wide" "$build/bench/accuracy_simulate" 5
fi
