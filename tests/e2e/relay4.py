#!/usr/bin/env python3
"""The relay agent between real DHCPv4 clients and real servers."""

import os
import signal
import sys
import time

import dhcp4
from dhcp4 import Message
from lab import main, received, require, wait_for
from relayed import SERVER, SERVER6, AccessPort, Relayed, outcome
from servers4 import SERVERS

BOTH_LINKS = ("-c", "cl1", "-c", "cl2", "-s", SERVER)
BOTH_PROTOCOLS = (*BOTH_LINKS, "-s", SERVER6)


def messages(sock):
    return [m for m in map(Message.read, received(sock)) if m is not None]


def check_replies(seen, server_id=SERVER):
    delivered = [m for m in seen if m.op == 2 and m.src != SERVER]  # a reply to a renewal does not pass the relay
    assert delivered
    for m in delivered:
        assert 82 not in m.options, "option 82 reached the client"
        assert m.udp_good, "UDP checksum of a delivered reply"
        assert len(m.payload) >= 300, len(m.payload)
        if m.type in (dhcp4.OFFER, dhcp4.ACK):
            assert m.server_id() == server_id, m.server_id()


def leases():
    """An untagged and a tagged client get leases. A renewal that the kernel routes reaches the server only once."""
    require("udhcpc", "dhclient", "ethtool", "dhcpd")
    with Relayed(tagged=True) as lab:
        server = SERVERS["dhcpd"]()
        server.start(lab)
        lab.relay(*BOTH_LINKS, "--vlans", "cl2=100-110")
        with AccessPort(lab, 0x8100, 0x6064):  # priority 3, VLAN 100
            wires, up = [lab.frames(client, "eth0") for client in ("c1", "c2")], lab.frames("srv", "up1")
            first, second = lab.udhcpc("c1"), lab.dhclient("c2")
            first.saw("event bound 10.20.0.1", 20)
            second.saw("event BOUND 10.30.0.1", 20)
            server.saw_circuit_id("cl1:1")
            server.saw_circuit_id("cl2:100")
            received(up)
            first.signal(signal.SIGUSR1)
            first.saw("event renew 10.20.0.1", 15)
            # The client's broadcasts are relayed. Its unicasts to the server are routed and not relayed as well.
            seen = messages(wires[0])
            sent, arrived = ([m for m in part if m.op == 1 and m.ciaddr != "0.0.0.0"] for part in (seen, messages(up)))
            assert [m.dst == SERVER for m in sent] == [m.giaddr == "0.0.0.0" for m in arrived], (sent, arrived)
            assert sent[0].dst == SERVER
            check_replies(seen)
            check_replies(messages(wires[1]))


def tags():
    """A reply has the tag of the request. Requests from a VLAN that is not served get no reply."""
    require("ethtool")
    with Relayed(tagged=True) as lab:
        for address in (SERVER, SERVER6):
            lab.responder(address)
        agent = lab.relay(*BOTH_PROTOCOLS, "--vlans", "cl2=20,4094", "--circuit-id", "port-%i", "--interface-id", "port-%i")
        for tpid, tci, served in ((0x8100, 20, True), (0x88A8, 4094, True), (0x8100, 0xE000, True), (0x8100, 21, False)):
            with AccessPort(lab, tpid, tci):
                loads = [lab.load("c2", *protocol, "--first", tpid + tci << 8, "--rate", 100, "--seconds", 0.2)
                         for protocol in ((), ("-6",))]
                for result in map(outcome, loads):
                    wanted = result["started"] if served else 0
                    assert result["completed"] == wanted and result["started"] > 10, \
                        (hex(tpid), hex(tci), result, lab.counters(agent))


def no_echo():
    """A server returns neither option 82 nor interface-id, and two ports have the same relay address."""
    require("udhcpc")
    with Relayed() as lab:
        for address in (SERVER, SERVER6):
            lab.responder(address, "--no-echo")
        lab.relay(*BOTH_PROTOCOLS, "--giaddr", "10.20.0.1", "--link-address", "2001:db8:20::1")
        loads = [lab.load(client, *protocol, "--rate", 100, "--first", number << 16, "--seconds", 1)
                 for number, (client, protocol) in enumerate((c, p) for c in ("c1", "c2") for p in ((), ("-6",)))]
        for result in map(outcome, loads):
            assert result["completed"] == result["started"] > 80 and result["stray"] == 0, result
        lab.udhcpc("c2").saw("event bound 10.20.0.1", 20)


def link_selection():
    """Sub-option 5 selects the pool on each of the servers."""
    require("udhcpc", *(s.program for s in SERVERS.values()))
    for kind in SERVERS.values():
        with Relayed() as lab:
            kind().start(lab)
            lab.relay(*BOTH_LINKS, "--link-selection", "10.40.0.1", "--vrf", "tenant-blue")
            lab.udhcpc("c1").saw("event bound 10.40.0.1", 20)


def server_id_override():
    """Clients get the relay's address as server identifier, and send their renewals to it."""
    require("udhcpc", "dnsmasq")
    with Relayed() as lab:
        SERVERS["dnsmasq"]().start(lab)
        lab.relay(*BOTH_LINKS, "--link-selection", "auto", "--server-id-override")
        wire = lab.frames("c1", "eth0")
        client = lab.udhcpc("c1")
        client.saw("event bound 10.20.0.1", 20)
        check_replies(messages(wire), "10.20.0.1")
        client.signal(signal.SIGUSR1)
        client.saw("event renew 10.20.0.1", 15)
        assert [m for m in messages(wire) if m.op == 1 and m.dst == "10.20.0.1" and m.ciaddr.startswith("10.20.0.1")], \
            "no renewal was unicast to the relay"


def chain():
    """Two relays in a row. The second one trusts the first and leaves its giaddr and option 82 unchanged."""
    require("udhcpc", "kea-dhcp4")
    with Relayed() as lab:
        SERVERS["kea"]().start(lab)
        up = lab.frames("srv", "up1")
        # The client "far" is on a link of c1, which runs the first relay. The second relay is in "relay".
        lab.add("far")
        lab.link(("c1", "cl3", "10.40.0.1/24"), ("far", "eth0"))
        lab.run("c1", "ip", "addr", "add", "10.20.0.7/24", "dev", "eth0")
        lab.run("c1", "ip", "route", "add", "default", "via", "10.20.0.1")
        lab.run("relay", "ip", "route", "replace", "10.40.0.0/24", "via", "10.20.0.7")
        lab.relay("-c", "cl1", "-s", SERVER, "--trust", "cl1")
        # The server answers the first relay directly.
        lab.relay("-c", "cl3", "-s", "10.20.0.1", "--accept-replies-from", SERVER, namespace="c1")
        lab.udhcpc("far").saw("event bound 10.40.0.1", 20)
        relayed = [m for m in messages(up) if m.op == 1 and m.giaddr == "10.40.0.1"]
        assert {m.hops for m in relayed} == {2}, [m.hops for m in relayed]
        assert all(dhcp4.items(m.options[82], pads=False)[0] == (1, b"cl3:1") for m in relayed)


def change():
    """Links are served after they are added, removed and added again, and after their addresses change."""
    require()
    with Relayed() as lab:
        for address in (SERVER, SERVER6):
            lab.responder(address)

        def served(client):
            loads = [lab.load(client, *protocol, "--rate", 100, "--seconds", 0.3) for protocol in ((), ("-6",))]
            for result in map(outcome, loads):
                assert result["completed"] == result["started"] > 10, result

        lab.run("relay", "ip", "link", "del", "cl2")
        agent = lab.relay(*BOTH_PROTOCOLS)
        served("c1")
        for _ in range(2):
            lab.client_link(2)
            time.sleep(0.5)
            served("c2")
            lab.run("relay", "ip", "link", "del", "cl2")
        lab.run("relay", "ip", "addr", "flush", "dev", "cl1", "scope", "global")
        lab.run("relay", "ip", "addr", "add", "10.20.0.9/24", "dev", "cl1")
        lab.run("relay", "ip", "addr", "add", "2001:db8:20::9/64", "dev", "cl1")
        time.sleep(0.5)
        served("c1")
        assert agent.stop() == 0


def unreachable():
    """Counted: requests that do not reach a server, since its port is closed or there is no route to it, and a forged
    reply from a client link."""
    require()
    with Relayed() as lab:
        agent = lab.relay(*BOTH_PROTOCOLS)

        def ask():
            for protocol in ((), ("-6",)):
                outcome(lab.load("c1", *protocol, "--flood", "--rate", 100, "--seconds", 0.2))
            return [line.split(": ")[1] for line in lab.counters(agent).splitlines() if line.startswith("server ")]

        for line in ask():
            sent, not_sent, returned = (int(word.split()[1]) for word in line.split(", "))
            assert sent >= 15 and not_sent == 0 and returned > 0, line
        lab.run("relay", "sysctl", "-qw", "net.ipv4.conf.all.rp_filter=0", "net.ipv4.conf.cl1.rp_filter=0")
        frame = dhcp4.client_frame(b"\2\xc1\0\0\1\1", 1, dhcp4.OFFER, src=SERVER, dst="10.20.0.1")
        lab.frames("c1", "eth0").send(frame[:40] + b"\0\0\2" + frame[43:])  # without a checksum, as a reply
        wait_for("the forged reply", 5, lambda: "wrong-interface" in lab.counters(agent))
        lab.run("relay", "ip", "link", "del", "up0")
        assert all("not-sent 0" not in line for line in ask())
        assert "server-unreachable" in lab.counters(agent)


def flood(rate=20000, seconds=4, options=()):
    """One link sends requests as fast as it can. Clients of the other link get leases, and SIGTERM ends the agent."""
    require("udhcpc")
    with Relayed() as lab:
        for address in (SERVER, SERVER6):
            lab.responder(address)
        agent = lab.relay(*BOTH_PROTOCOLS, *options)
        floods = [lab.load("c1", "--flood", "--rate", rate, "--seconds", seconds)]
        others = [lab.load("c2", *protocol, "--rate", 30, "--first", 1 << 20, "--seconds", seconds - 1)
                  for protocol in ((), ("-6",))]
        lab.udhcpc("c2").saw("event bound 10.30.0.1", seconds)
        for result in map(outcome, others):
            assert result["completed"] >= 0.98 * result["started"] > 0 and result["stray"] == 0, result
            print("other link:", result)
        print(lab.counters(agent))
        result = outcome(floods[0])
        print("flood:", result)
        assert result["started"] >= 0.5 * rate * seconds, result
        floods.append(lab.load("c1", "--flood", "--rate", rate, "--seconds", 2))
        time.sleep(0.5)
        started = time.monotonic()
        assert agent.stop() == 0
        took = time.monotonic() - started
        assert took < 1, f"SIGTERM took {took:.1f} s"
        print(f"SIGTERM: {took:.3f} s")


if __name__ == "__main__":
    main({"leases": leases, "tags": tags,
          "no-echo": no_echo, "link-selection": link_selection,
          "server-id-override": server_id_override, "chain": chain, "change": change, "unreachable": unreachable,
          "flood": flood})
