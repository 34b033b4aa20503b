#!/usr/bin/env bash
# Installs the libraries and builds and runs a small host against them, as an integrator would; every installed header
# must compile alone. Needs the build of the preset "dev".
set -euo pipefail
cd "$(dirname "$0")/.."
installed=build/install/prefix
rm -rf "$installed" # what is no longer installed must not be found
cmake --install build/dev --prefix "$installed" >/dev/null
cmake -S tests/install -B build/install/host -G Ninja -Wno-dev -DCMAKE_PREFIX_PATH="$PWD/$installed" \
  -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" | grep 'installed headers'
cmake --build build/install/host
build/install/host/consumer
PKG_CONFIG_PATH=$(dirname "$(find "$PWD/$installed" -name tnv5_devices.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046 # one word an option
c++ -fPIC tests/install/plain.cpp -o build/install/plain $(pkg-config --cflags --libs tnv5_devices)
build/install/plain
QT_QPA_PLATFORM=offscreen build/install/host/form
