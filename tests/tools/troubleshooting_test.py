#!/usr/bin/env python3
"""docs/troubleshooting.md shows what dhcptool prints. `--update` puts the present output into the page.

DHCPTOOL is the tool's path. A command starts with "    $ "; the indented lines behind it are its output."""

import os
import re
import subprocess
import sys
import unittest

TOP = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../..")
PAGE = os.path.join(TOP, "docs/troubleshooting.md")
CAPTURES = os.path.join(TOP, "tests/data/captures/faults")
EXAMPLE = re.compile(r"^    \$ (dhcptool .*)\n((?:    (?!\$ ).*\n)*)", re.M)


def printed(command):
    done = subprocess.run(command.replace("dhcptool", os.environ["DHCPTOOL"], 1), shell=True, cwd=CAPTURES, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60, check=True)
    return "".join(f"    {line}\n" for line in done.stdout.splitlines())


def page():
    with open(PAGE) as text:
        return text.read()


class Page(unittest.TestCase):
    maxDiff = None

    def test_shows_what_is_printed(self):
        for command, output in EXAMPLE.findall(page()):
            self.assertEqual(output, printed(command), command)

    def test_names_each_capture(self):
        shown = " ".join(command for command, _ in EXAMPLE.findall(page()))
        self.assertEqual({name for name in os.listdir(CAPTURES) if name not in shown.split()}, set())


if __name__ == "__main__":
    if "--update" in sys.argv:
        text = EXAMPLE.sub(lambda example: f"    $ {example[1]}\n{printed(example[1])}", page())
        with open(PAGE, "w") as out:
            out.write(text)
    else:
        unittest.main()
