#!/usr/bin/env bash
# Everything that must pass: formatting, warnings as errors, unit and integration tests, the same under the
# address and undefined-behaviour sanitizers, fuzz corpora, examples, the demo, and the lint check.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
steps=8
step=0
started=$SECONDS
begin() {
  step=$((step + 1))
  printf '\n=== [%d/%d] %s (%d s so far)\n' "$step" "$steps" "$1" "$((SECONDS - started))"
}

begin "packages"
scripts/setup.sh

begin "formatting"
scripts/check-format.sh

begin "build"
cmake --preset dev -Wno-dev >/dev/null
cmake --build --preset dev -j "$jobs"

begin "tests, examples and demo"
ctest --preset dev -j "$jobs"

begin "build with sanitizers"
cmake --preset asan -Wno-dev >/dev/null
cmake --build --preset asan -j "$jobs"

begin "tests, examples and demo under sanitizers"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --preset asan -j "$jobs"

begin "installed package"
scripts/check-install.sh

begin "lint"
scripts/lint.sh

printf '\nAll checks passed in %d s.\n' "$((SECONDS - started))"
