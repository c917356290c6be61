#!/usr/bin/env bash
# fuzz.sh RUNS [SEED]: fuzzes the reading of both programs, from the corpus, for RUNS executions each, and
# the search, which takes longer, for a tenth of them, in a scratch folder. With a seed the executions are
# the same each time; without one they are new. What it finds is left in build/fuzz as NAME-crash-*, -leak-*,
# -oom-* or -timeout-*, to be run alone by naming it: build/fuzz/fuzz/NAME FILE.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
runs=${1:?number of executions}
seed=${2:-0}

cd "$root"
readers=(reading_fuzz wide_reading_fuzz)
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${readers[@]}" search_fuzz --parallel "$(nproc)" >/dev/null
grown=$(mktemp -d)
trap 'rm -rf "$grown"' EXIT

# fuzz NAME RUNS OPTION...
fuzz() {
  local name=$1 runs=$2
  shift 2
  mkdir -p "$grown/$name"
  "build/fuzz/fuzz/$name" "$grown/$name" -runs="$runs" -seed="$seed" -timeout=10 -rss_limit_mb=2048 \
    -artifact_prefix="build/fuzz/$name-" -close_fd_mask=1 -verbosity=0 -print_final_stats=1 "$@"
}

for name in "${readers[@]}"; do
  mkdir "$grown/$name"
  cp fuzz/corpus/* "$grown/$name"
  fuzz "$name" "$runs" -dict=fuzz/nexus.dict -max_len=2000
done
fuzz search_fuzz $((runs / 10)) -max_len=80 -len_control=0
