#!/usr/bin/env python3
"""Writes installation trees with Orlo tag files, and an InstallAnywhere registry
pointing at them, for the tag inventory benchmark.

    gen-orlo-tree.py DIRECTORIES OUT

Makes OUT/opt/pNNNN (with bin/ and lib/) for each of DIRECTORIES install
directories and writes OUT/registry.xml with one product per directory; every
fourth product's location is its bin/ directory, so its tags are found one level
up. Every second directory holds 1 to 5 tag files in properties/version, each a
"ProductInventory" with a Product and a Fix. Also writes:
  OUT/candidates.txt  the tag directories the inventory looks at (each candidate
                      directory + "/properties/version", in the provider's order,
                      repeats included), one a line, for the `find` floor;
  OUT/expected.txt    the number of packages the inventory should list.
The output is the same for the same DIRECTORIES.
"""
import os
import sys

TAG = ('<?xml version="1.0" encoding="UTF-8"?>\n<ProductInventory>\n'
       '  <Product>\n    <ProductName>Product {n} part {t}</ProductName>\n'
       '    <ProductVersion>{v}.{t}</ProductVersion>\n    <ORLOFMIDX>FM{n:05d}{t}</ORLOFMIDX>\n'
       '    <Vendor>Orlo Systems</Vendor>\n  </Product>\n'
       '  <Fix>\n    <FixName>Fix {n}-{t}</FixName>\n    <FixVersion>{v}.{t}.1</FixVersion>\n'
       '  </Fix>\n</ProductInventory>\n')


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    count = int(sys.argv[1])
    out = os.path.abspath(sys.argv[2])
    opt = os.path.join(out, "opt")
    candidates = []
    seen = set()
    packages = 0
    os.makedirs(out, exist_ok=True)
    with open(os.path.join(out, "registry.xml"), "w", encoding="utf-8") as registry:
        registry.write('<?xml version="1.0" encoding="UTF-8"?>\n<registry version="1.0">\n'
                       '  <products>\n')
        for n in range(count):
            root = os.path.join(opt, f"p{n:04d}")
            os.makedirs(os.path.join(root, "bin"), exist_ok=True)
            os.makedirs(os.path.join(root, "lib"), exist_ok=True)
            if n % 2 == 0:
                tags = os.path.join(root, "properties", "version")
                os.makedirs(tags, exist_ok=True)
                for t in range(n // 2 % 5 + 1):
                    with open(os.path.join(tags, f"tag{t}.xml"), "w", encoding="utf-8") as tag:
                        tag.write(TAG.format(n=n, t=t, v=n % 9))
                    packages += 2
            location = os.path.join(root, "bin") if n % 4 == 1 else root
            registry.write(f'    <product id="orlo-{n:05d}" name="Product {n}" version="1.0" '
                           f'location="{location}"/>\n')
            # The candidates the provider derives: the directory and, when first seen,
            # its sub-directories; then its parent unless seen as a directory itself.
            if location not in seen:
                seen.add(location)
                candidates.append(location)
                candidates += [os.path.join(location, d)
                               for d in sorted(os.listdir(location))
                               if os.path.isdir(os.path.join(location, d))]
            parent = os.path.dirname(location)
            if parent not in seen:
                candidates.append(parent)
        registry.write("  </products>\n</registry>\n")
    with open(os.path.join(out, "candidates.txt"), "w", encoding="utf-8") as listing:
        for candidate in candidates:
            listing.write(candidate + "/properties/version\n")
    with open(os.path.join(out, "expected.txt"), "w", encoding="utf-8") as expected:
        expected.write(f"{packages}\n")


if __name__ == "__main__":
    main()
