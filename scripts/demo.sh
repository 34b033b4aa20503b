#!/usr/bin/env bash
# A simulated club on a pseudo-terminal: cards are read on a real serial line, decided from a real database, gates
# opened, everything logged. Ends by itself; exit code 0 when every card got what the database says.
# Usage: scripts/demo.sh [options of `tnv5 demo`]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
echo "demo: building (the first time takes a few minutes)"
cmake --preset dev -Wno-dev >/dev/null
cmake --build --preset dev --target tnv5 -j "$(nproc)"
exec build/dev/apps/tnv5/tnv5 demo "$@"
