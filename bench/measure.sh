# Shared by search_table.sh and input_table.sh, which source it.

cd "$(dirname "${BASH_SOURCE[0]}")/.."
results=$(mktemp)
trap 'rm -f "$results"' EXIT

# measure PROGRAM: builds and runs a benchmark, leaves its CSV in $results, and prints the machine.
measure() {
  cmake --preset release -DZORVEK_BENCH=ON >&2
  cmake --build --preset release --target "$1" >&2
  "build/release/bench/$1" --benchmark_format=csv >"$results"
  echo "One core of: $(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -n 1)," \
    "$(awk '/^cpu MHz/ { printf "%.1f GHz", $4 / 1000; exit }' /proc/cpuinfo)," \
    "$(c++ --version | head -n 1)"
  echo
}
