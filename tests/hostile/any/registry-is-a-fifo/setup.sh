mkfifo /var/.com.zerog.registry.xml
