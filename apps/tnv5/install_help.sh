#!/usr/bin/env bash
# Writes the manual pages, from the help texts, and the completion for bash into an installation.
# Usage: install_help.sh PROGRAM MAN_DIRECTORY COMPLETION_DIRECTORY
set -euo pipefail
program=$1 man=$2 completion=$3
mkdir -p "$man" "$completion"
"$program" completion bash >"$completion/tnv5"
if ! command -v help2man >/dev/null; then
  echo "tnv5: no manual pages are installed: help2man is not there" >&2
  exit 0
fi
directory=$(mktemp -d)
trap 'rm -r "$directory"' EXIT
version=$("$program" --version)
page() { # words of the command, what it does
  local name="tnv5${1:+-${1// /-}}"
  # help2man runs one program and calls the page after it
  printf '#!/bin/sh\nexec "%s" %s "$@"\n' "$program" "$1" >"$directory/$name"
  chmod +x "$directory/$name"
  help2man --no-info --no-discard-stderr --version-string="$version" --manual="tnv5" --source="$version" \
    --name="$2" "$directory/$name" |
    sed -e "s/^\\.TH TNV5 /.TH ${name^^} /" -e "/^\\.SH NAME/{n;s/^tnv5 /$name /}" >"$man/$name.1"
}
page "" "drives the turnstiles and doors of a club"
"$program" completion commands | while IFS=$'\t' read -r words text; do
  page "$words" "$text"
done
