#!/usr/bin/env python3
"""Measures dhcprelay in network namespaces; script/bench-relay builds what it needs and starts it.

  compare  beside the ISC relay agent: CPU time of a transaction at a fixed rate, and transactions a second
  flood    20,000 requests a second from one link while the other link's clients get leases
  soak     a mixed load for a long time: nothing is lost and the resident size stays where it was

A transaction is DISCOVER, OFFER, REQUEST, ACK, or what corresponds to them in DHCPv6.
"""

import argparse
import os
import signal
import statistics
import sys
import time

sys.path[:0] = [os.path.join(os.path.dirname(os.path.abspath(__file__)), folder) for folder in ("../lab", "../tests/e2e")]

import relay4  # noqa: E402
from lab import require, wait_for  # noqa: E402
from relayed import SERVER, SERVER6, AccessPort, Relayed, outcome  # noqa: E402

OWN, ISC = "dhcprelay", "dhcrelay"
# By protocol: the most CPU time of a transaction, and the least transactions a second, of the ISC agent's.
TARGETS = {4: (0.6, 1.2), 6: (0.7, 1.2)}


def start(lab, name, protocol):
    """One of the two agents with one client link, as its manual says; both add option 82 or an interface-id."""
    if name == OWN:
        return lab.relay("-c", "cl1", "-s", SERVER if protocol == 4 else SERVER6, "--rate", "0")
    places = {4: ("-4", "-d", "-q", "-a", "-id", "cl1", "-iu", "up0", SERVER),
              6: ("-6", "-d", "-q", "-I", "-l", "cl1", "-u", f"{SERVER6}%up0")}
    agent = lab.start("relay", ISC, "dhcrelay", "--no-pid", *places[protocol])
    port = ":67" if protocol == 4 else ":547"
    wait_for("the ISC agent's socket", 5, lambda: port in lab.run("relay", "ss", "-uln"))
    return agent


def cpu_seconds(process):
    with open(f"/proc/{process.popen.pid}/schedstat", encoding="ascii") as file:
        return int(file.read().split()[0]) / 1e9


def resident_kib(process):
    with open(f"/proc/{process.popen.pid}/status", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("VmRSS:"))


def pin(process, cpu):
    """The agent has a processor of its own where there are two."""
    os.sched_setaffinity(process.popen.pid, {cpu % os.cpu_count()})


def measured(name, protocol, rate, seconds):
    """CPU seconds of a transaction at the rate and at full load, and transactions a second at full load."""
    with Relayed() as lab:
        lab.responder(SERVER if protocol == 4 else SERVER6)
        pin(lab.processes[-1], 1)
        agent = start(lab, name, protocol)
        pin(agent, 0)

        def run(*options):
            before = cpu_seconds(agent)
            load = lab.load("c1", *(["-6"] if protocol == 6 else []), *options)
            pin(load, 1)
            told = outcome(load, seconds + 30)
            assert told["completed"] > 0 and told["stray"] == 0, (name, told, agent.log())
            return (cpu_seconds(agent) - before) / told["completed"], told

        run("--rate", 200, "--seconds", 0.5)
        steady, told = run("--rate", rate, "--seconds", seconds)
        if told["completed"] < 0.99 * told["started"]:
            print(f"{name}, DHCPv{protocol}: lost {told['lost']:.0f} of {told['started']:.0f} at the fixed rate")
        full, told = run("--window", 64, "--seconds", seconds)
        return steady, full, told["completed"] / told["seconds"]


def compare(arguments):
    """Pairs of runs, the order changing from pair to pair; the medians of each figure and of its ratio in the pairs."""
    require("dhcrelay")
    missed = False
    for protocol in arguments.protocols:
        rounds = {OWN: [], ISC: []}
        for number in range(arguments.rounds):
            for name in (OWN, ISC) if number % 2 == 0 else (ISC, OWN):
                rounds[name].append(measured(name, protocol, arguments.rate, arguments.seconds))
        most, least = TARGETS[protocol]
        for what, figure, unit, good in (
                (f"CPU time of a transaction, {arguments.rate}/s", 0, 1e6, lambda ratio: ratio <= most),
                ("CPU time of a transaction, full load", 1, 1e6, lambda ratio: ratio <= most),
                ("transactions a second, full load", 2, 1, lambda ratio: ratio >= least)):
            own, isc = ([run[figure] * unit for run in rounds[name]] for name in (OWN, ISC))
            ratio = statistics.median(a / b for a, b in zip(own, isc))
            missed |= not good(ratio)
            print(f"DHCPv{protocol}  {what:42}  {OWN} {statistics.median(own):8.1f}  ISC {statistics.median(isc):8.1f}  "
                  f"ratio {ratio:4.2f}  {'met' if good(ratio) else 'MISSED'}", flush=True)
    return 1 if missed else 0


def flood(arguments):
    relay4.flood(20000, arguments.seconds)
    return 0


def soak(arguments):
    """Untagged and tagged clients of both protocols, 300 transactions a second together."""
    require("ethtool")
    with Relayed(tagged=True) as lab:
        for address in (SERVER, SERVER6):
            lab.responder(address)
        agent = lab.relay(*relay4.BOTH_PROTOCOLS, "--vlans", "cl2=100")
        with AccessPort(lab, 0x8100, 100):
            loads = [lab.load(client, *protocol, "--rate", rate, "--seconds", arguments.seconds)
                     for client, rate in (("c1", 100), ("c2", 50)) for protocol in ((), ("-6",))]
            begin, sizes = time.monotonic(), []
            while time.monotonic() - begin < arguments.seconds:
                time.sleep(arguments.seconds / 20)
                sizes.append(resident_kib(agent))
                print(f"{time.monotonic() - begin:6.0f} s  resident {sizes[-1]} KiB  CPU {cpu_seconds(agent):.1f} s",
                      flush=True)
            told = [outcome(load) for load in loads]
            for one in told:
                print(one)
            print(lab.counters(agent))
        lost = sum(one["lost"] + one["stray"] for one in told)
        grown = sizes[-1] - sizes[len(sizes) // 4]
        print(f"lost or stray {lost:.0f}, resident size grown by {grown} KiB after the first quarter")
        return 1 if lost or grown > 64 else 0


def end(*_):
    """Ends the measurement and takes the namespaces away; another signal does not disturb that."""
    signal.signal(signal.SIGTERM, signal.SIG_IGN)
    sys.exit(1)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(required=True)
    for command, seconds in ((compare, 4), (flood, 10), (soak, 600)):
        sub = commands.add_parser(command.__name__)
        sub.set_defaults(command=command)
        sub.add_argument("--seconds", type=float, default=seconds)
        if command is compare:
            sub.add_argument("--rounds", type=int, default=5)
            sub.add_argument("--rate", type=int, default=2000)
            sub.add_argument("--protocols", type=int, nargs="+", choices=(4, 6), default=(4, 6))
    arguments = parser.parse_args()
    signal.signal(signal.SIGTERM, end)
    os.nice(-10)  # other work on the machine disturbs less
    sys.exit(arguments.command(arguments))


if __name__ == "__main__":
    main()
