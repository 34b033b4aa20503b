#!/usr/bin/env bash
# Fuzzes every target for a while; what is new goes into the corpora.
# Usage: scripts/fuzz.sh [seconds per target, default 60]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset fuzz -Wno-dev >/dev/null
cmake --build --preset fuzz --target fuzz_targets -j "$(nproc)"
for target in build/fuzz/tests/fuzz/fuzz_*; do
  [ -x "$target" ] && [ -f "$target" ] || continue
  name=$(basename "$target")
  echo "fuzz: $name for ${1:-60} s"
  "$target" -max_total_time="${1:-60}" -max_len=4096 -print_final_stats=1 -artifact_prefix=build/fuzz/ \
    "tests/fuzz/corpus/${name#fuzz_}"
done
