#!/usr/bin/env python3
"""The DHCPv4 relay agent between real clients and real servers. The agent's path: the environment's RELAY_AGENT."""

import os
import signal
import time

import dhcp4
from dhcp4 import Message, client_frame, item
from lab import Lab, main, received, require, wait_for
from servers4 import SERVERS

CLIENT_SCRIPT = """#!/bin/sh
case "${reason:-$1}" in
bound|renew|BOUND|RENEW|REBIND)
    ip addr flush dev $interface
    ip addr add ${ip:-$new_ip_address}/24 dev $interface
    ip route replace default via ${router:-$new_routers} dev $interface ;;
esac
echo "event ${reason:-$1} ${ip:-$new_ip_address} server ${serverid:-$new_dhcp_server_identifier}"
"""


class Relayed(Lab):
    """Clients c1 and c2 on links of their own, the relay between them and the server."""

    def __enter__(self):
        super().__enter__()
        self.add("c1", "c2", "relay", "srv")
        self.link(("relay", "cl1", "10.20.0.1/24"), ("c1", "eth0"))
        self.link(("relay", "cl2", "10.30.0.1/24"), ("c2", "eth0"))
        self.link(("relay", "up0", "10.82.0.1/24"), ("srv", "up1", "10.82.0.2/24"))
        self.run("srv", "ip", "route", "add", "10.0.0.0/8", "via", "10.82.0.1")
        # Addresses of the subnet that only link selection leads to: its clients still reach their relay.
        self.run("relay", "ip", "route", "add", "10.40.0.0/24", "dev", "cl1")
        self.script = self.file("client.sh", CLIENT_SCRIPT, 0o755)
        return self

    def relay(self, *options):
        self.agent = self.start("relay", "relay_agent", os.environ["RELAY_AGENT"], "-v", "-c", "cl1", "-c", "cl2", "-s",
                                "10.82.0.2", *options)
        wait_for("the agent's UDP socket", 5, lambda: ":67" in self.run("relay", "ss", "-ulnH"))

    def counts(self):
        before = len(self.agent.log())
        self.agent.signal(signal.SIGUSR1)
        wait_for("the agent's counts", 5, lambda: "delivered:" in self.agent.log()[before:])
        return self.agent.log()[before:]

    def udhcpc(self, namespace):
        return self.start(namespace, "udhcpc", "udhcpc", "-i", "eth0", "-f", "-R", "-t", "10", "-T", "1", "-s", self.script)

    def dhclient(self, namespace):
        self.leases = self.file("dhclient.leases", "")
        config = self.file("dhclient.conf", "initial-interval 1; backoff-cutoff 2; request routers, subnet-mask;\n")
        return self.start(namespace, "dhclient", "dhclient", "-4", "-d", "-cf", config, "-sf", self.script, "-lf",
                          self.leases, "-pf", os.path.join(self.folder, "dhclient.pid"), "eth0")


def replies_on(sock, seen):
    seen += [m for m in map(Message.read, received(sock)) if m is not None]
    return [m for m in seen if m.op == 2]


def check_replies(messages, server_id):
    delivered = [m for m in messages if m.src != "10.82.0.2"]  # renewals and their answers pass the relay by
    assert delivered
    for m in delivered:
        assert 82 not in m.options, "option 82 reached the client"
        assert m.udp_good, "UDP checksum of a delivered reply"
        assert len(m.payload) >= 300, len(m.payload)
        if m.type in (dhcp4.OFFER, dhcp4.ACK):
            assert m.server_id() == server_id, m.server_id()


def leases(server_name):
    """Both clients get, renew and release leases of their own pools; the server saw our circuit-id."""
    require("udhcpc", "dhclient", SERVERS[server_name].program)
    with Relayed() as lab:
        server = SERVERS[server_name]()
        server.start(lab)
        lab.relay("--generation", "new" if server_name == "kea" else "old")
        wires = [lab.frames("c1", "eth0"), lab.frames("c2", "eth0")]
        first, second = lab.udhcpc("c1"), lab.dhclient("c2")
        first.saw("event bound 10.20.0.1", 20)
        second.saw("event BOUND 10.30.0.1", 20)
        server.saw_circuit_id("cl1:1")
        server.saw_circuit_id("cl2:1")
        first.signal(signal.SIGUSR1)
        first.saw("event renew 10.20.0.1", 15)
        second.saw("event RENEW 10.30.0.1", 20)
        for wire in wires:
            check_replies(replies_on(wire, []), "10.82.0.2")
        first.stop()
        lab.run("c2", "dhclient", "-4", "-r", "-sf", lab.script, "-lf", lab.leases, "-pf",
                os.path.join(lab.folder, "dhclient.pid"), "eth0")
        server.process.saw({"dhcpd": "DHCPRELEASE of 10.30.0.1", "kea": "DHCP4_RELEASE"}[server_name])
        assert "requests relayed: " in lab.counts()


def link_selection():
    """Sub-option 5 chooses the pool."""
    require("udhcpc", "kea-dhcp4")
    with Relayed() as lab:
        SERVERS["kea"]().start(lab)
        lab.relay("--link-selection", "10.40.0.1", "--vrf", "tenant-blue", "--vendor-interface")
        lab.udhcpc("c1").saw("event bound 10.40.0.1", 20)


def server_id_override():
    """The server identifier is the relay's address, and the client renews with the relay."""
    require("udhcpc", "dnsmasq")
    with Relayed() as lab:
        SERVERS["dnsmasq"]().start(lab)
        lab.relay("--link-selection", "auto", "--server-id-override")
        wire, seen = lab.frames("c1", "eth0"), []
        client = lab.udhcpc("c1")
        client.saw("event bound 10.20.0.1", 20)
        assert "server 10.20.0.1" in client.log()
        check_replies(replies_on(wire, seen), "10.20.0.1")
        client.signal(signal.SIGUSR1)
        client.saw("event renew 10.20.0.1", 15)
        replies_on(wire, seen)
        assert [m for m in seen if m.op == 1 and m.dst == "10.20.0.1" and m.ciaddr.startswith("10.20.0.1")], \
            "no renewal was unicast to the relay"


def server_id_restored():
    """With --restore-server-id the client hears of the real server."""
    require("udhcpc", "dnsmasq")
    with Relayed() as lab:
        SERVERS["dnsmasq"]().start(lab)
        lab.relay("--link-selection", "auto", "--server-id-override", "--restore-server-id")
        wire = lab.frames("c1", "eth0")
        lab.udhcpc("c1").saw("server 10.82.0.2", 20)
        check_replies(replies_on(wire, []), "10.82.0.2")


def burst():
    """Fifty clients at once all get leases."""
    require("dhcpd")
    with Relayed() as lab:
        SERVERS["dhcpd"]().start(lab)
        lab.relay()
        wire = lab.frames("c1", "eth0")
        macs = [bytes([2, 0xC1, 0, 0, 1, n]) for n in range(50)]
        offers, acks, seen = {}, {}, []
        end = time.monotonic() + 30
        while len(acks) < len(macs) and time.monotonic() < end:
            for n, mac in enumerate(macs):
                if mac not in offers:
                    wire.send(client_frame(mac, 1000 + n, dhcp4.DISCOVER))
                elif mac not in acks:
                    m = offers[mac]
                    wire.send(client_frame(mac, 1000 + n, dhcp4.REQUEST,
                                           [(54, m.options[54]), (50, m.payload[16:20])]))
            time.sleep(1.5)
            for m in replies_on(wire, seen):
                {dhcp4.OFFER: offers, dhcp4.ACK: acks}.get(m.type, {}).setdefault(m.chaddr, m)
        assert len(acks) == len(macs), f"{len(acks)} of {len(macs)} clients got a lease"
        assert len({m.yiaddr for m in acks.values()}) == len(macs), "an address was given twice"


def relayed_request(lab, up, **request):
    """What the server's link sees of a client's DISCOVER, and the relay's drop counts."""
    received(up)
    wire = lab.frames("c1", "eth0")
    wire.send(client_frame(b"\x02\xc1\0\0\2\1", 7, dhcp4.DISCOVER, **request))
    time.sleep(0.5)
    return [m for m in map(Message.read, received(up)) if m is not None], lab.counts()


def policies():
    """Requests that carry option 82, have made too many hops, or name the relay as theirs."""
    require()
    foreign = [(82, item(1, b"elsewhere"))]
    expected = {"keep": b"elsewhere", "replace": b"cl1:1", "forward": b"elsewhere", "discard": None}
    for policy, circuit_id in expected.items():
        with Relayed() as lab:
            lab.relay("--existing", policy, "--hop-limit", "4", "--link-selection", "auto")
            up = lab.frames("srv", "up1")
            relayed, counts = relayed_request(lab, up, options=foreign)
            if circuit_id is None:
                assert not relayed and "dropped, option 82 in a request: 1" in counts, counts
                continue
            subs = dict(dhcp4.items(relayed[0].options[82], pads=False))
            assert subs[1] == circuit_id and (5 in subs) == (policy != "forward"), subs
            assert relayed[0].giaddr == "10.20.0.1" and relayed[0].hops == 1 and relayed[0].src == "10.82.0.1"
            _, counts = relayed_request(lab, up, hops=4)
            assert "dropped, hop limit: 1" in counts, counts
            _, counts = relayed_request(lab, up, giaddr="10.20.0.1")
            assert "dropped, giaddr is ours: 1" in counts, counts
            relayed, _ = relayed_request(lab, up, giaddr="10.99.0.1", options=foreign)
            assert relayed[0].giaddr == "10.99.0.1" and relayed[0].options[82] == foreign[0][1], relayed[0].options
            relayed, counts = relayed_request(lab, up, options=[(82, b"")])
            assert not relayed and "dropped, not rewritable: infoOptionEmpty: 1" in counts, counts
            assert lab.agent.stop() == 0


if __name__ == "__main__":
    main({**{f"leases-{name}": lambda name=name: leases(name) for name in ("dhcpd", "kea")},
          "link-selection": link_selection,
          "server-id-override": server_id_override, "server-id-restored": server_id_restored, "burst": burst,
          "policies": policies})
