mkdir -p /opt/c/eclipse/configuration && ln -s /etc/.kelvo/registry/Corvu.dat /opt/c/eclipse/configuration/config.ini && ln -s config.ini /opt/c/eclipse/configuration/installed.xml
