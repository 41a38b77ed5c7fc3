#!/usr/bin/env python3
"""Makes the captures of docs/troubleshooting.md: eight faults of a network, with real clients, relays and servers.

lab/faults.py [FAULT]... overwrites tests/data/captures/faults/FAULT*.pcap, for all faults if none is named. Needs root
and the packages of `script/setup e2e faults`. Times, transaction ids and IAIDs differ in each run: update the page
afterwards with `tests/tools/troubleshooting_test.py --update`."""

import json
import os
import shutil
import signal
import time
from contextlib import contextmanager

from lab import Lab, main, require

CAPTURES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../tests/data/captures/faults")
MESSAGES = "udp and (port 67 or port 68 or port 546 or port 547)"
ADDRESSES = {"lan1": ("10.10.0.1/24", "2001:db8:10::1/64"), "lan2": ("10.20.0.1/24", "2001:db8:20::1/64")}
DHCPD = "authoritative; ping-check false; default-lease-time 600; max-lease-time 600;\n"
# Sets the address of the lease, and prints it.
SCRIPT = """#!/bin/sh
case "${reason:-$1}" in
bound|renew|BOUND|RENEW|REBOOT|REBIND)
    ip addr flush dev $interface scope global
    ip addr add ${ip:-$new_ip_address}/24 dev $interface ;;
esac
echo "event ${reason:-$1} ${ip:-$new_ip_address}${new_ip6_address:-$new_ip6_prefix}"
"""


class Site(Lab):
    """A switch with two VLANs, `lan1` and `lan2`, and a server with an interface of that name in each of `lans`."""

    def __init__(self, lans=("lan1", "lan2")):
        super().__init__()
        self.lans = lans

    def __enter__(self):
        super().__enter__()
        self.script = self.file("client.sh", SCRIPT, 0o755)
        self.add("sw", "srv")
        for lan in ADDRESSES:
            self.run("sw", "ip", "link", "add", lan, "type", "bridge")
            self.run("sw", "ip", "link", "set", lan, "up")
        for lan in self.lans:
            self.attach("srv", lan, lan, "02:5e:00:00:00:01", *ADDRESSES[lan])
        return self

    def attach(self, namespace, interface, lan, mac, *addresses):
        """Connects an interface with a port of the switch."""
        port = f"{namespace}-{interface}"
        self.link((namespace, interface), ("sw", port))
        self.run(namespace, "ethtool", "-K", interface, "tx", "off")  # or the captures have unfinished checksums
        for state in (["down"], ["address", mac], ["up"]):  # in this order, or the link-local address has another MAC
            self.run(namespace, "ip", "link", "set", interface, *state)
        for address in addresses:
            self.run(namespace, "ip", "addr", "add", address, "dev", interface)
        self.move(port, lan)

    def move(self, port, lan):
        self.run("sw", "ip", "link", "set", port, "master", lan)

    def host(self, number, *addresses):
        """A host in lan1 with an interface eth0."""
        name = f"c{number}"
        self.add(name)
        self.attach(name, "eth0", "lan1", f"02:c1:00:00:00:0{number}", *addresses)
        return name

    @contextmanager
    def captured(self, name, namespace, interface, filtered=MESSAGES):
        """Captures the interface's messages during the block. Keeps the capture if the block succeeds."""
        path = os.path.join(self.folder, name + ".pcap")
        tcpdump = self.start(namespace, "tcpdump", "tcpdump", "-i", interface, "-U", "-Z", "root", "-w", path, filtered)
        tcpdump.saw("listening on")
        yield
        time.sleep(1)  # until the last frames are written
        tcpdump.signal(signal.SIGINT)
        tcpdump.popen.wait(5)
        os.makedirs(CAPTURES, exist_ok=True)
        shutil.copyfile(path, os.path.join(CAPTURES, name + ".pcap"))
        print(f"{name}.pcap: {os.path.getsize(path)} bytes")

    def udhcpc(self, namespace, *options):
        return self.start(namespace, "udhcpc", "udhcpc", "-i", "eth0", "-f", "-s", self.script, *options)

    def dhclient(self, namespace, *options):
        """Keeps the leases for the next dhclient in the namespace, like a host that is switched off and on."""
        leases = os.path.join(self.folder, namespace + ".leases")
        if not os.path.exists(leases):
            self.file(namespace + ".leases", "")
        config = self.file("dhclient.conf", "initial-interval 1; backoff-cutoff 4;\n")
        return self.start(namespace, "dhclient", "dhclient", *options, "-d", "-sf", self.script, "-lf", leases, "-cf", config,
                          "-pf", os.path.join(self.folder, namespace + ".pid"), "eth0")

    def dhcpd(self, config, *options):
        self.start("srv", "dhcpd", "dhcpd", *options, "-f", "-d", "-cf", self.file("dhcpd.conf", config), "-lf",
                   self.file("dhcpd.leases", ""), "-pf", os.path.join(self.folder, "dhcpd.pid"),
                   *self.lans).saw("Server starting service")

    def dnsmasq(self, namespace, interface, first, last, *options):
        self.start(namespace, "dnsmasq", "dnsmasq", "-d", "-C", "/dev/null", "-p", "0", "--user=root", "--log-dhcp",
                   f"--interface={interface}", "--dhcp-authoritative", "--no-ping",
                   f"--dhcp-leasefile={self.folder}/dnsmasq.leases", f"--dhcp-range={first},{last},255.255.255.0,600s",
                   *options).saw("DHCP, IP range")


def subnet(lan, *statements):
    """A declaration for dhcpd."""
    network, router = (f"10.{lan}0.0.{host}" for host in (0, 1))
    return f"subnet {network} netmask 255.255.255.0 {{ option routers {router}; {' '.join(statements)} }}\n"


def no_server():
    """The VLAN has no server."""
    require("udhcpc", "tcpdump")
    with Site(lans=()) as site, site.captured("no-server", site.host(1), "eth0"):
        assert site.udhcpc("c1", "-n", "-t", "4", "-T", "2").popen.wait(20) == 1


def pool_exhausted():
    """The pool has only one address, which another client uses."""
    require("dhcpd", "udhcpc", "tcpdump")
    with Site(lans=("lan1",)) as site:
        site.dhcpd(DHCPD + subnet(1, "range 10.10.0.100 10.10.0.100;"))
        hosts = site.host(1), site.host(2)
        with site.captured("pool-exhausted", "srv", "lan1"):
            site.udhcpc(hosts[0]).saw("event bound 10.10.0.100")
            assert site.udhcpc(hosts[1], "-n", "-t", "3", "-T", "2").popen.wait(20) == 1


def nak_after_move():
    """A host is switched off and connected to another VLAN. It asks for its old address."""
    require("dhcpd", "dhclient", "tcpdump")
    with Site() as site:
        site.dhcpd(DHCPD + "".join(subnet(lan, f"range 10.{lan}0.0.100 10.{lan}0.0.109;") for lan in (1, 2)))
        with site.captured("nak-after-move", site.host(1), "eth0"):
            client = site.dhclient("c1", "-4")
            client.saw("bound to 10.10.0.10")  # and its lease is in the file
            client.stop()
            site.move("c1-eth0", "lan2")
            site.dhclient("c1", "-4").saw("event BOUND 10.20.0.10")


def rogue_server():
    """A home router with a DHCP server is connected. It answers faster than the server, which pings addresses first."""
    require("dhcpd", "dnsmasq", "udhcpc", "tcpdump")
    with Site(lans=("lan1",)) as site:
        site.dhcpd(DHCPD.replace("ping-check false; ", "") + subnet(1, "range 10.10.0.100 10.10.0.109;"))
        site.add("rogue")
        site.attach("rogue", "eth0", "lan1", "02:bd:00:00:00:07", "192.168.1.1/24")
        site.dnsmasq("rogue", "eth0", "192.168.1.100", "192.168.1.199")
        with site.captured("rogue-server", site.host(1), "eth0"):
            site.udhcpc("c1").saw("event bound 192.168.1.1")
            time.sleep(2)


def relay_drops_option82():
    """The server selects the pool by the option 82 of the access switch, but the relay replaces that option."""
    require("dhcpd", "dhcrelay", "udhcpc", "tcpdump")
    with Site(lans=("lan2",)) as site:
        site.add("relay")
        site.attach("relay", "lan1", "lan1", "02:5e:00:00:00:0a", "10.10.0.1/24")
        site.attach("relay", "lan2", "lan2", "02:5e:00:00:00:0b", "10.20.0.2/24")
        site.run("srv", "ip", "route", "add", "10.10.0.0/24", "via", "10.20.0.2")
        site.dhcpd(DHCPD + 'class "port7" { match if option agent.circuit-id = "access-sw1:7"; }\n' + subnet(2) +
                   subnet(1, 'pool { allow members of "port7"; range 10.10.0.100 10.10.0.109; }'))
        with site.captured("relay-drops-option82-client", site.host(1), "eth0"), \
                site.captured("relay-drops-option82-server", "srv", "lan2"):
            site.start("relay", "dhcrelay", "dhcrelay", "-4", "-d", "-a", "-m", "replace", "-id", "lan1", "-iu", "lan2",
                       "10.20.0.1").saw("Sending on   Socket")
            circuit = b"access-sw1:7"
            option82 = (bytes([1, len(circuit)]) + circuit).hex()
            assert site.udhcpc("c1", "-n", "-t", "3", "-T", "2", "-x", f"0x52:{option82}").popen.wait(20) == 1


def address_conflict():
    """A host uses an address of the pool without a lease. A client detects it with ARP and declines the address."""
    require("dnsmasq", "udhcpc", "tcpdump")
    with Site(lans=("lan1",)) as site:
        site.dnsmasq("srv", "lan1", "10.10.0.100", "10.10.0.109", "--dhcp-sequential-ip")
        site.host(2, "10.10.0.100/24")
        with site.captured("address-conflict", site.host(1), "eth0", f"arp or {MESSAGES}"):
            site.udhcpc("c1", "-a").saw("event bound 10.10.0.101", 30)


def not_on_link():
    """The DHCPv6 variant of nak-after-move: the host sends CONFIRM for its old address."""
    require("dhcpd", "dhclient", "tcpdump")
    with Site() as site:
        site.dhcpd("default-lease-time 600;\n" + "".join(
            f"subnet6 2001:db8:{lan}0::/64 {{ range6 2001:db8:{lan}0::100 2001:db8:{lan}0::1ff; }}\n" for lan in (1, 2)), "-6")
        with site.captured("not-on-link", site.host(1), "eth0"):
            client = site.dhclient("c1", "-6")
            client.saw("event BOUND6 2001:db8:10::1")
            client.stop()
            site.move("c1-eth0", "lan2")
            site.dhclient("c1", "-6").saw("event BOUND6 2001:db8:20::1", 20)


def no_prefix_avail():
    """The server can delegate only one prefix, which another router has."""
    require("dhclient", "kea-dhcp6", "tcpdump")
    with Site(lans=("lan1",)) as site:
        config = {"Dhcp6": {
            "interfaces-config": {"interfaces": ["lan1"]},
            "lease-database": {"type": "memfile", "persist": False},
            "server-id": {"type": "LL", "persist": False, "htype": 1, "identifier": "025e00000001"},
            "valid-lifetime": 600, "preferred-lifetime": 500, "subnet6": [
                {"id": 1, "subnet": "2001:db8:10::/64", "interface": "lan1", "rapid-commit": False,
                 "pools": [{"pool": "2001:db8:10::100-2001:db8:10::1ff"}],
                 "pd-pools": [{"prefix": "2001:db8:f00::", "prefix-len": 56, "delegated-len": 56}]}],
            "loggers": [{"name": "kea-dhcp6", "severity": "INFO", "output_options": [{"output": "stdout"}]}]}}
        site.environment.update(KEA_LOCKFILE_DIR=site.folder, KEA_PIDFILE_DIR=site.folder)
        site.start("srv", "kea", "kea-dhcp6", "-c", site.file("kea6.json", json.dumps(config))).saw("DHCP6_STARTED")
        hosts = site.host(1), site.host(2)
        with site.captured("no-prefix-avail", "srv", "lan1"):
            site.dhclient(hosts[0], "-6", "-P").saw("event BOUND6")
            site.dhclient(hosts[1], "-6", "-P")
            time.sleep(5)


if __name__ == "__main__":
    main({fault.__name__.replace("_", "-"): fault
          for fault in (no_server, pool_exhausted, nak_after_move, rogue_server, relay_drops_option82, address_conflict,
                        not_on_link, no_prefix_avail)})
