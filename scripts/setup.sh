#!/usr/bin/env bash
# Installs what is missing from Debian's packages; does nothing when everything is there.
# Usage: scripts/setup.sh [package ...]   further packages may be named
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t wanted < <(grep -v '^#' scripts/packages.txt)
wanted+=("$@")
missing=()
for package in "${wanted[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$status" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: everything is installed"
  exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "setup: run as root, or install sudo, to install: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -q
"${as_root[@]}" apt-get install -q -y --no-install-recommends "${missing[@]}"
