#!/usr/bin/env bash
# Rule evaluation: 1,000 PackageInfoMatch signatures over a 5,000-package rpm
# database, a 50,000-entry vpd.properties and a 50,000-package dpkg status file,
# against a plain loop applying the same compiled patterns to the same (vendor,
# name, version) triples in a vector; then the whole regscan process on the same
# signatures (`regscan match`, loads included).
#
#   bench/match.sh [BUILD_DIR [RUNS]]
#
# The data is made once under BUILD_DIR/benchdata (the rpm database is shared with
# rpm.sh and takes a few minutes). The regscan run needs root: it places the files
# at their fixed paths in a private mount namespace.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "${1:-$here/../build}" && pwd)
runs=${2:-5}
driver=$build/bin/match_eval
data=$build/benchdata
db=$data/rpmdb5000
status=$data/dpkg-50000/status
vpd=$data/vpd-50000/vpd.properties

for tool in rpm rpmbuild python3 /usr/bin/time unshare; do
    command -v "$tool" >/dev/null || { echo "match.sh: $tool is missing" >&2; exit 1; }
done
[ -x "$driver" ] || { echo "match.sh: build $driver first" >&2; exit 1; }
if [ ! -f "$db/home/.rpmmacros" ]; then
    echo "building the rpm database $db (a few minutes)"
    rm -rf "$db"
    bash "$here/../tools/make-rpmdb.sh" 5000 "$db"
fi
if [ ! -s "$status" ]; then
    mkdir -p "$(dirname "$status")"
    python3 "$here/../tools/make-dpkg-status.py" 50000 "$status.tmp" && mv "$status.tmp" "$status"
fi
if [ ! -s "$vpd" ]; then
    mkdir -p "$(dirname "$vpd")"
    python3 "$here/../tools/gen-vpd-properties.py" 50000 "$vpd.tmp" && mv "$vpd.tmp" "$vpd"
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

echo "== in process (trace off), medians of $runs runs"
HOME=$db/home "$driver" "$vpd" "$status" 1000 "$runs" "$scratch/catalog.json"

# The whole program: root's home holds the registry and the rpm macros, the status
# file sits at its place.
if [ "$(id -u)" -ne 0 ]; then
    echo "== regscan match: skipped (needs root for the mount namespace)"
    exit 0
fi
mkdir -p "$scratch/root"
cp "$vpd" "$scratch/root/vpd.properties"
cp "$db/home/.rpmmacros" "$scratch/root/.rpmmacros"
# shellcheck source=timing.sh
source "$here/timing.sh"
cat >"$scratch/regscan-match.sh" <<'SCRIPT'
#!/bin/sh
# $1 scratch directory, $2 status file, $3 regscan
exec unshare -m --propagation private sh -c '
    mount --bind "$1/root" /root && mount --bind "$2" /var/lib/dpkg/status &&
    HOME=/root exec "$3" match --catalog "$1/catalog.json" --format csv' sh "$@"
SCRIPT
chmod +x "$scratch/regscan-match.sh"
regscan_match() { "$scratch/regscan-match.sh" "$scratch" "$status" "$build/bin/regscan"; }
regscan_match >"$scratch/report.csv" || true
recognised=$(grep -c '^signature,[^,]*,yes,' "$scratch/report.csv" || true)
for ((i = 0; i < runs; i++)); do
    run whole "$scratch/regscan-match.sh" "$scratch" "$status" "$build/bin/regscan"
done
packages=$(HOME=$db/home "$driver" "$vpd" "$status" 1000 1 | sed -n 's/^packages \([0-9]*\),.*/\1/p')
awk -v t="$(median whole 1)" -v m="$(median whole 2)" -v p="$packages" -v r="$recognised" 'BEGIN {
    printf "== regscan match (one process: loads, 1000 evaluations, unknown list, csv)\n"
    printf "median %.3f s, peak RSS %.1f MB, %d signatures recognised, %.1f M checks/s overall\n",
        t, m / 1024, r, 1000 * p / t / 1e6
}'
