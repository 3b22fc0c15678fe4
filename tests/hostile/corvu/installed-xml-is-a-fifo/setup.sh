mkdir -p /opt/data && mkfifo /opt/data/installed.xml
