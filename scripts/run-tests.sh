#!/usr/bin/env bash
# Runs the tests of a preset in a temporary folder of their own, which must be empty afterwards.
# Usage: scripts/run-tests.sh PRESET [ctest option ...]
set -euo pipefail
cd "$(dirname "$0")/.."

preset=$1
shift
TMPDIR=$(mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
XDG_RUNTIME_DIR=$TMPDIR/runtime # Qt would make one that stays
export XDG_RUNTIME_DIR
mkdir -m 700 "$XDG_RUNTIME_DIR"
export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1

ctest --preset "$preset" -j "$(nproc)" "$@"
rmdir "$XDG_RUNTIME_DIR" 2>/dev/null || true
left=$(find "$TMPDIR" -mindepth 1)
if [ -n "$left" ]; then
  printf 'tests: left behind:\n%s\n' "$left" >&2
  exit 1
fi
