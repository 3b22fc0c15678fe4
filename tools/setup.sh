#!/usr/bin/env bash
# Installs what building and testing need. Safe to run again.
set -euo pipefail
packages=(cmake g++ make libgtest-dev libexpat1-dev nlohmann-json3-dev rpm dpkg time util-linux
          python3)
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
