#!/usr/bin/env bash
# Times the InstallAnywhere provider's load of a generated registry against the
# floor of parsing the same file with expat and empty callbacks.
#
#   bench/anywhere.sh [BUILD_DIR [RUNS]]
#
# BUILD_DIR defaults to build/ beside this directory and must hold bin/anywhere_load
# and bin/expat_floor (cmake --build BUILD_DIR --target anywhere_load expat_floor).
# RUNS (default 9) is the number of runs of each; the two take turns so that a busy
# machine slows them alike. The registry (ANYWHERE_BENCH_PRODUCTS products, default
# 20000, and a component for every second product; tools/gen-anywhere-registry.py)
# is made once and kept under BUILD_DIR/benchdata/.
#
# Prints the median wall time and peak RSS of each, and the ratio with its target:
# load time / floor time <= 3.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "${1:-$here/../build}" && pwd)
runs=${2:-9}
products=${ANYWHERE_BENCH_PRODUCTS:-20000}
generator=$here/../tools/gen-anywhere-registry.py
loader=$build/bin/anywhere_load
floor=$build/bin/expat_floor
registry=$build/benchdata/anywhere-$products.xml

for tool in python3 /usr/bin/time; do
    command -v "$tool" >/dev/null || { echo "anywhere.sh: $tool is missing" >&2; exit 1; }
done
for program in "$loader" "$floor"; do
    [ -x "$program" ] || { echo "anywhere.sh: build $program first" >&2; exit 1; }
done

if [ ! -s "$registry" ]; then
    mkdir -p "$(dirname "$registry")"
    python3 "$generator" "$products" "$registry.tmp"
    mv "$registry.tmp" "$registry"
fi

# Every product and every component is kept.
expected=$((products + (products + 1) / 2))
loaded=$("$loader" "$registry")
if [ "$loaded" != "$expected" ]; then
    echo "anywhere.sh: the provider kept $loaded packages, expected $expected" >&2
    exit 1
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# shellcheck source=timing.sh
source "$here/timing.sh"

for ((i = 0; i < runs; i++)); do
    run floor "$floor" "$registry"
    run load "$loader" "$registry"
done

size=$(du -m "$registry" | cut -f1)
echo "registry: $registry ($products products, $expected packages, $size MB), $runs runs each"
printf '%-22s %14s %18s\n' "" "median wall s" "median peak RSS MB"
for name in floor load; do
    case $name in
        floor) label="floor (expat, empty)" ;;
        load) label="provider load" ;;
    esac
    printf '%-22s %14.3f %18.1f\n' "$label" "$(median "$name" 1)" \
        "$(median "$name" 2 | awk '{ print $1 / 1024 }')"
done

awk -v ft="$(median floor 1)" -v lt="$(median load 1)" 'BEGIN {
    printf "load time / floor time: %.2f (target <= 3: %s)\n", lt / ft, (lt / ft <= 3) ? "met" : "MISSED"
}'
