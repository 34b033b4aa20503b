#!/usr/bin/env bash
# Installs the libraries and builds and runs a small host against them, as an integrator would; every installed header
# must compile alone. The manual pages and the completion are there, of every command. Needs the build of the preset "dev".
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

program=$installed/bin/tnv5
man --warnings -l "$installed/share/man/man1/tnv5-member-add.1" 2>&1 >/dev/null | (! grep .)
"$program" completion commands | while IFS=$'\t' read -r words _; do
  page=$installed/share/man/man1/tnv5-${words// /-}.1
  grep -q "^\.SH NAME" "$page" || { echo "no manual page: $page" >&2; exit 1; }
done
bash -euo pipefail -c '
  source "$1"
  check() { # words before the last are written, what must come
    COMP_WORDS=("${@:2}") COMP_CWORD=$(($# - 2))
    _tnv5
    [[ ${COMPREPLY[*]} == "$1" ]] || { echo "completion of ${*:2}: ${COMPREPLY[*]}" >&2; exit 1; }
  }
  check "member membership" tnv5 memb
  check "--zone" tnv5 member add --z
  check "add" tnv5 gate ad
  check "--since" tnv5 journal --json --si
' - "$installed/share/bash-completion/completions/tnv5"
