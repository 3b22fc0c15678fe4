#!/usr/bin/env bash
# Builds a small rpm database for the Orlo end-to-end tests: real packages made
# with rpmbuild whose files land under /opt trees, recorded with --justdb (nothing
# is written outside OUT). Afterwards OUT/home/.rpmmacros points rpm at it, so
# HOME=OUT/home selects it.
#   make-orlo-rpmdb.sh OUT
set -euo pipefail
out=$1
rm -rf "$out"
mkdir -p "$(dirname "$out")"
mkdir -p "$out/top" "$out/db" "$out/home"

# name version files...
package() {
    local name=$1 version=$2
    shift 2
    local spec="$out/top/$name.spec"
    {
        echo "Name: $name"
        echo "Version: $version"
        echo "Release: 1"
        echo "Summary: $name for the tag inventory tests"
        echo "License: none"
        echo "BuildArch: noarch"
        echo "%description"
        echo "$name"
        echo "%install"
        for file in "$@"; do
            echo "mkdir -p %{buildroot}$(dirname "$file")"
            echo "echo $name > %{buildroot}$file"
        done
        echo "%files"
        for file in "$@"; do echo "$file"; done
    } >"$spec"
    rpmbuild --quiet --define "_topdir $out/top" --define "_build_id_links none" \
        -bb "$spec" >/dev/null 2>&1
}

package orloapp 1.0 /opt/orloapp/bin/orloapp
package orlosvc 2.0 /opt/orlosvc/lib/svc.jar /opt/orlosvc/etc/svc.conf
rpm --dbpath "$out/db" --initdb
rpm --dbpath "$out/db" -i --justdb --nodeps --noscripts --nosignature \
    "$out"/top/RPMS/noarch/*.rpm
echo "%_dbpath $out/db" >"$out/home/.rpmmacros"
