#!/usr/bin/env bash
# Times the Tessel catalog provider's full load (the listing command, its output
# read after the command ended, parsing and records) of a 100,000-package product
# against the bare listing command on the same product, in the same run.
#
#   bench/tessel.sh [BUILD_DIR [RUNS]]
#
# BUILD_DIR defaults to build/ beside this directory; bin/tessel_load is built there
# when missing (cmake --build BUILD_DIR --target tessel_load). RUNS (default 21) is
# the number of runs of each command; the two commands take turns so that a busy
# machine slows them alike. The product directory is made once with
# tools/gen-tessel-product.py and kept under BUILD_DIR/benchdata/tessel100000.
#
# Prints the median wall time, CPU time (user + system, children included) and peak
# RSS of each command and the ratio load / command with its target (<= 1.3), in
# wall time, in CPU time and between the fastest runs (both less disturbed on a
# busy machine). With INVENTORY=1,
# the whole `regscan inventory --set pdxDirectory=DIR` (built when missing; it also
# lists the machine's other registries and prints every package) takes turns as
# well. The floor is
#     sh -c '. ./pdx_env.sh ; pdxcat -p' > /dev/null
# run in the product directory, the very line the provider runs there.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(mkdir -p "${1:-$here/../build}" && cd "${1:-$here/../build}" && pwd)
runs=${2:-21}
count=100000
loader=$build/bin/tessel_load
product=$build/benchdata/tessel$count

for need in python3 /usr/bin/time; do
    command -v "$need" >/dev/null || { echo "tessel.sh: $need is missing" >&2; exit 1; }
done
if [ ! -x "$loader" ]; then
    [ -f "$build/CMakeCache.txt" ] || cmake -S "$here/.." -B "$build" >/dev/null
    cmake --build "$build" --target tessel_load -j2 >/dev/null
fi
if [ ! -f "$product/catalog" ]; then
    rm -rf "$product"
    python3 "$here/../tools/gen-tessel-product.py" "$count" "$product"
fi

# The listing repeats a record now and then; the provider keeps the first of a key.
expected=$(cut -f1,2 "$product/catalog" | sort -u | wc -l)
loaded=$("$loader" "$product" | sed -n 's/^packages \([0-9]*\),.*/\1/p')
if [ "$loaded" != "$expected" ]; then
    echo "tessel.sh: the provider loaded $loaded packages, the catalog holds $expected" >&2
    exit 1
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# shellcheck source=timing.sh
source "$here/timing.sh"

cd "$product"
floor=(sh -c '. ./pdx_env.sh ; pdxcat -p')
# Warm the page cache, then take turns.
"${floor[@]}" >/dev/null
"$loader" "$product" >/dev/null
names=(bare load)
if [ "${INVENTORY:-}" = 1 ]; then
    regscan=$build/bin/regscan
    [ -x "$regscan" ] || cmake --build "$build" --target regscan -j2 >/dev/null
    inventory=("$regscan" inventory --set "pdxDirectory=$product")
    "${inventory[@]}" >/dev/null
    names+=(inventory)
fi
for ((i = 0; i < runs; i++)); do
    run bare "${floor[@]}"
    run load "$loader" "$product"
    if [ "${INVENTORY:-}" = 1 ]; then
        run inventory "${inventory[@]}"
    fi
done

echo "product: $product ($expected packages, $("${floor[@]}" | wc -c) bytes of listing), $runs runs each"
printf '%-14s %14s %14s %18s\n' "" "median wall s" "median CPU s" "median peak RSS MB"
for name in "${names[@]}"; do
    case $name in
        bare) label="bare command" ;;
        load) label="full load" ;;
        inventory) label="inventory" ;;
    esac
    printf '%-14s %14.3f %14.3f %18.1f\n' "$label" "$(median "$name" 1)" "$(median "$name" 3)" \
        "$(median "$name" 2 | awk '{ print $1 / 1024 }')"
done
awk -v bt="$(median bare 1)" -v lt="$(median load 1)" -v bc="$(median bare 3)" \
    -v lc="$(median load 3)" -v bf="$(fastest bare 1)" -v lf="$(fastest load 1)" 'BEGIN {
    printf "load / command: %.2f (target <= 1.3: %s); in CPU time %.2f; fastest runs %.3f s / %.3f s = %.2f\n",
        lt / bt, (lt / bt <= 1.3) ? "met" : "MISSED", lc / bc, lf, bf, lf / bf
}'
if [ "${INVENTORY:-}" = 1 ]; then
    awk -v bt="$(median bare 1)" -v it="$(median inventory 1)" -v bc="$(median bare 3)" \
        -v ic="$(median inventory 3)" 'BEGIN {
        printf "inventory / command: %.2f; in CPU time %.2f\n", it / bt, ic / bc
    }'
fi
