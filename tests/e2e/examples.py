#!/usr/bin/env python3
"""The examples on live links: snooper and relay between a client and ISC dhcpd, then leasequery. EXAMPLES is their
folder."""

import os

from lab import Lab, main, require

CLIENT, RELAY, UPLINK, SERVER = "02:c1:00:00:01:31", "10.20.0.1", "10.82.0.1", "10.82.0.2"
CONFIG = """authoritative; allow leasequery; ping-check false; default-lease-time 120;
max-lease-time 120;
subnet 10.82.0.0 netmask 255.255.255.0 { }
subnet 10.20.0.0 netmask 255.255.255.0 { range 10.20.0.100 10.20.0.109; }
"""


def live():
    require("dhcpd", "udhcpc")
    with Lab() as lab:
        lab.add("client", "agent", "server")
        lab.link(("agent", "lan0", RELAY + "/24"), ("client", "eth0"))
        lab.link(("agent", "up0", UPLINK + "/24"), ("server", "eth0", SERVER + "/24"))
        lab.run("server", "ip", "route", "add", "10.20.0.0/24", "via", UPLINK)
        lab.run("client", "ip", "link", "set", "eth0", "address", CLIENT)
        lab.start("server", "dhcpd", "dhcpd", "-4", "-f", "-d", "-cf", lab.file("dhcpd.conf", CONFIG), "-lf",
                  lab.file("dhcpd.leases", ""), "-pf", os.path.join(lab.folder, "dhcpd.pid"),
                  "eth0").saw("Server starting service")
        snooper, relay, leasequery = (os.path.join(os.environ["EXAMPLES"], name)
                                      for name in ("snooper", "relay", "leasequery"))
        snooping = lab.start("agent", "snooper", snooper, "lan0", "up0")
        lab.start("agent", "relay", relay, "lan0", RELAY, SERVER)
        script = lab.file("client.sh", '#!/bin/sh\n[ "$1" = bound ] && echo "bound $ip."\nexit 0\n', 0o755)
        client = lab.start("client", "udhcpc", "udhcpc", "-i", "eth0", "-f", "-R", "-T", "1", "-t", "20", "-s", script)
        client.saw(".\n", 30)
        address = client.log().split("bound ")[1].split(".\n")[0]
        snooping.saw(f"lan0 VLAN 1 DHCPREQUEST {CLIENT}\n")
        snooping.saw(f"up0 VLAN 1 DHCPACK {CLIENT} gets {address}\n")
        answer = lab.run("agent", leasequery, SERVER, UPLINK, CLIENT)
        assert answer.startswith(f"DHCPLEASEACTIVE {address} {CLIENT}, for 1"), answer


if __name__ == "__main__":
    main({"live": live})
