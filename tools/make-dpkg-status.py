#!/usr/bin/env python3
"""Writes a large dpkg status file for the tests and the benchmarks.

    tools/make-dpkg-status.py COUNT OUTFILE

COUNT paragraphs, the same for the same COUNT: package names gen<N>-<word> (unique),
eight in eleven installed ("install ok installed", a few "hold ok installed"), the
others config-files, half-installed or not-installed; versions with and without
epoch and revision; a synopsis and a long description of several continuation
lines, including a " ." line and lines that look like fields (" Version: 9",
" Status: deinstall ok config-files"), which belong to the description.
"""
import random
import sys

WORDS = ("alpha beta gamma delta utility library runtime shared data tools "
         "documentation daemon client server plugin").split()
STATES = (["install ok installed"] * 7 + ["hold ok installed"] +
          ["deinstall ok config-files", "install ok half-installed",
           "install ok not-installed"])


def version(rnd):
    text = f"{rnd.randint(0, 20)}.{rnd.randint(0, 99)}"
    if rnd.random() < 0.3:
        text = f"{rnd.randint(1, 3)}:{text}"
    if rnd.random() < 0.8:
        text += f"-{rnd.randint(1, 9)}"
    return text


def paragraph(rnd, n):
    words = lambda count: " ".join(rnd.choice(WORDS) for _ in range(count))
    lines = [
        f"Package: gen{n}-{rnd.choice(WORDS)}",
        f"Status: {rnd.choice(STATES)}",
        "Priority: optional",
        "Section: misc",
        f"Installed-Size: {rnd.randint(1, 99999)}",
        "Maintainer: Generated Maintainers <maint@example.org>",
        "Architecture: amd64",
        f"Version: {version(rnd)}",
        f"Depends: libc6 (>= 2.34), lib{rnd.choice(WORDS)}{rnd.randint(1, 9)}",
        f"Description: {words(6)}",
    ]
    lines += [" " + words(10) for _ in range(rnd.randint(1, 6))]
    if n % 10 == 0:
        lines += [" .", " Version: 9", " Status: deinstall ok config-files"]
    lines.append(" Homepage: https://example.org/")
    return "\n".join(lines) + "\n\n"


def main():
    if len(sys.argv) != 3 or not sys.argv[1].isdigit():
        sys.exit("usage: make-dpkg-status.py COUNT OUTFILE")
    rnd = random.Random(12)
    with open(sys.argv[2], "w", encoding="ascii") as out:
        for n in range(int(sys.argv[1])):
            out.write(paragraph(rnd, n))


main()
