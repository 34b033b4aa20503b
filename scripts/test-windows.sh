#!/usr/bin/env bash
# Builds the automation objects of Windows with a cross compiler and runs their tests under Wine, in a prefix of their
# own that goes away afterwards.
# Usage: scripts/test-windows.sh
set -euo pipefail
cd "$(dirname "$0")/.."

compiler=x86_64-w64-mingw32-g++-posix
build=build/windows
mkdir -p "$build/include"
ln -sfn "$PWD/src" "$build/include/tnv5"

launcher=()
command -v ccache >/dev/null && launcher=(ccache)
objects=()
for source in src/platform/automation/{automation,ole_error,value}.cpp src/platform/automation/*_windows.cpp \
  tests/windows/*.cpp; do
  object=$build/$(basename "$source" .cpp).o
  "${launcher[@]}" "$compiler" -std=c++20 -O1 -g -Wall -Wextra -Wpedantic -Wshadow -Werror -DUNICODE -D_UNICODE \
    -I"$build/include" -c "$source" -o "$object"
  objects+=("$object")
done
"$compiler" -static "${objects[@]}" -o "$build/com_test.exe" -lole32 -loleaut32 -luuid -ladvapi32

first() { for each in "$@"; do [ ! -x "$each" ] || { echo "$each"; return; }; done; }
wine=$(first /usr/lib/wine/wine64 "$(command -v wine64)" "$(command -v wine)")
server=$(first /usr/lib/wine/wineserver64 /usr/lib/wine/wineserver "$(command -v wineserver)")
WINEPREFIX=$(mktemp -d)
export WINEPREFIX WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
finish() {
  "$server" -k || true # of this prefix only
  "$server" -w || true
  rm -rf "$WINEPREFIX"
}
trap finish EXIT
timeout 600 "$wine" "$build/com_test.exe"
