mkdir -p /var/lib/dpkg && rm -f /var/lib/dpkg/status && mkdir /var/lib/dpkg/status
