mkdir -p /var/lib/dpkg
python3 - <<'EOF'
with open('/var/lib/dpkg/status', 'w') as f:
    for i in range(100000):
        f.write('Package: p%d\nStatus: install ok installed\nVersion: %d\nDescription: %s\n\n' % (i, i, 'x' * 460))
EOF
