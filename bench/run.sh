#!/usr/bin/env bash
# Runs every load benchmark beside its peer, in the same run, and prints the ratios.
#
#   bench/run.sh [BUILD_DIR [RUNS]]
#
# BUILD_DIR defaults to build/ (built with tools/build.sh); RUNS is passed on to each
# benchmark. The generated data (a 50,000-package dpkg status file, a 5,000-package
# rpm database built from real packages, a 20,000-product InstallAnywhere registry,
# 2,000 install directories with Orlo tag files, a 100,000-package Tessel product
# directory) is made on the first run and kept under BUILD_DIR/benchdata/; the rpm
# database takes a few minutes to build.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=${1:-$here/../build}
runs=${2:-9}
cmake --build "$build" --target dpkg_load rpm_load match_eval anywhere_load expat_floor orlo_list tessel_load -j "$(nproc)" >/dev/null
echo "== dpkg: provider load vs dpkg-query"
bash "$here/dpkg.sh" "$build" "$runs"
echo
echo "== rpm: provider load vs the bare rpm command"
bash "$here/rpm.sh" "$build" "$runs"
echo
echo "== rule evaluation: PackageInfoMatch vs a plain loop over the same triples"
bash "$here/match.sh" "$build" 5
echo
echo "== InstallAnywhere: provider load vs expat with empty callbacks"
bash "$here/anywhere.sh" "$build" "$runs"
echo
echo "== Orlo: tag inventory vs find over the same tag directories"
bash "$here/orlo.sh" "$build" "$runs"
echo
echo "== tessel: catalog provider load vs the bare listing command"
bash "$here/tessel.sh" "$build" "$runs"
