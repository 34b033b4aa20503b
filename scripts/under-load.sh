#!/usr/bin/env bash
# Runs the tests again and again while busy loops take the processors: what fails here judges by the machine's speed.
# Benchmarks, which do so by trade, are left out.
# Usage: scripts/under-load.sh [-n ROUNDS] [-l LOOPS] [ctest option ...]     20 rounds beside 8 loops unless told
set -euo pipefail
cd "$(dirname "$0")/.."

rounds=20
loops=8
while getopts n:l: option; do
  case $option in
    n) rounds=$OPTARG ;;
    l) loops=$OPTARG ;;
    *) exit 2 ;;
  esac
done
shift $((OPTIND - 1))

scripts/setup.sh
cmake --preset dev -Wno-dev >/dev/null
cmake --build --preset dev -j "$(nproc)"

busy=()
log=$(mktemp)
stop() {
  [ ${#busy[@]} -eq 0 ] || kill "${busy[@]}" 2>/dev/null || true
  busy=()
  rm -f "$log"
}
trap stop EXIT
trap 'exit 130' INT TERM HUP
for ((i = 0; i < loops; i++)); do
  # A loop ends with this script, even when it is killed.
  ( trap - EXIT INT TERM HUP; while kill -0 $$ 2>/dev/null; do for ((j = 0; j < 1000000; j++)); do :; done; done ) &
  busy+=($!)
done

green=0
failed=""
for ((round = 1; round <= rounds; round++)); do
  began=$SECONDS
  if scripts/run-tests.sh dev --label-exclude measures "$@" >"$log" 2>&1; then
    green=$((green + 1))
    echo "under load: round $round of $rounds passed in $((SECONDS - began)) s"
  else
    cat "$log"
    echo "under load: round $round of $rounds FAILED"
    failed+=$(sed -n 's/.* - \(.*\) (\(Failed\|Timeout\|SEGFAULT\|.*Exception.*\|Subprocess.*\))$/\1/p' "$log")$'\n'
  fi
done

echo "under load: $green of $rounds rounds passed beside $loops busy loops"
[ "$green" -eq "$rounds" ] || { sort <<<"$failed" | sed '/^$/d' | uniq -c | sort -rn; exit 1; }
