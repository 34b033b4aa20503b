#!/usr/bin/env bash
# Runs the tests of a preset in a temporary folder of their own, which must be empty afterwards.
# Usage: scripts/run-tests.sh [--unless-passed] PRESET [ctest option ...]
# With --unless-passed nothing runs when all tests of the preset passed with exactly these files and packages.
set -euo pipefail
cd "$(dirname "$0")/.."

unless_passed=""
if [ "$1" = --unless-passed ]; then
  shift
  git rev-parse --is-inside-work-tree >/dev/null 2>&1 && unless_passed=1
fi
preset=$1
shift

# What the tests depend on: every file that git knows or would, and what is installed.
state() {
  { git ls-files -co --exclude-standard -z | LC_ALL=C sort -z | xargs -0 sha256sum -- 2>/dev/null || true
    dpkg-query -W; } | sha256sum
}
passed=build/$preset/passed
if [ -n "$unless_passed" ]; then
  before=$(state)
  if [ "$before" = "$(cat "$passed" 2>/dev/null)" ]; then
    echo "tests: passed before with exactly these files (scripts/run-tests.sh $preset runs them again)"
    exit 0
  fi
fi
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
if [ -n "$unless_passed" ] && [ $# -eq 0 ]; then
  [ "$before" != "$(state)" ] || echo "$before" >"$passed"
fi
