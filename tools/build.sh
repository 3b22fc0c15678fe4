#!/usr/bin/env bash
# Configures and builds into build/ (or into the directory given as $BUILD_DIR).
# Extra arguments go to cmake's configure step, e.g. -DREGSCAN_SANITIZE=ON.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${BUILD_DIR:-build}
cmake -S . -B "$build" "$@" >/dev/null
cmake --build "$build" -j "$(nproc)"
