mkdir -p /var/lib/dpkg && python3 -c "import random,sys; sys.stdout.buffer.write(random.Random(7).randbytes(131072))" > /var/lib/dpkg/status
