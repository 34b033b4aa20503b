#!/usr/bin/env bash
# Makes the pictures of the desk for the docs (docs/images/desk-*.png) from the simulated club, in three languages and
# two themes, without a screen. Needs the build of the preset "dev".
# Usage: scripts/desk-screenshots.sh [FOLDER]
set -euo pipefail
cd "$(dirname "$0")/.."
folder=${1:-docs/images}
build=build/dev/apps
work=$(mktemp -d)
trap 'kill "$demo" 2>/dev/null || true; wait "$demo" 2>/dev/null || true; rm -rf "$work"' EXIT
demo=
# A demo that is not disturbed: the cable goes bad after a third of its time.
TMPDIR=$work "$build/tnv5/tnv5" demo --plain --seconds 600 --desk "$work/club.socket" >"$work/demo.log" 2>&1 &
demo=$!
take() { # FILE LANGUAGE THEME
  QT_QPA_PLATFORM="offscreen:configfile=$work/screen.json" QT_LOGGING_RULES='*.warning=false' \
    "$build/tnv5-desk/tnv5-desk" --socket "$work/club.socket" --language "$2" --theme "$3" --after 10 \
    --screenshot "$work/$1" 2>"$work/desk.log" || { cat "$work/desk.log" >&2; exit 1; }
}
cat >"$work/screen.json" <<'JSON'
{"screens": [{"name": "desk", "x": 0, "y": 0, "width": 1280, "height": 800, "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]}
JSON
mkdir -p "$folder"
sleep 3 # the first cards are read
for language in en ru uk; do
  for theme in light dark; do
    take "desk-$language-$theme.png" "$language" "$theme"
    mv "$work/desk-$language-$theme.png" "$folder/"
    echo "$folder/desk-$language-$theme.png"
  done
done
