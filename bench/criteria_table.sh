#!/usr/bin/env bash
# Prints how far the trees of each criterion are from the true one: the mean Robinson-Foulds distance over
# SETS simulated alignments, beside neighbour joining on the same Jukes-Cantor distances.
# Usage: bench/criteria_table.sh [SETS]   (r-cran-ape and the build's packages installed)
set -euo pipefail
source "$(dirname "$0")/scratch.sh"
sets=${1:-20}
enter_scratch

echo "| taxa | sites | neighbour joining | ols | balanced | balanced, --iterations 3000 |"
echo "|---|---|---|---|---|---|"
for size in "50 500" "200 500" "200 200"; do
  read -r taxa sites <<<"$size"
  for seed in $(seq "$sets"); do
    Rscript "$here/simulate.R" "$taxa" "$sites" "$seed" matrix true
    tree=0
    for options in "--search none" "--criterion ols" "" "--iterations 3000"; do
      # shellcheck disable=SC2086
      "$wide" --matrix matrix $options --output nexus --newick "tree$((++tree))" --quiet
    done
    Rscript -e 'library(ape); true <- read.tree("true")
      cat(sapply(1:4, function(k) dist.topo(true, read.tree(paste0("tree", k)))), "\n")' 2>/dev/null
  done | awk -v row="| $taxa | $sites |" '
    { for (k = 1; k <= NF; ++k) sum[k] += $k }
    END { printf "%s", row; for (k = 1; k <= NF; ++k) printf " %.1f |", sum[k] / NR; print "" }'
done
