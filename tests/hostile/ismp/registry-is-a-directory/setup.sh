mkdir /root/vpd.properties
