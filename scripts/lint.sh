#!/usr/bin/env bash
# clang-tidy over the module, the simulators, the host and the programs. A file that passed is not checked again
# until it, a header or the configuration changes.
# Usage: scripts/lint.sh [file.cpp ...]
set -euo pipefail
cd "$(dirname "$0")/.."
[ -f build/dev/compile_commands.json ] || cmake --preset dev -Wno-dev >/dev/null

cache=build/lint
mkdir -p "$cache"
headers=$(git ls-files --cached --others --exclude-standard '*.h' .clang-tidy | sort | xargs cat | sha256sum | cut -c1-16)
if [ $# -gt 0 ]; then
  files=("$@")
else
  mapfile -t files < <(git ls-files --cached --others --exclude-standard 'src/*.cpp' 'sim/*.cpp' 'apps/*.cpp' 'examples/*.cpp')
fi

check() {
  local mark
  mark="$cache/$(printf '%s %s' "$headers" "$(sha256sum "$1")" | sha256sum | cut -c1-32)"
  [ -f "$mark" ] && return 0
  if clang-tidy --quiet -p build/dev "$1" 2>/dev/null >"$mark.log"; then
    mv "$mark.log" "$mark"
    echo "lint: $1"
  else
    cat "$mark.log"
    rm -f "$mark.log"
    echo "lint: $1 FAILED"
    return 1
  fi
}
export -f check
export cache headers
printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -I{} bash -c 'check {}'
echo "lint: ${#files[@]} files are clean"
