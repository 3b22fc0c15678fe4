#!/usr/bin/env bash
# Runs the unit and integration test executables under valgrind's memcheck: no
# invalid access, no use of uninitialised memory, no leak.
#
#   tools/valgrind.sh [BUILD_DIR]
#
# BUILD_DIR (default build/) is built first with tools/build.sh. glibc's AVX2 and
# EVEX string functions read whole vectors past the end of a string (harmless, but
# memcheck reports them), so they are switched off for the run; nothing is
# suppressed. Mismatched new/delete pairs are the sanitizer build's to find: the
# tracer tests replace the global operator new and delete to count allocations,
# which memcheck cannot tell from a mismatch. The load/unload loop runs a thousand times and is left out here: its
# leaks are the sanitizer build's to find.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
command -v valgrind >/dev/null || { echo "valgrind.sh: valgrind is missing" >&2; exit 1; }
BUILD_DIR=$build tools/build.sh >/dev/null
export GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2,-AVX512F,-EVEX
status=0
for test in "$build"/bin/sdk_*_tests "$build"/bin/plugin_*_tests "$build"/bin/integration_tests; do
    [ -x "$test" ] || continue
    echo "== $(basename "$test")"
    if ! valgrind --quiet --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite,indirect \
        --show-mismatched-frees=no "$test" --gtest_brief=1 --gtest_filter=-LoadUnloadTest.* >"$build/valgrind-$(basename "$test").log" 2>&1; then
        echo "   FAILED: see $build/valgrind-$(basename "$test").log"
        status=1
    else
        tail -n 1 "$build/valgrind-$(basename "$test").log"
    fi
done
# The program itself, on this machine's registries.
for command in "inventory" "match --catalog examples/catalog.json"; do
    echo "== regscan $command"
    # shellcheck disable=SC2086
    if ! valgrind --quiet --error-exitcode=99 --leak-check=full \
        --errors-for-leak-kinds=definite,indirect "$build/bin/regscan" $command \
        >/dev/null 2>"$build/valgrind-regscan.log"; then
        echo "   FAILED: see $build/valgrind-regscan.log"
        status=1
    else
        echo "   clean"
    fi
done
exit $status
