#!/usr/bin/env python3
"""Measures dhcprelay in network namespaces; script/bench-relay builds what it needs and starts it.

  compare  beside the ISC relay agent: CPU time of a transaction at a fixed rate, and transactions per second
  flood    20,000 requests per second from one link while the other link's clients get leases
  soak     a mixed load for a long time: nothing is lost and the resident size does not grow

A transaction is DISCOVER, OFFER, REQUEST and ACK, or the corresponding DHCPv6 messages.
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
# By protocol: limits of the ratio to the ISC agent, for CPU time of a transaction and for transactions per second.
TARGETS = {4: (0.6, 1.2), 6: (0.7, 1.2)}


def start(lab, name, protocol):
    """Starts one of the two agents with one client link. Both add option 82 or an interface-id."""
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
    """Binds the process to one processor, so that the agent does not share its own if there are two."""
    os.sched_setaffinity(process.popen.pid, {cpu % os.cpu_count()})


def measured(name, protocol, rate, seconds):
    """CPU seconds of a transaction at the rate and at full load, and transactions per second at full load."""
    with Relayed() as lab:
        lab.responder(SERVER if protocol == 4 else SERVER6)
        pin(lab.processes[-1], 1)
        agent = start(lab, name, protocol)
        pin(agent, 0)

        def run(*options):
            before = cpu_seconds(agent)
            load = lab.load("c1", *(["-6"] if protocol == 6 else []), *options)
            pin(load, 1)
            result = outcome(load, seconds + 30)
            assert result["completed"] > 0 and result["stray"] == 0, (name, result, agent.log())
            return (cpu_seconds(agent) - before) / result["completed"], result

        run("--rate", 200, "--seconds", 0.5)
        steady, result = run("--rate", rate, "--seconds", seconds)
        if result["completed"] < 0.99 * result["started"]:
            print(f"{name}, DHCPv{protocol}: lost {result['lost']:.0f} of {result['started']:.0f} at the fixed rate")
        full, result = run("--window", 64, "--seconds", seconds)
        return steady, full, result["completed"] / result["seconds"]


def compare(arguments):
    """Runs the agents in pairs, in alternating order. Prints the median of each figure and of its ratio in a pair."""
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
                ("transactions per second, full load", 2, 1, lambda ratio: ratio >= least)):
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
    """Untagged and tagged clients of both protocols, 300 transactions per second together."""
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
            results = [outcome(load) for load in loads]
            for result in results:
                print(result)
            print(lab.counters(agent))
        lost = sum(result["lost"] + result["stray"] for result in results)
        grown = sizes[-1] - sizes[len(sizes) // 4]
        print(f"lost or stray {lost:.0f}, resident size grown by {grown} KiB after the first quarter")
        return 1 if lost or grown > 64 else 0


def end(*_):
    """Ends the measurement, which removes the namespaces. A second SIGTERM is ignored."""
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
    os.nice(-10)  # reduces the influence of other processes
    sys.exit(arguments.command(arguments))


if __name__ == "__main__":
    main()
