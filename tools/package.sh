#!/usr/bin/env bash
# Makes the Debian package of regscan (the program, the plug-in, the host layer with
# its headers and CMake package, the manual page) in build-package/.
#
#   tools/package.sh            build the .deb and print its path
#   tools/package.sh --check    also check it with lintian (no errors allowed),
#                               install it with dpkg -i, run the installed
#                               `regscan inventory` and purge it again (root)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${PACKAGE_BUILD_DIR:-build-package}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DREGSCAN_INSTALL_RPATH=OFF -DREGSCAN_BUILD_TESTS=OFF -DREGSCAN_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" >/dev/null
(cd "$build" && cpack -G DEB >/dev/null)
deb=$(ls -t "$build"/regscan_*.deb | head -n 1)
echo "$deb"
[ "${1:-}" = --check ] || exit 0

echo "== lintian"
# Errors fail the check; warnings are shown.
lintian --tag-display-limit 0 "$deb" | tee "$build/lintian.log" || true
if grep -q '^E:' "$build/lintian.log"; then
    echo "package.sh: lintian reports errors" >&2
    exit 1
fi
echo "== install, run, remove"
if dpkg-query -W -f '${Status}' regscan 2>/dev/null | grep -q ' installed$'; then
    echo "package.sh: a regscan package is installed already; not touching it" >&2
    exit 1
fi
dpkg -i "$deb" >/dev/null
status=0
/usr/bin/regscan inventory >"$build/installed-inventory.txt" || status=$?
dpkg-query -W -f '${Package} ${Version}\n' regscan
/usr/bin/regscan --version
man -w regscan >/dev/null
# A host agent builds against the installed host layer.
agent=$(mktemp -d)
cat >"$agent/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.16)
project(agent CXX)
set(CMAKE_CXX_STANDARD 17)
find_package(hostsdk 1 REQUIRED)
add_executable(agent agent.cpp)
target_link_libraries(agent PRIVATE hostsdk::hostsdk)
CMAKE
cat >"$agent/agent.cpp" <<'CPP'
#include <PluginSDK/String.h>
#include <base/GlobFilter.h>
#include <cstdio>
int main() {
    GlobFilter filter;
    filter.compile(L"reg*", false);
    std::printf("%s\n", filter.match(PluginSDK::String("regscan")) == 0 ? "agent ok" : "no");
    return 0;
}
CPP
(cmake -S "$agent" -B "$agent/build" >/dev/null && cmake --build "$agent/build" >/dev/null &&
    "$agent/build/agent") || status=1
rm -rf "$agent"
dpkg -P regscan >/dev/null
if [ $status -ne 0 ]; then
    echo "package.sh: the installed regscan inventory exited $status" >&2
    exit 1
fi
grep -q '^dpkg ' "$build/installed-inventory.txt" && echo "installed regscan listed $(wc -l <"$build/installed-inventory.txt") lines"
[ ! -e /usr/bin/regscan ] || { echo "package.sh: /usr/bin/regscan left behind" >&2; exit 1; }
echo "package.sh: the package installs, runs and purges cleanly"
