#!/usr/bin/env bash
# mutate.sh [NAME...]: puts deliberate faults into a copy of the checkout, one at a time, builds and runs
# the tests, and tells which faults they notice. The faults stand in scripts/faults.txt; with names it
# tries those alone. A fault whose text is not found once in its file is reported: the code moved on.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
copy=$root/build/mutate
export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-$(command -v ccache || true)}

# Only what changed is copied, so that little is built anew.
mkdir -p "$copy/source"
cd "$root"
while IFS= read -r -d '' file; do
  cmp -s "$file" "$copy/source/$file" || cp --parents "$file" "$copy/source"
done < <(git ls-files -z)
cmake -S "$copy/source" -B "$copy/build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=ON >/dev/null

build() {
  cmake --build "$copy/build" --parallel "$(nproc)" --target zorvek_tests zorvek zorvek-wide >"$copy/log" 2>&1
}
# All tests in one process, which ends with the first that fails, and the slowest after them; one that
# hangs counts as failed.
passes() {
  run_tests '-Depth.*' && run_tests 'Depth.*'
}
run_tests() {
  timeout 400 "$copy/build/tests/zorvek_tests" --gtest_fail_fast --gtest_brief=1 --gtest_filter="$1" \
    >"$copy/log" 2>&1
}

# put FILE OLD NEW: replaces the text, which stands once in the file.
put() {
  OLD=$2 NEW=$3 perl -0777 -i -pe '
    $found = () = /\Q$ENV{OLD}\E/g;
    s/\Q$ENV{OLD}\E/$ENV{NEW}/ if $found == 1;
    END { $? = $found == 1 ? 0 : 1 }' "$1"
}

if ! build || ! passes; then
  echo "without a fault the tests do not pass: see $copy/log"
  exit 1
fi

tried=0
missed=0
# A fault is a line "NAME | FILE | OLD | NEW"; lines that begin with # and empty ones are skipped.
while IFS= read -r -u 3 line; do
  [[ -n $line && $line != \#* ]] || continue
  name=${line%% | *} line=${line#* | }
  file=${line%% | *} line=${line#* | }
  old=${line%% | *} new=${line#* | }
  [[ $# -eq 0 || " $* " == *" $name "* ]] || continue
  if ! put "$copy/source/$file" "$old" "$new"; then
    echo "$name: its text does not stand once in $file"
  elif ! build; then
    echo "$name: does not build"
  elif tried=$((tried + 1)) && passes; then
    missed=$((missed + 1))
    echo "$name: NOT NOTICED"
  else
    echo "$name: noticed ($(sed -nE 's/^\[  FAILED  \] ([^ ,]+).*/\1/p' "$copy/log" | head -n 1))"
  fi
  cp "$root/$file" "$copy/source/$file"
done 3<"$root/scripts/faults.txt"
echo "$((tried - missed)) of $tried faults noticed"
