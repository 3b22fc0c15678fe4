mkfifo /root/vpd.properties
