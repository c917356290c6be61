#!/usr/bin/env bash
# mutate.sh [NAME...]: puts deliberate faults into a copy of the checkout, one at a time, builds and runs
# the tests, and tells which faults they notice. The faults stand in scripts/faults.txt; with names it
# tries those alone. A fault whose text is not found once in its file is reported: the code moved on.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
copy=$root/build/mutate
export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-$(command -v ccache || true)}

rm -rf "$copy/source"
mkdir -p "$copy/source"
(cd "$root" && git ls-files -z | xargs -0 cp --parents -t "$copy/source")
cmake -S "$copy/source" -B "$copy/build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=ON >/dev/null
cmake --build "$copy/build" --parallel "$(nproc)" >/dev/null

# put FILE OLD NEW: replaces the text, which stands once in the file.
put() {
  OLD=$2 NEW=$3 perl -0777 -i -pe '
    BEGIN { $found = 0 }
    $found = () = /\Q$ENV{OLD}\E/g;
    s/\Q$ENV{OLD}\E/$ENV{NEW}/ if $found == 1;
    END { exit($found == 1 ? 0 : 1) }' "$1"
}

noticed() {  # whether the build or a test fails
  ! cmake --build "$copy/build" --parallel "$(nproc)" >"$copy/log" 2>&1 ||
    ! (cd "$copy/build" && timeout 600 ctest --parallel "$(nproc)" -E '^(version|install)$' \
      --stop-on-failure >"$copy/log" 2>&1)
}

tried=0
missed=0
# A fault is a line "NAME | FILE | OLD | NEW"; lines that begin with # and empty ones are skipped.
while IFS=$'\t' read -r -u 3 name file old new; do
  [[ -n $name && $name != \#* ]] || continue
  [[ $# -eq 0 || " $* " == *" $name "* ]] || continue
  if ! put "$copy/source/$file" "$old" "$new"; then
    echo "$name: its text does not stand once in $file"
    cp "$root/$file" "$copy/source/$file" 2>/dev/null || true
    continue
  fi
  tried=$((tried + 1))
  if noticed; then
    echo "$name: noticed ($(grep -oE '[0-9]+ - [^ ]+' "$copy/log" | head -n 1 || true))"
  else
    missed=$((missed + 1))
    echo "$name: NOT NOTICED"
  fi
  cp "$root/$file" "$copy/source/$file"
done 3< <(sed 's/ | /\t/g' "$root/scripts/faults.txt")
echo "$((tried - missed)) of $tried faults noticed"
