#!/usr/bin/env bash
# check_page.sh ZORVEK_WIDE: draws a page of the primates' tree and uses it in Chromium, without a window
# and without a network.
set -euo pipefail
program=$(realpath "$1")
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

cp "$root/examples/primates.nex" "$folder"
cd "$folder"
"$program" primates.nex --quiet --bootstrap 100 --draw page.html
{ sed '/<\/body>/,$d' page.html; echo "<script>"; cat "$root/tests/page_check.js"; echo "</script></body></html>"; } > checked.html
timeout 100 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
  --disable-background-networking --disable-component-update --disable-sync \
  --user-data-dir="$folder/profile" --window-size=1200,800 --virtual-time-budget=3000 \
  --dump-dom "file://$folder/checked.html" > dom 2> browser.log || { cat browser.log >&2; exit 1; }
result=$(grep -o 'checked [0-9]*, faults .*' dom | head -1) || result="the page's script broke off"
echo "${result%%</body>*}"
[[ $result =~ ^checked\ [0-9]+,\ faults\ 0\  ]]
