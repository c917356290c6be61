#!/usr/bin/env bash
# check_install.sh BUILD [CMAKE OPTION...]: installs the build folder BUILD into a scratch prefix, builds
# a program outside the tree against it, with the options, and runs that and the installed zorvek.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$1
shift

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build" --prefix "$scratch/prefix" >"$scratch/log"
cmake -S "$root/examples/library" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$scratch/prefix" "$@" \
  >>"$scratch/log"
cmake --build "$scratch/build" >>"$scratch/log"

expect() {  # expect TEXT COMMAND...: the command's last line of output has the text
  local text=$1 line
  shift
  line=$("$@" | tail -n 1)
  [[ $line == *"$text"* ]] || { echo "$*: '$line' instead of '$text'" >&2; exit 1; }
}
expect "Usage: zorvek nexus_file" "$scratch/prefix/bin/zorvek"
cp "$root/examples/primates.nex" "$scratch"  # results are written beside the input
expect "length of the neighbour-joining tree: 0.189031" "$scratch/build/run_consumer" \
  "$scratch/primates.nex"
expect "Homo_sapiens:" "$scratch/build/consumer" "$scratch/primates.nex"
[ -s "$scratch/prefix/share/man/man1/zorvek.1.gz" ]
