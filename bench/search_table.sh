#!/usr/bin/env bash
# Runs the search benchmark and prints the README's table: evaluations, passes and steps per second, each
# with its ratio to the plain loops in the same run, and how the time of a pass grows with the taxa.
# Usage: bench/search_table.sh  (Google Benchmark and the build's packages installed)
set -euo pipefail
source "$(dirname "$0")/measure.sh"
measure search_bench
awk -F, '
  # "Steps/fast/100",iterations,real,cpu,unit,bytes,items per second,...
  $1 ~ /^"[A-Z]/ {
    gsub(/"/, "", $1); split($1, name, "/")
    rate[name[1], name[2], name[3]] = $7; time[name[1], name[2], name[3]] = $4 + 0
    if (!(name[3] in seen)) { seen[name[3]] = 1; size[++sizes] = name[3] }
  }
  # three significant digits, with commas between the thousands
  function grouped(value,   unit, digits, text) {
    for (unit = 1; value / unit >= 1000; unit *= 10) continue
    digits = sprintf("%d", int(value / unit + 0.5) * unit)
    for (text = ""; length(digits) > 3; digits = substr(digits, 1, length(digits) - 3))
      text = "," substr(digits, length(digits) - 2) text
    return digits text
  }
  function cell(what, taxa) {
    return grouped(rate[what, "fast", taxa]) " | " ((what, "slow", taxa) in rate ? \
      grouped(rate[what, "fast", taxa] / rate[what, "slow", taxa]) "x" : "-")
  }
  END {
    print "| taxa | evaluations of new trees per second | ratio | passes per second | ratio | search steps per second | ratio |"
    print "|---|---|---|---|---|---|---|"
    for (i = 1; i <= sizes; ++i)
      print "| " size[i] " | " cell("Evaluation", size[i]) " | " cell("Passes", size[i]) " | " cell("Steps", size[i]) " |"
    printf "\nFrom 100 to 1,000 taxa the time of a pass grows as n^%.2f.\n", \
      log(time["Passes", "fast", 1000] / time["Passes", "fast", 100]) / log(10)
  }' "$results"
