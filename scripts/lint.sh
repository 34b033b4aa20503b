#!/usr/bin/env bash
# clang-tidy over the module, the simulators, the host and the programs. What passed is not checked again until its
# files, a header they include, the configuration or a tool changes.
# Usage: scripts/lint.sh [file.cpp ...]
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset lint -Wno-dev >/dev/null
exec python3 scripts/lint.py "$@"
