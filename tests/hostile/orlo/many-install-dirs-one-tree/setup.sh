python3 - <<'EOF'
import os
with open('/var/.com.zerog.registry.xml','w') as f:
    f.write('<registry><products>')
    for i in range(5000):
        f.write('<product id="p%d" name="P" version="1" location="/opt/o/%s"/>' % (i, 'sub/' * (i % 50)))
    f.write('</products></registry>')
EOF
