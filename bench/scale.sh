#!/usr/bin/env bash
# Prints the README's table of large trees: processor seconds and peak memory of whole programs, on one core,
# from simulated alignments of 1,000 sites, and the exponent by which the time grew since the line before.
# quicktree and ape's nj read the distances that zorvek-wide wrote; that nj is timed without its reading.
# Usage: bench/scale.sh [SECONDS [TAXA...]]   SECONDS is what a program may take, 600 if not given
# (r-cran-ape, fasttree, quicktree, time, libbenchmark-dev and the build's packages)
set -euo pipefail
source "$(dirname "$0")/scratch.sh"
limit=${1:-600}
shift $(($# > 0 ? 1 : 0))
sizes=("${@}")
[ $# -gt 0 ] || sizes=(1000 2000 5000 10000 20000)
enter_scratch accuracy_simulate
export OMP_NUM_THREADS=1

# run PROGRAM COMMAND...: a line of $scratch/figures, without seconds where there was no tree in time.
run() {
  local program=$1 figures
  shift
  if /usr/bin/time -q -f "%U %S %M" -o time timeout "$limit" "$@" >out 2>err; then
    figures=$(awk '{ print $1 + $2, $3 }' time)
    [ ! -s seconds ] || figures="$(cat seconds) ${figures#* }"
  fi
  rm -f seconds
  echo "$program;$taxa;${figures:-}" >>figures
}

wide() {
  local program=$1
  shift
  run "$program" "$wide" x.fa --model tn93 --drop-undefined --threads 1 --quiet --newick n \
    --output o --log l "$@"
}

cat >nj.R <<'R'
suppressMessages(library(ape))
fields <- scan("d", what = "", skip = 1, quiet = TRUE)
n <- as.integer(scan("d", nlines = 1, quiet = TRUE))
fields <- matrix(fields, n, n + 1, byrow = TRUE)
distances <- matrix(as.numeric(fields[, -1]), n, dimnames = list(fields[, 1], fields[, 1]))
rm(fields)
time <- system.time(tree <- nj(distances))
cat(time[["user.self"]] + time[["sys.self"]], file = "seconds")
R

for taxa in "${sizes[@]}"; do
  "$build/bench/accuracy_simulate" "$taxa" 1000 0.5 1 x
  wide "joined (\`--search none\`)" --search none
  wide "default" --search spr
  wide "ordinary least squares, joined" --criterion ols --search none
  wide "ordinary least squares" --criterion ols
  "$wide" x.fa --model tn93 --drop-undefined --search none --quiet --newick n --output o \
    --log l --distances d
  run "quicktree" quicktree -in m d
  run "ape's nj" Rscript nj.R
  run "FastTree -noml" fasttree -nt -noml -nosupport -quiet x.fa
done

awk -F ';' '
  !($1 in seen) { seen[$1] = 1; programs[++count] = $1 }
  !($2 in met) { met[$2] = 1; sizes[++lines] = $2 }
  { split($3, figure, " "); seconds[$1, $2] = figure[1]; memory[$1, $2] = figure[2] }
  END {
    printf "| |"
    for (i = 1; i <= lines; ++i) printf " %d taxa |", sizes[i]
    printf "\n|---|"
    for (i = 1; i <= lines; ++i) printf "---|"
    for (p = 1; p <= count; ++p) {
      printf "\n| %s |", programs[p]
      for (i = 1; i <= lines; ++i) {
        now = seconds[programs[p], sizes[i]]
        if (now == "") { printf " - |"; continue }
        printf " %.2f s, %.0f MB", now, memory[programs[p], sizes[i]] / 1e3
        before = i > 1 ? seconds[programs[p], sizes[i - 1]] : 0
        if (before > 0 && now > 0) printf ", n^%.1f", log(now / before) / log(sizes[i] / sizes[i - 1])
        printf " |"
      }
    }
    print ""
  }' figures
