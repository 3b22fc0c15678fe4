#!/usr/bin/env bash
# Builds COUNT small real packages with rpmbuild and registers them in a private rpm
# database, for the tests and the benchmarks.
#
#   tools/make-rpmdb.sh COUNT OUTDIR
#
# The database is OUTDIR/db; rpm uses it when HOME is OUTDIR/home (its .rpmmacros
# sets %_dbpath), so the machine's own database is never touched. Running it again
# with the same COUNT does nothing.
#
# The packages, for N = 1..COUNT (all noarch):
#   name synthN, version (N%7).(N%13).N, release (N%5+1).el9, summary
#   "Synthetic package number N for inventory tests";
#   vendor "Vendor (N%17) Inc.", except when N%9 == 0: no vendor at all;
#   requires /bin/sh; when N%3 == 0 also conflicts with synth-oldN < 2.0;
#   files, under two roots:
#     N%4 != 0: /opt/synthN/bin/toolN, /opt/synthN/lib/libN.so,
#               /usr/share/doc/synthN/README
#     N%4 == 0: /etc/synthN/synthN.conf, /usr/share/synthN/data,
#               /usr/share/doc/synthN/README
set -euo pipefail

if [ $# -ne 2 ] || ! [ "$1" -gt 0 ] 2>/dev/null; then
    echo "usage: $0 COUNT OUTDIR" >&2
    exit 2
fi
count=$1
out=$(realpath -m "$2")
for tool in rpm rpmbuild; do
    command -v "$tool" >/dev/null || { echo "$0: $tool is missing (tools/setup.sh installs it)" >&2; exit 1; }
done

if [ -f "$out/home/.rpmmacros" ] &&
    [ "$(HOME=$out/home rpm -qa 2>/dev/null | wc -l)" -eq "$count" ]; then
    exit 0
fi
rm -rf "$out"
top=$out/build
mkdir -p "$out/db" "$out/home" "$top"/{SPECS,SOURCES,BUILD,RPMS,SRPMS,BUILDROOT}

spec=$top/SPECS/synth.spec
{
    # The main package has no vendor and no files: only its subpackages are built,
    # and one without a Vendor line of its own has none.
    cat <<'EOF'
Name: synth-base
Version: 1.0
Release: 1
Summary: Synthetic packages for inventory tests
License: MIT
BuildArch: noarch
%description
Synthetic packages for inventory tests.
EOF
    for ((i = 1; i <= count; i++)); do
        echo "%package -n synth$i"
        echo "Summary: Synthetic package number $i for inventory tests"
        echo "Version: $((i % 7)).$((i % 13)).$i"
        echo "Release: $((i % 5 + 1)).el9"
        if ((i % 9 != 0)); then echo "Vendor: Vendor $((i % 17)) Inc."; fi
        echo "Requires: /bin/sh"
        if ((i % 3 == 0)); then echo "Conflicts: synth-old$i < 2.0"; fi
        echo "%description -n synth$i"
        echo "Package $i."
        echo "%files -n synth$i"
        if ((i % 4 != 0)); then
            echo "/opt/synth$i/bin/tool$i"
            echo "/opt/synth$i/lib/lib$i.so"
        else
            echo "/etc/synth$i/synth$i.conf"
            echo "/usr/share/synth$i/data"
        fi
        echo "/usr/share/doc/synth$i/README"
    done
    cat <<EOF
%install
i=1
while [ \$i -le $count ]; do
    doc=%{buildroot}/usr/share/doc/synth\$i
    mkdir -p \$doc && echo readme > \$doc/README
    if [ \$((i % 4)) -ne 0 ]; then
        mkdir -p %{buildroot}/opt/synth\$i/bin %{buildroot}/opt/synth\$i/lib
        echo tool > %{buildroot}/opt/synth\$i/bin/tool\$i
        echo lib > %{buildroot}/opt/synth\$i/lib/lib\$i.so
    else
        mkdir -p %{buildroot}/etc/synth\$i %{buildroot}/usr/share/synth\$i
        echo conf > %{buildroot}/etc/synth\$i/synth\$i.conf
        echo data > %{buildroot}/usr/share/synth\$i/data
    fi
    i=\$((i + 1))
done
EOF
} >"$spec"

# No debug packages, build-id links or post-install processing: plain file lists.
rpmbuild --quiet --define "_topdir $top" --define "_build_id_links none" \
    --define "__os_install_post %{nil}" --define "debug_package %{nil}" \
    -bb "$spec" >"$top/rpmbuild.log" 2>&1 || {
    cat "$top/rpmbuild.log" >&2
    exit 1
}

rpm --dbpath "$out/db" --initdb
# Only the database is written (--justdb); rpm on this distribution warns that it
# should not install packages, which is not what happens here.
find "$top/RPMS" -name 'synth[0-9]*.rpm' -print0 |
    xargs -0 -n 500 rpm --dbpath "$out/db" -i --justdb --nodeps --noscripts \
        --ignorearch --ignoreos 2> >(grep -v -e "should not be used directly" \
            -e "assuming you know" >&2)
rm -rf "$top"
echo "%_dbpath $out/db" >"$out/home/.rpmmacros"

installed=$(HOME=$out/home rpm -qa | wc -l)
if [ "$installed" -ne "$count" ]; then
    echo "$0: the database at $out/db holds $installed packages, not $count" >&2
    exit 1
fi
echo "rpm database with $count packages at $out/db (use HOME=$out/home)"
