#!/usr/bin/env bash
# Times the Orlo tag inventory ("OrloProductList" over the install directories of a
# generated InstallAnywhere registry) against the floor of `find` listing the same
# tag directories.
#
#   bench/orlo.sh [BUILD_DIR [RUNS]]
#
# BUILD_DIR defaults to build/ beside this directory and must hold bin/orlo_list
# (cmake --build BUILD_DIR --target orlo_list). RUNS (default 9) is the number of
# runs of each; the two take turns so that a busy machine slows them alike. The
# trees (ORLO_BENCH_DIRECTORIES install directories, default 2000, every second one
# with 1 to 5 tag files; tools/gen-orlo-tree.py) are made once and kept under
# BUILD_DIR/benchdata/.
#
# Prints the median wall time and peak RSS of each, the directories and files
# visited, and the ratio with its target: inventory time / floor time <= 3.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "${1:-$here/../build}" && pwd)
runs=${2:-9}
directories=${ORLO_BENCH_DIRECTORIES:-2000}
generator=$here/../tools/gen-orlo-tree.py
lister=$build/bin/orlo_list
data=$build/benchdata/orlo-$directories

for tool in python3 /usr/bin/time find; do
    command -v "$tool" >/dev/null || { echo "orlo.sh: $tool is missing" >&2; exit 1; }
done
[ -x "$lister" ] || { echo "orlo.sh: build $lister first" >&2; exit 1; }

if [ ! -s "$data/expected.txt" ]; then
    # Made in place: the registry names the trees by absolute path. expected.txt is
    # written last, so an interrupted run starts again.
    rm -rf "$data"
    python3 "$generator" "$directories" "$data"
fi

expected=$(cat "$data/expected.txt")
listed=$("$lister" "$data/registry.xml")
if [ "$listed" != "$expected" ]; then
    echo "orlo.sh: the inventory listed $listed packages, expected $expected" >&2
    exit 1
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# The floor: one find over every tag directory the inventory looks at (missing ones
# included, as the inventory tries them too).
cat >"$scratch/floor.sh" <<'FLOOR'
mapfile -t dirs <"$1"
find "${dirs[@]}" -maxdepth 1 -type f 2>/dev/null || true
FLOOR

# shellcheck source=timing.sh
source "$here/timing.sh"

for ((i = 0; i < runs; i++)); do
    run floor bash "$scratch/floor.sh" "$data/candidates.txt"
    run list "$lister" "$data/registry.xml"
done

tagdirs=$(wc -l <"$data/candidates.txt")
files=$(bash "$scratch/floor.sh" "$data/candidates.txt" | wc -l)
echo "trees: $data ($directories install directories, $tagdirs tag directories tried," \
    "$files tag files, $expected packages), $runs runs each"
printf '%-22s %14s %18s\n' "" "median wall s" "median peak RSS MB"
for name in floor list; do
    case $name in
        floor) label="floor (find)" ;;
        list) label="OrloProductList" ;;
    esac
    printf '%-22s %14.3f %18.1f\n' "$label" "$(median "$name" 1)" \
        "$(median "$name" 2 | awk '{ print $1 / 1024 }')"
done

awk -v ft="$(median floor 1)" -v lt="$(median list 1)" 'BEGIN {
    printf "inventory time / floor time: %.2f (target <= 3: %s)\n", lt / ft, (lt / ft <= 3) ? "met" : "MISSED"
}'
