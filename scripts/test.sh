#!/usr/bin/env bash
# Everything that must pass: formatting, warnings as errors with two compilers, unit and integration tests, examples,
# demo and benchmarks, the same tests and the fuzz targets under the address and undefined-behaviour sanitizers, the
# automation objects of Windows, the installed package, and lint. Tests wait more than they work: they run beside the
# next build, and lint beside them. What passed with exactly the files and packages that are there is not done again.
# Usage: scripts/test.sh
#        scripts/test.sh --under-load [-n ROUNDS] ...   the tests beside busy loops instead: see scripts/under-load.sh
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = --under-load ]; then
  shift
  exec scripts/under-load.sh "$@"
fi

jobs=$(nproc)
steps=5
step=0
started=$SECONDS
begin() {
  step=$((step + 1))
  printf '\n=== [%d/%d] %s (%d s so far)\n' "$step" "$steps" "$1" "$((SECONDS - started))"
}

# Starts a command beside the others; its output carries its name.
beside=()
start() {
  local name=$1
  shift
  set -m # a process group of its own, which can be stopped as a whole
  ("$@" 2>&1 | sed -u "s/^/$name: /") &
  set +m
  beside+=($!)
}
# Waits for what was started.
join() {
  local failed=0
  for job in "${beside[@]}"; do
    wait "$job" || failed=1
  done
  beside=()
  [ "$failed" -eq 0 ] || exit 1
}
finish() {
  local result=$?
  for job in "${beside[@]}"; do
    kill -- "-$job" 2>/dev/null || true
  done
  [ "$result" -eq 0 ] || printf '\nFAILED after %d s, see above.\n' "$((SECONDS - started))"
}
trap finish EXIT
trap 'exit 130' INT TERM HUP

begin "packages"
scripts/setup.sh

begin "formatting"
scripts/check-format.sh

begin "build"
cmake --preset dev -Wno-dev >/dev/null
cmake --build --preset dev -j "$jobs"

begin "tests, examples, demo and benchmarks; beside them the build with sanitizers"
start tests scripts/run-tests.sh --unless-passed dev
cmake --preset asan -Wno-dev >/dev/null
nice cmake --build --preset asan -j "$jobs"
join

begin "tests and fuzz targets under sanitizers, automation on Windows, installed package; beside them lint"
start sanitized scripts/run-tests.sh --unless-passed asan
start windows scripts/test-windows.sh
scripts/check-install.sh
nice scripts/lint.sh
join

printf '\nAll checks passed in %d s.\n' "$((SECONDS - started))"
