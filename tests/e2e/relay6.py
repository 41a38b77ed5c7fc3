#!/usr/bin/env python3
"""The DHCPv6 relay agent between real clients and real servers. The agent's path: the environment's RELAY6_AGENT."""

import json
import os
import signal
import struct

from lab import Lab, main, received, require, wait_for

CLIENT_SCRIPT = """#!/bin/sh
[ -z "$new_ip6_address" ] || ip -6 addr replace "$new_ip6_address/64" dev "$interface"
echo "event $reason ${new_ip6_address:-$new_dhcp6_ia_na1_ia_addr1} prefix $new_ip6_prefix$new_dhcp6_ia_pd1_prefix1"
"""
LINK, SERVER = "2001:db8:20::1", "2001:db8:82::2"
RELAY_FORWARD = 12


def options(data):
    """{code: data} of a DHCPv6 options area."""
    found, at = {}, 0
    while at + 4 <= len(data):
        code, length = struct.unpack(">HH", data[at:at + 4])
        found.setdefault(code, data[at + 4:at + 4 + length])
        at += 4 + length
    assert at == len(data), "the options do not end with the message"
    return found


def relay_forwards(frames):
    """(hop count, link address, options) of the relay-forward messages among the frames."""
    for frame in frames:
        if frame[12:14] != b"\x86\xdd" or frame[20] != 17 or struct.unpack(">H", frame[56:58])[0] != 547:
            continue
        message = frame[62:54 + struct.unpack(">H", frame[58:60])[0]]
        if message[0] == RELAY_FORWARD:
            yield message[1], message[2:18], options(message[34:])


class Relayed6(Lab):
    """A client, one relay or two in a row, and the server. Only the client's own link has the subnet that is served."""

    def __init__(self, relays=1):
        super().__init__()
        self.relays = relays

    def __enter__(self):
        super().__enter__()
        self.add("c1", "relay", "srv")
        self.link(("relay", "cl1", f"{LINK}/64"), ("c1", "eth0"))
        if self.relays == 1:
            self.link(("relay", "up0", "2001:db8:82::1/64"), ("srv", "up1", f"{SERVER}/64"))
        else:
            self.add("mid")
            self.link(("relay", "up0", "2001:db8:83::1/64"), ("mid", "down0", "2001:db8:83::2/64"))
            self.link(("mid", "up0", "2001:db8:82::1/64"), ("srv", "up1", f"{SERVER}/64"))
            self.run("relay", "ip", "-6", "route", "add", "default", "via", "2001:db8:83::2")
            self.run("mid", "ip", "-6", "route", "add", "2001:db8:20::/64", "via", "2001:db8:83::1")
        self.run("srv", "ip", "-6", "route", "add", "default", "via", "2001:db8:82::1")
        self.script = self.file("client6.sh", CLIENT_SCRIPT, 0o755)
        return self

    def agent(self, namespace, client, server, *more):
        agent = self.start(namespace, "relay6_agent", os.environ["RELAY6_AGENT"], "-v", "-c", client, "-s", server, *more)
        wait_for("the agent's UDP socket", 5, lambda: ":547" in self.run(namespace, "ss", "-ulnH"))
        return agent

    def dhclient(self, *more):
        wait_for("a link-local address of the client", 10,
                 lambda: self.run("c1", "ip", "-6", "addr", "show", "dev", "eth0", "scope", "link", "-tentative"))
        leases = self.file("dhclient6.leases", "")
        return self.start("c1", "dhclient", "dhclient", "-6", "-d", *more, "-sf", self.script, "-lf", leases, "-cf",
                          "/dev/null", "-pf", os.path.join(self.folder, "dhclient6.pid"), "eth0")


def kea(lab):
    config = {"Dhcp6": {
        "interfaces-config": {"interfaces": [f"up1/{SERVER}"]},
        "lease-database": {"type": "memfile", "persist": False},
        "server-id": {"type": "LL", "persist": False, "htype": 1, "identifier": "020000000001"},
        "valid-lifetime": 120, "preferred-lifetime": 100, "renew-timer": 5, "rebind-timer": 90,
        "subnet6": [{"id": 1, "subnet": "2001:db8:20::/64", "pools": [{"pool": "2001:db8:20::1000-2001:db8:20::1fff"}],
                     "pd-pools": [{"prefix": "2001:db8:f000::", "prefix-len": 36, "delegated-len": 48}]}],
        "loggers": [{"name": "kea-dhcp6", "severity": "INFO", "output_options": [{"output": "stdout"}]}]}}
    lab.environment.update(KEA_LOCKFILE_DIR=lab.folder, KEA_PIDFILE_DIR=lab.folder)
    lab.start("srv", "kea", "kea-dhcp6", "-c", lab.file("kea6.json", json.dumps(config))).saw("DHCP6_STARTED")


def dhcpd(lab):
    config = lab.file("dhcpd6.conf", """
default-lease-time 120; preferred-lifetime 100; option dhcp-renewal-time 5;
subnet6 2001:db8:82::/64 { }
subnet6 2001:db8:20::/64 { range6 2001:db8:20::1000 2001:db8:20::1fff; }
""")
    lab.start("srv", "dhcpd", "dhcpd", "-6", "-f", "-d", "-cf", config, "-lf", lab.file("dhcpd6.leases", ""), "-pf",
              os.path.join(lab.folder, "dhcpd6.pid"), "up1").saw("Server starting service")


def dnsmasq(lab):
    lab.start("srv", "dnsmasq", "dnsmasq", "-d", "-C", "/dev/null", "-p", "0", "--log-dhcp", "--user=root",
              "--interface=up1", "--dhcp-range=2001:db8:20::1000,2001:db8:20::1fff,64,120s",
              f"--dhcp-leasefile={lab.folder}/dnsmasq6.leases").saw("DHCPv6, IP range")


def check_forwards(forwards, hop_count, link, interface):
    assert forwards
    for hops, link_address, found in forwards:
        assert hops == hop_count and link_address == link, (hops, link_address)
        assert found[18] == bytes([1, len(interface)]) + interface.encode() + b"\x02\x07default", found[18]
        assert found[37][4:8] == b"\0\3\0\1" and found[37][24:] == interface.encode() + b":1", found[37]


def address():
    """dhclient gets an address of its link's subnet, renews and releases it; the server's link sees what we add."""
    require("dhclient", "dhcpd")
    with Relayed6() as lab:
        dhcpd(lab)
        agent = lab.agent("relay", "cl1", SERVER, "--vss")
        up = lab.frames("srv", "up1")
        client = lab.dhclient()
        client.saw("event BOUND6 2001:db8:20::1", 20)
        client.saw("event RENEW6 2001:db8:20::1", 20)
        forwards = list(relay_forwards(received(up)))
        check_forwards(forwards, 0, b"\x20\x01\x0d\xb8\0\x20" + bytes(9) + b"\1", "cl1")
        mac = bytes.fromhex(lab.run("c1", "cat", "/sys/class/net/eth0/address").strip().replace(":", ""))
        for _, _, found in forwards:
            assert found[79] == b"\0\1" + mac and found[68] == b"\0default", found
        client.signal(signal.SIGTERM)
        assert agent.stop() == 0 and "replies returned: " in agent.log()


def dhcpcd():
    """dhcpcd gets an address from dnsmasq."""
    require("dhcpcd", "dnsmasq")
    with Relayed6() as lab:
        dnsmasq(lab)
        lab.agent("relay", "cl1", SERVER)
        config = lab.file("dhcpcd.conf", f"ipv6only\nnoipv6rs\nduid ll\niaid 1\nia_na 1\nscript {lab.script}\n")
        lab.start("c1", "dhcpcd", "dhcpcd", "-B", "-6", "-f", config, "eth0").saw("event BOUND6 2001:db8:20::1", 25)


def chain():
    """Two relays in a row: address and prefix, and a hop count of 1 at the server."""
    require("dhclient", "kea-dhcp6")
    with Relayed6(relays=2) as lab:
        kea(lab)
        lab.agent("relay", "cl1", "2001:db8:83::2")
        lab.agent("mid", "down0", SERVER)
        up = lab.frames("srv", "up1")
        client = lab.dhclient("-N", "-P")
        client.saw("event BOUND6 2001:db8:20::1", 20)
        client.saw("prefix 2001:db8:f", 20)
        forwards = list(relay_forwards(received(up)))
        check_forwards(forwards, 1, bytes(16), "down0")
        for _, _, found in forwards:
            inner = found[9]
            check_forwards([(inner[1], inner[2:18], options(inner[34:]))], 0,
                           b"\x20\x01\x0d\xb8\0\x20" + bytes(9) + b"\1", "cl1")


if __name__ == "__main__":
    main({"address-dhcpd": address, "dhcpcd-dnsmasq": dhcpcd, "chain-kea": chain})
