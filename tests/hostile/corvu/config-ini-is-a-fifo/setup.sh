mkdir -p /opt/corvu/eclipse/configuration && mkfifo /opt/corvu/eclipse/configuration/config.ini
