#!/usr/bin/env bash
# Prints by how much --iterations shorten the balanced trees of random matrices, where every descent ends in
# another local optimum: the mean over the seeds 1 to 20, and the processor seconds of one thread.
# Usage: bench/noise_table.sh [ITERATIONS...]   (r-base-core and the build's packages installed)
set -euo pipefail
source "$(dirname "$0")/scratch.sh"
enter_scratch

# run MATRIX ITERATIONS: "seconds length"
run() {
  "$wide" --matrix "$1" --iterations "$2" --threads 1 --output nexus |
    awk '$1 == "length" { length_ = $2 } $1 == "time" { print $(NF - 1), length_ }'
}

echo "| matrix | taxa | iterations | seconds | shorter by |"
echo "|---|---|---|---|---|"
for kind in stochastic integers; do
  for taxa in 60 100; do
    for seed in $(seq 20); do Rscript "$here/noise.R" $kind $taxa "$seed" "$seed"; done
    for iterations in "${@:-10000}"; do
      for seed in $(seq 20); do echo "$(run "$seed" 0) $(run "$seed" "$iterations")"; done |
        awk -v row="| $kind | $taxa | $iterations" '
          { seconds += $3; shorter += 1 - $4 / $2 }
          END { printf "%s | %.2g | %.2f %% |\n", row, seconds / NR, 100 * shorter / NR }'
    done
  done
done
