mkdir -p /var/lib/dpkg && rm -f /var/lib/dpkg/status && mkfifo /var/lib/dpkg/status
