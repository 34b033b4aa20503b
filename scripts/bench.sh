#!/bin/sh
# Builds and runs all benchmarks and prints one table; docs/performance.md explains it.
#
#   scripts/bench.sh                 a full run, about ten minutes
#   scripts/bench.sh --quick         a rough figure in two minutes
#   scripts/bench.sh --update-docs   a full run whose table goes into docs/performance.md
#
# The table is also written to build/bench/results.txt.
set -eu
cd "$(dirname "$0")/.."
build=build/bench

say() { printf '* %s\n' "$1" >&2; }

# Debian packages that are missing, installed once.
missing=""
/usr/bin/python3 -c 'import serial' 2>/dev/null || missing="$missing python3-serial"
[ -e /usr/include/benchmark/benchmark.h ] || missing="$missing libbenchmark-dev"
command -v node >/dev/null || missing="$missing nodejs"
command -v npm >/dev/null || missing="$missing npm"
command -v mosquitto >/dev/null || [ -x /usr/sbin/mosquitto ] || missing="$missing mosquitto"
if [ -n "$missing" ]; then
    say "installing$missing"
    as_root=""
    [ "$(id -u)" -eq 0 ] || as_root=sudo
    $as_root apt-get update -q
    # shellcheck disable=SC2086  # a list of packages
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends $missing
fi

# The npm package, with the versions of the lock file; its binary for this system comes with it.
mkdir -p "$build/peers"
if ! cmp -s bench/peers/package-lock.json "$build/peers/package-lock.json" ||
    [ ! -d "$build/peers/node_modules/serialport" ]; then
    say "installing the npm package serialport into $build/peers"
    cp bench/peers/package.json bench/peers/package-lock.json "$build/peers/"
    npm ci --prefix "$build/peers" --ignore-scripts --no-audit --no-fund >&2 || say "measuring without serialport"
fi

say "building (release)"
cmake --preset release -B "$build" -DTNV5_APPS=OFF -DTNV5_EXAMPLES=OFF >"$build/configure.log" || {
    cat "$build/configure.log" >&2
    exit 1
}
cmake --build "$build" >"$build/build.log" || {
    cat "$build/build.log" >&2
    exit 1
}

exec /usr/bin/python3 bench/run.py --build "$build" "$@"
