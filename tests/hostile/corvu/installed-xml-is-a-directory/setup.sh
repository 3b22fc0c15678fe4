mkdir -p /opt/data/installed.xml
