python3 -c "import random,sys; sys.stdout.buffer.write(random.Random(11).randbytes(65536))" > /var/.com.zerog.registry.xml
