mkdir -p /var/lib/dpkg
{ printf 'Package: huge\nStatus: install ok installed\nVersion: 1.0\nDescription: '; head -c 10485760 /dev/zero | tr '\0' d; printf '\nVersion: 1.1\n'; head -c 10485760 /dev/zero | tr '\0' ' '; printf '\n\nPackage: next\nStatus: install ok installed\nVersion: 2.0\n'; } > /var/lib/dpkg/status
