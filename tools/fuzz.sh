#!/usr/bin/env bash
# Builds the libFuzzer harnesses (fuzz/) with clang++ into build-fuzz/ (or
# $FUZZ_BUILD_DIR) and runs each for SECONDS (default 30), one after the other,
# starting from its committed seed corpus fuzz/corpus/NAME/. Fails on the first
# finding (crash, sanitizer report, leak, timeout, out of memory); the input that
# caused it is saved under BUILD/fuzz-artifacts/NAME/.
#
#   tools/fuzz.sh [SECONDS] [NAME...]     NAME: a harness, e.g. dpkg_status
#
# Inputs the fuzzer finds interesting are kept in BUILD/fuzz-corpus/NAME/ (not in
# the committed corpus), so a later run goes on from there. Each run's log is
# BUILD/fuzz-logs/NAME.log; a summary line per harness gives the executions and
# libFuzzer's final coverage (cov: edges, ft: features).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
shift || true
build=${FUZZ_BUILD_DIR:-build-fuzz}
cmake -S . -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DREGSCAN_FUZZ=ON \
    -DREGSCAN_BUILD_TESTS=OFF -DREGSCAN_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" --target fuzz_all -j "$(nproc)"

if [ $# -gt 0 ]; then
    names=("$@")
else
    names=()
    for dir in fuzz/corpus/*/; do
        names+=("$(basename "$dir")")
    done
fi

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1:symbolize=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
mkdir -p "$build/fuzz-logs"
failed=0
for name in "${names[@]}"; do
    binary=$build/bin/fuzz_$name
    if [ ! -x "$binary" ] || [ ! -d "fuzz/corpus/$name" ]; then
        echo "tools/fuzz.sh: no harness or no seed corpus named $name" >&2
        exit 2
    fi
    work=$build/fuzz-corpus/$name
    artifacts=$build/fuzz-artifacts/$name
    log=$build/fuzz-logs/$name.log
    mkdir -p "$work" "$artifacts"
    echo "== $name: ${seconds} s"
    status=0
    "$binary" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=16384 \
        -print_final_stats=1 -artifact_prefix="$artifacts/" "$work" "fuzz/corpus/$name" \
        >"$log" 2>&1 || status=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    coverage=$(grep -Eo 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1 || true)
    echo "$name: ${runs:-?} executions, ${coverage:-no coverage line}"
    if [ "$status" -ne 0 ]; then
        echo "tools/fuzz.sh: $name failed (exit $status); the end of $log:" >&2
        tail -n 60 "$log" >&2
        failed=1
        break
    fi
done
if [ "$failed" -ne 0 ]; then
    exit 1
fi
echo "fuzzing: ${#names[@]} harnesses ran ${seconds} s each without a finding"
