#!/usr/bin/env bash
# Prints the README's table of accuracy: splits missed by models and methods on simulated alignments, beside
# other programs. With --stand-in it prints instead what should stand for the distances of pairs that are too
# far apart for a model.
# Usage: bench/accuracy.sh [--stand-in]   (r-cran-ape, fasttree, libbenchmark-dev and the build's packages)
set -euo pipefail
source "$(dirname "$0")/scratch.sh"
enter_scratch accuracy_simulate
if [ "${1:-}" = --stand-in ]; then
  Rscript "$here/stand_in.R" "$wide" "$build/bench/accuracy_simulate"
else
  Rscript "$here/accuracy.R" "$wide" "$build/bench/accuracy_simulate" 20
fi
