#!/usr/bin/env bash
# A simulated club on a pseudo-terminal: cards are read on a real serial line, decided from a real database, gates
# opened, everything logged. Ends by itself; exit code 0 when every card got what the database says.
# Usage: scripts/demo.sh [options of `tnv5 demo`]
#        scripts/demo.sh --desk [options of `tnv5-desk`]
# With --desk the desk of the club is started, too; whichever ends first ends the other. The exit code is the demo's
# when it has come to its end, and 0 when the desk was closed before.
set -euo pipefail
cd "$(dirname "$0")/.."
desk=false
if [ "${1:-}" = --desk ]; then
  desk=true
  shift
fi
scripts/setup.sh
echo "demo: building (the first time takes a few minutes)"
cmake --preset dev -Wno-dev >/dev/null
targets=(tnv5)
$desk && targets+=(tnv5-desk)
cmake --build --preset dev --target "${targets[@]}" -j "$(nproc)"
$desk || exec build/dev/apps/tnv5/tnv5 demo "$@"

folder=$(mktemp -d)
club=
window=
finish() {
  for process in $window $club; do
    kill "$process" 2>/dev/null || true
  done
  wait || true
  rm -rf "$folder"
}
trap finish EXIT
build/dev/apps/tnv5/tnv5 demo --plain --desk "$folder/club.socket" &
club=$!
build/dev/apps/tnv5-desk/tnv5-desk --socket "$folder/club.socket" "$@" &
window=$!
code=0
wait -n -p first "$club" "$window" || code=$?
if [ "$first" = "$window" ] && [ "$code" -ne 0 ]; then
  echo "demo: the desk ended with $code" >&2
fi
exit "$code"
