#!/usr/bin/env bash
# Installs what building, testing and benchmarking need. Safe to run again.
# The tests use real components and fail without them: rpm (rpm and rpmbuild, for
# the test rpm database), dpkg (dpkg-query), util-linux (unshare) and mount (overlay
# and tmpfs mounts in a private mount namespace), python3 (tools/make-dpkg-status.py);
# time (/usr/bin/time) is for the benchmarks; lintian and man-db check the Debian
# package (tools/package.sh --check); clang and its libFuzzer runtime
# (libclang-rt-14-dev) build the fuzz harnesses (tools/fuzz.sh); python3-jsonschema
# validates the SBOM output against the schemas in tests/host/schemas.
set -euo pipefail
packages=(cmake g++ make libgtest-dev libexpat1-dev nlohmann-json3-dev libcli11-dev rpm dpkg time util-linux
          python3 mount lintian man-db clang libclang-rt-14-dev python3-jsonschema)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f '${Status}' "$p" 2>/dev/null | grep -q ' installed$' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    sudo_cmd=()
    [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
    "${sudo_cmd[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    "${sudo_cmd[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}"
fi
