#!/usr/bin/env bash
# Prints distances per second and core by model, on an alignment of 1,000 taxa x 1,000 sites, beside ape's
# dist.dna with pairwise deletion on the same sequences.
# Usage: bench/distance_table.sh  (Google Benchmark, r-cran-ape and the build's packages installed)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/measure.sh"
cmake --preset release -DZORVEK_BENCH=ON >&2
cmake --build --preset release --target accuracy_simulate >&2
measure distance_bench
sequences=$(mktemp)
trap 'rm -f "$results" "$sequences" "$sequences".*' EXIT
build/release/bench/accuracy_simulate 1000 1000 0.5 1 "$sequences"
Rscript - "$sequences.fa" <<'R' >>"$results"
suppressMessages(library(ape))
sequences <- read.FASTA(commandArgs(TRUE)[1])[1:300]
sequences <- as.matrix(sequences)
for (model in c(p = "raw", jc69 = "JC69", k80 = "K80", f81 = "F81", f84 = "F84", tn93 = "TN93", logdet = "paralin")) {
  time <- system.time(dist.dna(sequences, model, pairwise.deletion = model != "paralin"))[["user.self"]]
  name <- c(raw = "p", JC69 = "jc69", K80 = "k80", F81 = "f81", F84 = "f84", TN93 = "tn93", paralin = "logdet")[[model]]
  cat("ape", name, 300 * 299 / 2 / time, sep = ",")
  cat("\n")
}
R
awk -F, '
  function millions(rate) { return sprintf("%.2f", rate / 1e6) }
  $1 ~ /^"Distances/ { gsub(/"/, "", $1); sub("Distances/", "", $1); name[++rows] = $1; rate[$1] = $7 }
  $1 == "ape" { ape[$2] = $3 }
  END {
    print "| model | million distances per second | ape | ratio |"
    print "|---|---|---|---|"
    for (i = 1; i <= rows; ++i) {
      theirs = ape[name[i]]
      printf "| %s | %s | %s | %s |\n", name[i], millions(rate[name[i]]), \
        theirs ? millions(theirs) : "-", theirs ? sprintf("%.0fx", rate[name[i]] / theirs) : "-"
    }
  }' "$results"
