#!/usr/bin/env python3
"""Makes a software-distribution product directory for the Tessel catalog tests and
benchmarks:

    gen-tessel-product.py PACKAGES DIR

DIR/pdx_env.sh    the product's environment script: puts DIR/bin on PATH and
                  exports PDX_HOME (the listing command refuses to run without it)
DIR/bin/pdxcat    the listing command: `pdxcat -p` prints the catalog as message
                  lines ended by CR LF (a header, then per package its name,
                  version, uninstall-data and state lines and a separator line)
DIR/catalog       the catalog the listing command reads: one package a line,
                  tab-separated name, version, uninstall data, state letters

The catalog is deterministic: package i is pkg-<i> with varied versions, states
(installed / removed, committed / uncommitted, backup, reboot, error letters) and
now and then a record without a state line or a repeated record, as real listings
have them.
"""
import os
import sys

PDXCAT = r"""#!/bin/sh
# The product's catalog listing command.
if [ "$1" != "-p" ]; then
    echo "usage: pdxcat -p" >&2
    exit 2
fi
if [ -z "$PDX_HOME" ]; then
    echo "PDXMS0100E The product environment is not set: source pdx_env.sh" >&2
    exit 3
fi
exec awk -F '\t' '
BEGIN {
    printf "PDXMS0001I Catalog listing for %s\r\n\r\n", ENVIRON["PDX_HOME"]
}
{
    printf "PDXMS0164I Package name: %s\r\n", $1
    printf "PDXMS0165I Package version: %s\r\n", $2
    printf "PDXMS0804I Uninstall data: %s\r\n", $3
    if ($4 != "") printf "PDXMS0166I Package state: %s\r\n", $4
    printf "PDXMS0167I ------------------------------------------------\r\n\r\n"
}
END {
    printf "PDXMS0002I %d packages listed\r\n", NR
}' "$PDX_HOME/catalog"
"""

ENV = """# The product's environment: its commands and its home.
PDX_HOME="$PWD"; export PDX_HOME
PATH="$PDX_HOME/bin:$PATH"; export PATH
"""


def state(i):
    if i % 23 == 0:
        return ""  # no state line: the record inherits the previous state
    installed = "-" if i % 11 == 0 else "I"
    committed = "-" if i % 7 == 0 else "C"
    backup = "PRU-"[i % 4]
    flag = "BDH--"[i % 5]
    error = "CE---"[i % 5]
    return installed + committed + backup + flag + error


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    count = int(sys.argv[1])
    root = sys.argv[2]
    os.makedirs(os.path.join(root, "bin"), exist_ok=True)
    with open(os.path.join(root, "pdx_env.sh"), "w") as out:
        out.write(ENV)
    pdxcat = os.path.join(root, "bin", "pdxcat")
    with open(pdxcat, "w") as out:
        out.write(PDXCAT)
    os.chmod(pdxcat, 0o755)
    with open(os.path.join(root, "catalog"), "w") as out:
        for i in range(count):
            n = i - 1 if i > 0 and i % 97 == 0 else i  # now and then a repeat
            name = "pkg-%d" % n
            version = "%d.%d.%d" % (n % 9 + 1, n % 17, n % 101)
            uninst = "/opt/pdx/uninstall/%s-%s.tar" % (name, version)
            out.write("%s\t%s\t%s\t%s\n" % (name, version, uninst, state(i)))


if __name__ == "__main__":
    main()
