#!/usr/bin/env python3
"""Writes a vpd.properties registry with N entries, the way such installers write it.

    gen-vpd-properties.py N OUT [SEED]

Each line is KEY=INFO. KEY: identifier|major|minor|service|fix|(unused)|instance.
INFO: name|description|(skipped)|vendor|(skipped)|(skipped)|install location|
a counted list of single fields|a counted list of 10-field records|a counted list of
7-field records|a counted list of 5-field records|(skipped)|uninstaller|nine trailing
fields. Three entries in four are products (an uninstaller made of five
'"'-separated parts and the nine trailing fields); the others are features, whose
uninstaller field is blank. Vendors, names and versions repeat the way a real
machine's do, so that signatures recognise a realistic share. No field is empty:
the reader does not see empty fields, so one would shift the fields after it.
"""
import random
import sys

VENDORS = ["Example Software Inc.", "Acme Corporation", "Northwind Systems", "Contoso Ltd.",
           "Fabrikam, Inc.", "Globex Tools", "Initech", "Umbrella Data"]
WORDS = ["Server", "Client", "Agent", "Runtime", "Console", "Gateway", "Monitor", "Studio",
         "Connector", "Manager", "Toolkit", "Portal", "Broker", "Scheduler", "Vault"]


def fields(count, width, rnd):
    out = [str(count)]
    for _ in range(count * width):
        out.append(rnd.choice(["1", "true", "file.jar", "x", "0"]))
    return out


def main():
    n = int(sys.argv[1])
    out = sys.argv[2]
    rnd = random.Random(int(sys.argv[3]) if len(sys.argv) > 3 else 7)
    with open(out, "w", encoding="utf-8", newline="\n") as f:
        for i in range(n):
            vendor = rnd.choice(VENDORS)
            name = f"{rnd.choice(WORDS)} {rnd.choice(WORDS)} {i % 997}"
            ident = f"{i:08x}{rnd.getrandbits(64):016x}"
            version = [str(rnd.randint(1, 12)), str(rnd.randint(0, 9)), str(rnd.randint(0, 9)),
                       str(rnd.randint(0, 30))]
            key = [ident] + version + ["0", str(i % 3 + 1)]
            location = f"/opt/{vendor.split()[0].lower()}/{name.replace(' ', '_').lower()}"
            product = rnd.random() < 0.75
            info = [name, f"{name} by {vendor}", "1", vendor, "null", "1", location]
            info += fields(rnd.randint(0, 2), 1, rnd)
            info += fields(rnd.randint(0, 1), 10, rnd)
            info += fields(rnd.randint(0, 2), 7, rnd)
            info += fields(rnd.randint(0, 1), 5, rnd)
            info += ["0"]
            if product:
                info += ['_uninst"-cp"uninstall.jar"-run"uninstaller.bin']
                info += ["1", "0", "true", "false", "en", "1", "0", "1", "0"]
            else:
                info += [" "]
            f.write("|".join(key) + "=" + "|".join(info) + "\n")


if __name__ == "__main__":
    main()
