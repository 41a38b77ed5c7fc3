#!/usr/bin/env python3
"""Measures how many messages a second are received from a link, beside tcpdump on the same kind of link.

  live.py DHCPTOOL DHCPLOAD [--rates 50000,150000] [--seconds 3]
  live.py --receiver DHCPRECEIVE DHCPLOAD [--rates 10000,50000,200000] [--seconds 3]

Each program in turn listens to a flood of DISCOVER messages: `dhcptool snoop -i`, or with --receiver the library alone,
from the socket to the parsed fields. Prints the messages that were sent and shown, the share that is missing, and the
CPU time and cycles of a message, the kernel's share included. The exit status is 1 if a program loses a message at the
first rate, or shows less than half of what tcpdump shows at a higher one. Needs root.
"""

import argparse
import os
import re
import signal
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../lab"))

from lab import Lab, require, wait_for  # noqa: E402

TCPDUMP = "tcpdump"


def commands(tool, receiver):
    """What is measured, by name: a shell command that ends with SIGINT and writes its messages to `out`. A receiver
    prints their number instead."""
    if receiver:
        return {TCPDUMP: "exec tcpdump -nn -i lan udp port 67 > out",
                "tcpdump to a file": "exec tcpdump -nn -i lan -U -w out udp port 67",
                "library, batches": f"exec {tool} lan", "library, one": f"exec {tool} lan 1"}
    snoop = f"exec {tool} snoop -i lan"
    return {TCPDUMP: "exec tcpdump -nn -i lan udp port 67 > out", "text": f"{snoop} > out",
            "JSON": f"{snoop} --json > out", "text to a pipe": f"exec {tool} snoop -i lan > >(cat > out)"}


def cpu_seconds(process):
    with open(f"/proc/{process.popen.pid}/schedstat", encoding="ascii") as file:
        return int(file.read().split()[0]) / 1e9


def megahertz():
    with open("/proc/cpuinfo", encoding="ascii") as file:
        return float(re.search(r"cpu MHz\s*: ([\d.]+)", file.read()).group(1))


def lines(path):
    with open(path, "rb") as file:
        return sum(block.count(b"\n") for block in iter(lambda: file.read(1 << 20), b""))


def measured(load, command, rate, seconds):
    """Messages sent and shown, and the CPU seconds of the program."""
    with Lab() as lab:
        lab.add("c", "s")
        lab.link(("s", "lan"), ("c", "eth0"))
        program = lab.start("s", "program", "bash", "-c", command)
        program.saw("listening on lan")
        time.sleep(0.3)
        before = cpu_seconds(program)
        generator = lab.start("c", "load", load, "clients", "eth0", "--flood", "--rate", str(rate), "--seconds",
                              str(seconds))
        generator.popen.wait(60)
        sent = int(re.search(r"started (\d+)", generator.log()).group(1))
        used = -1
        while used != cpu_seconds(program):  # until it has caught up
            used = cpu_seconds(program)
            time.sleep(0.5)
        program.signal(signal.SIGINT)
        program.popen.wait(10)
        drops = re.findall(r"dropped (\d+), errors|(\d+) packets dropped by kernel", program.log())
        counted = re.search(r"parsed (\d+)|(\d+) packets captured", program.log())
        if counted:
            shown = int(counted.group(1) or counted.group(2))
        else:
            wait_for("the output", 5, lambda: os.path.exists(os.path.join(lab.folder, "out")))
            time.sleep(0.2)  # a reader of the pipe is still writing
            shown = lines(os.path.join(lab.folder, "out"))
        return sent, shown, sum(int(a or b) for a, b in drops), used - before


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("tool")
    arguments.add_argument("load")
    arguments.add_argument("--receiver", action="store_true")
    arguments.add_argument("--rates")
    arguments.add_argument("--seconds", type=float, default=3)
    options = arguments.parse_args()
    require("tcpdump", "bash")
    tool, load = os.path.abspath(options.tool), os.path.abspath(options.load)
    rates = options.rates or ("10000,50000,200000" if options.receiver else "50000,150000")
    good = True
    print(f"{'rate':>8}  {'program':<18}{'sent':>9}{'shown':>9}{'dropped':>9}{'missing':>9}{'us/message':>12}{'cycles':>9}")
    for at, rate in enumerate(rates.split(",")):
        shown_by = {}
        for name, command in commands(tool, options.receiver).items():
            sent, shown, dropped, used = measured(load, command, rate, options.seconds)
            shown_by[name] = shown / sent
            microseconds = used / max(shown, 1) * 1e6
            print(f"{rate:>8}  {name:<18}{sent:>9}{shown:>9}{dropped:>9}{1 - shown / sent:>9.1%}"
                  f"{microseconds:>12.2f}{microseconds * megahertz():>9.0f}", flush=True)
            if TCPDUMP not in name:
                good = good and shown / sent >= (min(shown_by[TCPDUMP], 1) if at == 0 else shown_by[TCPDUMP] / 2)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
