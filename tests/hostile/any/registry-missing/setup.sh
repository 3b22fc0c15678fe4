rm -f /var/.com.zerog.registry.xml
