python3 -c "import random,sys; sys.stdout.buffer.write(random.Random(5).randbytes(65536))" > /root/vpd.properties
