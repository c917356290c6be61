#!/usr/bin/env bash
# Prints the README's tables of zorvek-wide beside ape's distance methods on the same distances, simulated
# ones and those of the alignments given: the balanced length, then that of least squares, by how much it
# is above the shortest of the row, and processor seconds. One evaluator, zorvek-wide --evaluate, measures
# all trees. Times of the peers are those of the method alone, those of zorvek-wide of the whole program.
# A peer that crashed three times has a dash. Identical taxa, which zorvek-wide keeps together, stand for one.
# Usage: bench/wide_table.sh [ALIGNMENT...]   (r-cran-ape and the build's packages installed)
set -euo pipefail
source "$(dirname "$0")/scratch.sh"
alignments=()
for file in "$@"; do alignments+=("$(realpath "$file")"); done
enter_scratch

# ours MATRIX TREE OPTION...: makes the tree and prints the seconds of one thread
ours() {
  local TIMEFORMAT='%U %S' matrix=$1 tree=$2 times
  shift 2
  times=$({ time "$wide" --matrix "$matrix" --threads 1 --newick "$tree" --output nexus --quiet \
    "$@"; } 2>&1)
  awk '{ print $1 + $2 }' <<<"$times"
}

# peer MATRIX TREE METHOD: the same of one of ape's
peer() {
  local try
  for try in 1 2 3; do
    Rscript "$here/peers.R" "$1" "$3" "$2" 2>/dev/null && return
  done
  echo "-"
}

# score MATRIX TREE CRITERION: its length
score() {
  "$wide" --matrix "$1" --evaluate "$2" --criterion "$3" | awk '$1 == "length" { print $2; exit }'
}

# distinct MATRIX: without the taxa whose rows are those of an earlier one
distinct() {
  awk 'NR > 1 {
         row = $0
         sub(/^[^ ]+ +/, "", row)
         if (!seen[row]++) { column[++kept] = NR; line[kept] = $0 }
       }
       END {
         print kept
         for (i = 1; i <= kept; ++i) {
           split(line[i], field, / +/)
           printf "%s", field[1]
           for (j = 1; j <= kept; ++j) printf " %s", field[column[j]]
           print ""
         }
       }' "$1" >distinct
  mv distinct "$1"
}

# row NAME MATRIX CRITERION METHOD...: a method is one of ape's, or ours with options in one word
row() {
  local name=$1 matrix=$2 criterion=$3 method seconds
  shift 3
  for method in "$@"; do
    rm -f tree
    case $method in
      -*) seconds=$(ours "$matrix" tree --criterion "$criterion" ${method//,/ }) ;;
      *) seconds=$(peer "$matrix" tree "$method") ;;
    esac
    if [ -s tree ]; then echo "$seconds $(score "$matrix" tree "$criterion")"; else echo "- -"; fi
  done | awk -v row="$name" -v taxa="$(head -n 1 "$matrix" | tr -d ' ')" '
    { time[NR] = $1; length_[NR] = $2 }
    $2 != "-" && (!any++ || $2 + 0 < least) { least = $2 + 0 }
    END {
      printf "| %s | %d | %.6g ", row, taxa, least
      for (i = 1; i <= NR; ++i)
        if (length_[i] == "-") printf "| - "
        else printf "| %.3f %%, %.3g s ", 100 * (length_[i] - least) / least, time[i]
      print "|"
    }'
}

matrices=()
for taxa in 50 100 200 500 1000 2000; do
  Rscript "$here/simulate.R" "$taxa" 500 "$taxa" "simulated $taxa"
  matrices+=("simulated $taxa")
done
for file in ${alignments[@]+"${alignments[@]}"}; do
  matrix=$(basename "$file")
  "$wide" "$file" --drop-undefined --search none --quiet --distances "$matrix" --output nexus \
    2>/dev/null || [ -s "$matrix" ]
  matrices+=("$matrix")
done

for matrix in "${matrices[@]}"; do distinct "$matrix"; done

# table CRITERION METHOD...
table() {
  local criterion=$1 method matrix head="| distances | taxa | shortest |"
  shift
  for method in "$@"; do head+=" ${method//,/ } |"; done
  echo "$head"
  sed 's/[^|]\+/---/g' <<<"$head"
  for matrix in "${matrices[@]}"; do
    row "${matrix/simulated */simulated, 500 sites}" "$matrix" "$criterion" "$@"
  done
  echo
}

table balanced --search,nni --search,spr --iterations,1000 nj bionj fastme.nni fastme.spr
table ols --search,spr --iterations,1000 nj fastme.ols
