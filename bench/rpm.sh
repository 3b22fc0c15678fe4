#!/usr/bin/env bash
# Times the rpm provider's full load (command, parsing, records) of a 5,000-package
# rpm database against the bare rpm command that it runs, in the same run.
#
#   bench/rpm.sh [BUILD_DIR [RUNS]]
#
# BUILD_DIR defaults to build/ beside this directory; bin/rpm_load is built there
# when missing (cmake --build BUILD_DIR --target rpm_load). RUNS (default 15) is the
# number of runs of each command; the two commands take turns so that a busy machine
# slows them alike. The database is made once with tools/make-rpmdb.sh (minutes) and
# kept under BUILD_DIR/benchdata/rpmdb5000; rpm finds it through HOME/.rpmmacros.
#
# Prints the median wall time and the median peak RSS of each command and the ratio
# load / command with its target (<= 1.15). The bare command's peak RSS is rpm's;
# the load's is that of the whole process tree's largest member (the loading
# process, which holds the records).
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(mkdir -p "${1:-$here/../build}" && cd "${1:-$here/../build}" && pwd)
runs=${2:-15}
tool=$here/../tools/make-rpmdb.sh
loader=$build/bin/rpm_load
db=$build/benchdata/rpmdb5000

for need in rpm rpmbuild /usr/bin/time; do
    command -v "$need" >/dev/null || { echo "rpm.sh: $need is missing" >&2; exit 1; }
done
if [ ! -x "$loader" ]; then
    [ -f "$build/CMakeCache.txt" ] || cmake -S "$here/.." -B "$build" >/dev/null
    cmake --build "$build" --target rpm_load -j2 >/dev/null
fi
if [ ! -f "$db/home/.rpmmacros" ]; then
    echo "building the rpm database $db (a few minutes)"
    rm -rf "$db"
    bash "$tool" 5000 "$db"
fi
export HOME=$db/home

# The provider's exact command line, with its control characters.
command=$("$loader" --command)
expected=$(rpm -qa | wc -l)
loaded=$("$loader" | sed -n 's/^packages \([0-9]*\),.*/\1/p')
if [ "$loaded" != "$expected" ]; then
    echo "rpm.sh: the provider loaded $loaded packages, rpm -qa lists $expected" >&2
    exit 1
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# shellcheck source=timing.sh
source "$here/timing.sh"

# Warm the page cache and the database, then take turns.
sh -c "$command >/dev/null"
"$loader" >/dev/null
for ((i = 0; i < runs; i++)); do
    run bare sh -c "$command >/dev/null"
    run load "$loader"
done

echo "rpm database: $db ($expected packages, $(wc -c < <(sh -c "$command")) bytes of output), $runs runs each"
printf '%-14s %14s %18s\n' "" "median wall s" "median peak RSS MB"
for name in bare load; do
    case $name in
        bare) label="bare command" ;;
        load) label="full load" ;;
    esac
    printf '%-14s %14.3f %18.1f\n' "$label" "$(median "$name" 1)" \
        "$(median "$name" 2 | awk '{ print $1 / 1024 }')"
done
awk -v bt="$(median bare 1)" -v lt="$(median load 1)" 'BEGIN {
    printf "load / command: %.2f (target <= 1.15: %s)\n", lt / bt, (lt / bt <= 1.15) ? "met" : "MISSED"
}'
