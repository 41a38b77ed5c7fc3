#!/usr/bin/env python3
"""dhcptool leasequery with ISC dhcpd and with a server that sends wrong replies. DHCPTOOL is the tool's path."""

import json
import os
import socket
import struct
import subprocess
import threading
import time

import dhcp4
from dhcp4 import item
from lab import Lab, main, require, wait_for

KNOWN, FAILED, UNKNOWN, NO_ANSWER = 0, 1, 3, 4
UNASSIGNED, ACTIVE = b"\x0b", b"\x0d"
CLIENT, STRANGER = "02:c1:00:00:01:1e", "02:c1:00:00:02:02"
CLIENT_ID = "0102c10000011e"
AGENT, SERVER, OTHER = "10.82.0.1", "10.82.0.2", "10.82.0.3"

CONFIG = """authoritative; allow leasequery; ping-check false; default-lease-time 120;
max-lease-time 120;
subnet 10.82.0.0 netmask 255.255.255.0 { }
subnet 10.20.0.0 netmask 255.255.255.0 { range 10.20.0.100 10.20.0.109; }
"""
CLIENT_SCRIPT = """#!/bin/sh
[ "$1" = bound ] && ip addr replace $ip/24 dev $interface && echo "bound $ip."
exit 0
"""


class Asked(Lab):
    """The querying agent, the server, and a client on another link of the server."""

    def __enter__(self):
        super().__enter__()
        self.add("agent", "srv", "c1")
        self.link(("agent", "up0", AGENT + "/24"), ("srv", "up1", SERVER + "/24", OTHER + "/24"))
        self.link(("srv", "lan", "10.20.0.1/24"), ("c1", "eth0"))
        self.run("c1", "ip", "link", "set", "eth0", "address", CLIENT)
        return self

    def tool(self, *arguments, through=()):
        done = subprocess.run(["ip", "netns", "exec", self.full("agent"), *through, os.environ["DHCPTOOL"], "leasequery",
                               *arguments], capture_output=True, text=True, timeout=30, check=False)
        return done.returncode, done.stdout, done.stderr

    def answer(self, *subject):
        """The exit status and the fields of the reply."""
        status, out, err = self.tool("--server", SERVER, "--json", *subject)
        assert out and not err, (status, err)
        return status, {name: value for name, value in json.loads(out).items() if value not in (None, [])}

    def dhcpd(self):
        self.start("srv", "dhcpd", "dhcpd", "-4", "-f", "-d", "-cf", self.file("dhcpd.conf", CONFIG), "-lf",
                   self.file("dhcpd.leases", ""), "-pf", os.path.join(self.folder, "dhcpd.pid"), "up1",
                   "lan").saw("Server starting service")

    def udhcpc(self):
        """Starts a client, waits for its lease and returns its address."""
        script = self.file("client.sh", CLIENT_SCRIPT, 0o755)
        client = self.start("c1", "udhcpc", "udhcpc", "-i", "eth0", "-f", "-R", "-T", "1", "-s", script)
        client.saw(".\n", 20)
        return client, client.log().split("bound ")[1].split(".\n")[0]


def dhcpd():
    """Queries of active, free and expired leases, and of addresses that the server does not know."""
    require("dhcpd", "udhcpc")
    with Asked() as lab:
        lab.dhcpd()
        client, address = lab.udhcpc()
        for subject in (("--mac", CLIENT), ("--ip", address), ("--client-id", CLIENT_ID)):
            status, fields = lab.answer(*subject)
            left, age = fields.pop("leaseTime"), fields.pop("lastTransactionTime")
            assert 100 < left <= 120 and 119 <= left + age <= 121, (left, age)
            assert (status, fields) == (KNOWN, {"state": "active", "ip": address, "mac": CLIENT, "clientId": CLIENT_ID,
                                              "serverId": SERVER}), fields
        status, out, _ = lab.tool("--server", SERVER, "--ip", address, "--giaddr", AGENT)
        assert status == KNOWN and [line.split()[0] for line in out.splitlines()] == \
            ["state", "ip", "mac", "client-id", "lease-time", "last-transaction", "server-id"] and "s ago\n" in out, out

        # dhcpd knows the addresses of its pools only, not the others of its subnets.
        unassigned, unknown = (KNOWN, "unassigned"), (UNKNOWN, "unknown")
        for kind, value, (wanted, state) in (("ip", "10.20.0.109", unassigned), ("ip", "10.20.0.50", unknown),
                                             ("ip", "192.0.2.9", unknown), ("mac", STRANGER, unknown)):
            fields = lab.answer(f"--{kind}", value)
            assert fields == (wanted, {"state": state, kind: value, "serverId": SERVER}), fields

        client.stop()
        # Released: dhcpd still returns the last client for a query by MAC.
        no_more = {"state": "unassigned", "ip": address, "serverId": SERVER}
        wait_for("the lease's end", 8, lambda: lab.answer("--ip", address) == (KNOWN, no_more))
        assert lab.answer("--mac", CLIENT) == (KNOWN, {**no_more, "mac": CLIENT})


def reply(query, kind, ip, op=2, options=b""):
    """A reply to the query with the address `ip`."""
    header = bytes([op, 1, 6, 0]) + query[4:12] + socket.inet_aton(ip) + query[16:28] + b"\x02\xc1\0\0\x01\x1e"
    return header.ljust(236, b"\0") + dhcp4.COOKIE + (item(53, kind) if kind else b"") + options + b"\xff"


def wrong_replies(query):
    """Datagrams that are not valid replies. Most differ from a valid one in a single field."""
    good = reply(query, UNASSIGNED, "10.20.0.7")
    wrong_lengths = (item(51, b"\0\0\1"), item(91, bytes(5)), 2 * item(91, bytes(4)), item(54, b""), item(92, bytes(6)))
    return [good[:4] + bytes([good[4] ^ 1]) + good[5:], good[:7] + bytes([good[7] ^ 0x80]) + good[8:],
            reply(query, UNASSIGNED, "10.20.0.7", op=1), reply(query, UNASSIGNED, "10.66.6.6"),
            *(reply(query, kind, "10.20.0.7") for kind in (b"", b"\x05", b"\x0a", b"\x0e")),
            *(reply(query, UNASSIGNED, "10.20.0.7", options=options) for options in wrong_lengths),
            good[:-1], good[:236], good[:33], b"", good[:236] + b"\x63\x82\x53\x64" + good[240:], query]


class WrongServer(threading.Thread):
    """Sends, for each query, wrong replies, a right one from another address, then the result of `right`."""

    def __init__(self, lab, right=None, wrong=wrong_replies):
        super().__init__()
        with lab.inside("srv"):
            self.own, self.other = (socket.socket(socket.AF_INET, socket.SOCK_DGRAM) for _ in range(2))
            self.own.bind((SERVER, 67))
            self.other.bind((OTHER, 67))
        self.own.settimeout(0.1)
        self.right, self.wrong, self.queries, self.sent, self.ending = right, wrong, [], 0, False

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.ending = True
        self.join()
        self.own.close()
        self.other.close()

    def run(self):
        while not self.ending:
            try:
                query, asker = self.own.recvfrom(2000)
            except socket.timeout:
                continue
            self.queries.append((query, asker))
            for reply_bytes in self.wrong(query):
                self.own.sendto(reply_bytes, asker)
            self.other.sendto(reply(query, UNASSIGNED, "10.20.0.7"), asker)
            self.sent += len(self.wrong(query)) + 1
            if self.right:
                self.own.sendto(self.right(query), asker)


def impostors():
    """Invalid replies are ignored and do not extend the timeout. The query is repeated once, with a longer timeout."""
    require("setpriv")
    patience = ("--server", SERVER, "--ip", "10.20.0.7", "--timeout", "1", "--retries", "1")
    with Asked() as lab:
        with WrongServer(lab) as server:
            started = time.monotonic()
            status, out, err = lab.tool(*patience)
            assert 2.7 <= time.monotonic() - started < 6, time.monotonic() - started  # 1 s and 2 s, less a tenth
        assert (status, out) == (NO_ANSWER, ""), (status, out)
        headline, *reasons = err.splitlines()
        ignored = sum(int(line.split()[0]) for line in reasons)
        assert headline == f"dhcptool: no answer from {SERVER}; other datagrams:" and len(reasons) == 8, err
        assert ignored == server.sent and len(server.queries) == 2, (ignored, server.sent)
        (query, asker), again = server.queries
        assert again == (query, asker) and asker == (AGENT, 67), asker
        assert query[24:28] == socket.inet_aton(AGENT) and query[240:249].hex() == "35010a37" + "03335b5cff"
        others = socket.inet_aton("10.20.0.9") + socket.inet_aton("10.20.0.10")
        options = item(51, struct.pack(">I", 2**32 - 1)) + item(91, b"\0\0\1\0") + item(92, others[:3]) + \
            item(92, others[3:]) + item(54, b"\x0a\x52\0\2")
        with WrongServer(lab, right=lambda query: reply(query, ACTIVE, "10.20.0.7", options=options)):
            answer = lab.answer(*patience[2:])
            assert answer == (KNOWN, {"state": "active", "ip": "10.20.0.7", "mac": CLIENT, "leaseTime": 2**32 - 1,
                                    "lastTransactionTime": 256, "associatedIps": ["10.20.0.9", "10.20.0.10"],
                                    "serverId": SERVER}), answer
        with WrongServer(lab, right=lambda query: reply(query, ACTIVE, "10.20.0.7", options=item(61, b"\1\2\3")),
                  wrong=lambda query: []) as server:
            for subject, wanted in ((("--client-id", "01:02:03"), KNOWN), (("--client-id", "010204"), NO_ANSWER),
                                    (("--mac", CLIENT), KNOWN), (("--mac", STRANGER), NO_ANSWER)):
                status, out, err = lab.tool("--server", SERVER, "--timeout", "1", "--retries", "0", *subject)
                assert status == wanted and ("client-id 0x010203" in out) == (wanted == KNOWN), (subject, out, err)
                assert ("about another client" in err) == (wanted == NO_ANSWER), err
            assert server.queries[0][0][243:255].hex() == "37" + "04335b5c3d" + "3d03010203" + "ff"
        for why, arguments, through in (
                ("CAP_NET_BIND_SERVICE is missing", patience, ("setpriv", "--bounding-set=-net_bind_service")),
                ("UDP port 67 of 10.9.9.9", (*patience, "--giaddr", "10.9.9.9"), ()),
                ("route to 192.0.2.1", ("--server", "192.0.2.1", "--ip", "10.20.0.7"), ()),
                ("no address: 10.20.0", ("--server", SERVER, "--ip", "10.20.0"), ()),
                ("see --help", (*patience, "--mac", CLIENT), ())):
            status, out, err = lab.tool(*arguments, through=through)
            assert (status, out) == (FAILED, "") and why in err, (status, out, err)


if __name__ == "__main__":
    main({"dhcpd": dhcpd, "impostors": impostors})
