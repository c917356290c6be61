#!/usr/bin/env bash
# Runs the input benchmark and prints its table: the time of each phase up to the starting length, and in
# brackets how many times as long the plain loops take in the same run, where that is bearable.
# Usage: bench/input_table.sh  (Google Benchmark and the build's packages installed)
set -euo pipefail
source "$(dirname "$0")/measure.sh"
measure input_bench
awk -F, '
  # "Counting/fast/200/1000",iterations,real,cpu,ms,bytes,items per second,...
  $1 ~ /^"[A-Z]/ {
    gsub(/"/, "", $1); split($1, name, "/"); size = name[3] " | " name[4]
    rate[name[1], name[2], size] = $7; time[name[1], name[2], size] = $4
    if (!(size in seen)) { seen[size] = 1; order[++sizes] = size }
  }
  # The eigensystems are measured on a sample of the pairs: the time is that of all of them.
  function seconds(phase, size,  part) {
    if (phase != "Eigensystems") return time[phase, "fast", size] / 1000
    split(size, part, " [|] ")
    return part[1] * (part[1] - 1) / 2 / rate[phase, "fast", size]
  }
  function ratio(value) { return sprintf(value < 10 ? " (%.1fx)" : " (%.0fx)", value) }
  function cell(phase, size) {
    return sprintf(" %.3g s%s |", seconds(phase, size), (phase, "slow", size) in rate ? \
      ratio(rate[phase, "fast", size] / rate[phase, "slow", size]) : "")
  }
  END {
    phases = split("Reading Planes Counting Eigensystems CandidateLists StartingLength", phase, " ")
    printf "| taxa | sites | reading | planes | counting | eigensystems | candidate lists | all, to the starting length |\n"
    print "|---|---|---|---|---|---|---|---|"
    for (i = 1; i <= sizes; ++i) {
      row = "| " order[i] " |"
      for (p = 1; p <= phases; ++p) row = row cell(phase[p], order[i])
      print row
    }
  }' "$results"
