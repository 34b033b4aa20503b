#!/bin/sh
# A search of a moment, as a test: search.sh PROGRAM CORPUS FOLDER. Finds stay out of the corpus; an input that breaks
# something is kept in FOLDER.
set -eu
finds=$(mktemp -d)
trap 'rm -rf "$finds"' EXIT
"$1" -max_total_time=3 -max_len=4096 -print_final_stats=1 -artifact_prefix="$3/" "$finds" "$2"
