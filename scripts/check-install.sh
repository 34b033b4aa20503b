#!/usr/bin/env bash
# Installs the libraries into a temporary prefix and builds and runs a small host against them, as an integrator
# would.
set -euo pipefail
cd "$(dirname "$0")/.."
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install build/dev --prefix "$prefix/installed" >/dev/null
cmake -S tests/install -B "$prefix/build" -G Ninja -Wno-dev -DCMAKE_PREFIX_PATH="$prefix/installed" >/dev/null
cmake --build "$prefix/build"
"$prefix/build/consumer"
