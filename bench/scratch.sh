# Sourced by the tables of whole programs.

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(dirname "$here")/build/release
wide=$build/zorvek-wide

# enter_scratch [TARGET...]: builds zorvek-wide, and of the benchmarks these, and enters a scratch folder,
# which is gone at the end.
enter_scratch() {
  cd "$here/.."
  cmake --preset release -DZORVEK_BENCH="$([ $# -gt 0 ] && echo ON || echo OFF)" >&2
  cmake --build --preset release --target zorvek-wide "$@" >&2
  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
  cd "$scratch"
}
