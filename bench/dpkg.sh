#!/usr/bin/env bash
# shellcheck disable=SC2016  # the dpkg-query formats are literal
# Times the dpkg provider's load of a generated status file against dpkg-query on
# the same file, and against the floor of reading the file once.
#
#   bench/dpkg.sh [BUILD_DIR [RUNS]]
#
# BUILD_DIR defaults to build/ beside this directory and must hold bin/dpkg_load
# (cmake --build BUILD_DIR --target dpkg_load). RUNS (default 7) is the number of
# runs of each command; the three commands take turns so that a busy machine slows
# them alike. The status file (DPKG_BENCH_PACKAGES packages, default 50000) is made
# once and kept under BUILD_DIR/benchdata/, laid out as a dpkg admin directory.
#
# Prints the median wall time and the median peak RSS of each command, and the two
# ratios with their targets: dpkg-query time / load time >= 3, load RSS <= dpkg-query
# RSS.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "${1:-$here/../build}" && pwd)
runs=${2:-7}
packages=${DPKG_BENCH_PACKAGES:-50000}
generator=$here/../tools/make-dpkg-status.py
loader=$build/bin/dpkg_load
admin=$build/benchdata/dpkg-$packages
status=$admin/status

for tool in dpkg-query python3 /usr/bin/time; do
    command -v "$tool" >/dev/null || { echo "dpkg.sh: $tool is missing" >&2; exit 1; }
done
[ -x "$loader" ] || { echo "dpkg.sh: build $loader first" >&2; exit 1; }

if [ ! -s "$status" ]; then
    mkdir -p "$admin"
    python3 "$generator" "$packages" "$status.tmp"
    mv "$status.tmp" "$status"
fi
# dpkg-query reads only "status" here; the rest of an admin directory, empty, so that
# it finds what it looks for.
mkdir -p "$admin/info" "$admin/updates" "$admin/triggers"

# The provider keeps exactly the packages that dpkg-query calls installed (the
# generated names are unique).
expected=$(dpkg-query --admindir="$admin" -W -f '${db:Status-Status}\n' | grep -c '^installed$')
loaded=$("$loader" "$status")
if [ "$loaded" != "$expected" ]; then
    echo "dpkg.sh: the provider kept $loaded packages, dpkg-query reports $expected" >&2
    exit 1
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# shellcheck source=timing.sh
source "$here/timing.sh"

for ((i = 0; i < runs; i++)); do
    run floor cat "$status"
    run dpkgquery dpkg-query --admindir="$admin" -W -f '${Package} ${Version}\n'
    run load "$loader" "$status"
done

size=$(du -m "$status" | cut -f1)
echo "status file: $status ($packages packages, $size MB, $expected installed), $runs runs each"
printf '%-16s %14s %18s\n' "" "median wall s" "median peak RSS MB"
for name in floor dpkgquery load; do
    case $name in
        floor) label="floor (cat)" ;;
        dpkgquery) label="dpkg-query" ;;
        load) label="provider load" ;;
    esac
    printf '%-16s %14.3f %18.1f\n' "$label" "$(median "$name" 1)" \
        "$(median "$name" 2 | awk '{ print $1 / 1024 }')"
done

awk -v qt="$(median dpkgquery 1)" -v lt="$(median load 1)" \
    -v qm="$(median dpkgquery 2)" -v lm="$(median load 2)" 'BEGIN {
    printf "dpkg-query time / load time: %.2f (target >= 3: %s)\n", qt / lt, (qt / lt >= 3) ? "met" : "MISSED"
    printf "load RSS / dpkg-query RSS:   %.2f (target <= 1: %s)\n", lm / qm, (lm <= qm) ? "met" : "MISSED"
}'
