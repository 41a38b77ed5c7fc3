#!/usr/bin/env python3
"""The relay agent between real DHCPv6 clients and real servers."""

import json
import struct

from lab import main, received, require
from relayed import SERVER6, AccessPort, Relayed

RELAY_FORWARD = 12
RELAY_MESSAGE, INTERFACE_ID, LINK_LAYER_ADDRESS = 9, 18, 79


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


def kea(lab):
    subnets = [{"id": n, "subnet": f"2001:db8:{n}0::/64", "pools": [{"pool": f"2001:db8:{n}0::1000-2001:db8:{n}0::1fff"}],
                "pd-pools": [{"prefix": f"2001:db8:f{n}00::", "prefix-len": 40, "delegated-len": 48}]} for n in (2, 3)]
    config = {"Dhcp6": {
        "interfaces-config": {"interfaces": [f"up1/{SERVER6}"]},
        "lease-database": {"type": "memfile", "persist": False},
        "server-id": {"type": "LL", "persist": False, "htype": 1, "identifier": "020000000001"},
        "valid-lifetime": 120, "preferred-lifetime": 100, "renew-timer": 5, "rebind-timer": 90, "subnet6": subnets,
        "loggers": [{"name": "kea-dhcp6", "severity": "INFO", "output_options": [{"output": "stdout"}]}]}}
    lab.environment.update(KEA_LOCKFILE_DIR=lab.folder, KEA_PIDFILE_DIR=lab.folder)
    lab.start("srv", "kea", "kea-dhcp6", "-c", lab.file("kea6.json", json.dumps(config))).saw("DHCP6_STARTED")


def leases():
    """An untagged and a tagged client get an address and a prefix each, and renew. The server learns their ports."""
    require("dhclient", "ethtool", "kea-dhcp6")
    with Relayed(tagged=True) as lab:
        kea(lab)
        lab.relay("-c", "cl1", "-c", "cl2", "-s", SERVER6, "--vlans", "cl2=100")
        with AccessPort(lab, 0x8100, 100):
            up = lab.frames("srv", "up1")
            clients = [lab.dhclient(client, "-6", "-N", "-P") for client in ("c1", "c2")]
            for event in ("BOUND6", "RENEW6"):
                for number, client in zip((2, 3), clients):
                    client.saw(f"event {event} 2001:db8:{number}0::1", 20)
            for number, client in zip((2, 3), clients):
                client.saw(f"prefix 2001:db8:f{number}", 20)
        places = {(link.hex()[:12], found[INTERFACE_ID], found[LINK_LAYER_ADDRESS][2:].hex(":"))
                  for hops, link, found in relay_forwards(received(up)) if hops == 0}
        macs = [lab.run(client, "cat", "/sys/class/net/eth0/address").strip() for client in ("c1", "c2")]
        assert places == {("20010db80020", b"cl1:1", macs[0]), ("20010db80030", b"cl2:100", macs[1])}, places


def chain():
    """Two relays in a row. The client gets an address and a prefix, and the server gets the options of both relays."""
    require("dhclient", "kea-dhcp6")
    with Relayed() as lab:
        kea(lab)
        lab.add("far")
        lab.link(("c1", "cl3", "2001:db8:30::1/64"), ("far", "eth0"))
        lab.run("c1", "ip", "addr", "add", "2001:db8:20::7/64", "dev", "eth0")
        lab.relay("-c", "cl1", "-s", SERVER6, "--trust", "cl1")
        lab.relay("-c", "cl3", "-s", "2001:db8:20::1", namespace="c1")
        up = lab.frames("srv", "up1")
        client = lab.dhclient("far", "-6", "-N", "-P")
        client.saw("event BOUND6 2001:db8:30::1", 20)
        client.saw("prefix 2001:db8:f3", 20)
        for hops, _, found in relay_forwards(received(up)):
            inner = found[RELAY_MESSAGE]
            assert hops == 1 and inner[:2] == bytes([RELAY_FORWARD, 0]), (hops, inner[:2])
            assert options(inner[34:])[INTERFACE_ID] == b"cl3:1" and inner[2:18].hex()[:12] == "20010db80030"
            assert LINK_LAYER_ADDRESS not in found, "the second relay added the first relay's link-layer address"


if __name__ == "__main__":
    main({"leases": leases, "chain": chain})
