#!/usr/bin/env python3
"""Writes a synthetic InstallAnywhere registry for the load benchmark.

    gen-anywhere-registry.py PRODUCTS OUT

PRODUCTS products, each with a vendor, a feature and a reference to its component,
and one root-level component for every second product, laid out the way installers
write the registry (two-space indentation, comments, attributes with entities and
text beyond ASCII). The output is the same for the same PRODUCTS.
"""
import sys


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    products = int(sys.argv[1])
    vendors = ["Harbor & Sons Software", "Zeitwerk GmbH", "Kelvo Corp.", "Bürodienst AG",
               "Northwind Tools", "Acme Instruments"]
    with open(sys.argv[2], "w", encoding="utf-8", newline="\n") as out:
        out.write('<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n')
        out.write("<!-- synthetic registry for the load benchmark -->\n")
        out.write('<registry version="1.0">\n  <products>\n')
        for n in range(products):
            vendor = vendors[n % len(vendors)].replace("&", "&amp;")
            out.write(
                f'    <product name="Synthetic Product {n}" id="{n:08x}-1111-4a2b-8c3d-{n:012d}" '
                f'version="{n % 9}.{n % 7}.{n % 5}.{n}" copyright="2024" '
                f'info_url="http://example.com/p{n}" support_url="" '
                f'location="/opt/synthetic/product{n}" last_modified="2024-03-{n % 28 + 1:02d} '
                f'12:{n % 60:02d}:00">\n'
                f'      <vendor name="{vendor}" id="vendor-{n % len(vendors)}" '
                f'home_page="http://example.com" email="support@example.com"/>\n'
                f'      <feature short_name="core" name="Core files" version="1.0">\n'
                f'        <component ref_id="c-{n:08d}" version="1.0" '
                f'location="/opt/synthetic/product{n}/lib"/>\n'
                f'      </feature>\n'
                f'    </product>\n')
        out.write("  </products>\n  <components>\n")
        for n in range(0, products, 2):
            out.write(
                f'    <component name="Synthetic Component {n}" id="c-{n:08d}" version="1.0" '
                f'location="/opt/synthetic/product{n}/lib" vendor="{vendors[n % len(vendors)]}"/>\n'
                .replace("& ", "&amp; "))
        out.write("  </components>\n</registry>\n")


if __name__ == "__main__":
    main()
