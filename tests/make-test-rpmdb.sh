#!/usr/bin/env bash
# Builds the small rpm database that the real-data tests read; does nothing when
# it is already there or when this machine has no rpmbuild (those tests then skip).
set -euo pipefail
tool=$1 out=$2
if [ -f "$out/home/.rpmmacros" ]; then exit 0; fi
if ! command -v rpmbuild >/dev/null || [ ! -x "$tool" ]; then
    echo "no rpmbuild or no $tool here: the rpm database tests will skip"
    exit 0
fi
rm -rf "$out"
"$tool" 40 "$out"
