#!/usr/bin/env bash
# Plays docs/first-club.md in a temporary folder with the real program on simulated equipment, and writes what is
# printed into the page. Its commands and the lines in parentheses are yours to edit; the test first_club_test plays
# the same and compares.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset dev -Wno-dev >/dev/null
cmake --build --preset dev --target first_club_test -j "$(nproc)"
TNV5_WRITE=1 build/dev/tests/integration/first_club_test
git --no-pager diff --stat -- docs/first-club.md
