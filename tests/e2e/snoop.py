#!/usr/bin/env python3
"""dhcptool snoop on a live interface. DHCPTOOL is the tool's path."""

import json
import os
import re
import signal
import socket
import struct
import subprocess
import threading
import time
from collections import Counter

import dhcp4
from dhcp4 import BROADCAST_MAC, Message, client_frame
from lab import Lab, main, received, require, wait_for

FLOOD = 30000
SOL_PACKET, PACKET_STATISTICS, SO_RCVBUFFORCE = 263, 6, 33
NATIVE_VLAN = 10
MAC, MAC_TEXT = b"\x02\xc1\0\0\3\1", "02:c1:00:00:03:01"
MESSAGES6 = {1: "solicit"}
ETHERTYPE4, ETHERTYPE6 = b"\x08\0", b"\x86\xdd"
DOT1Q, SERVICE = b"\x81\0", b"\x88\xa8"
TAGS = [b"", DOT1Q + b"\0\x14", DOT1Q + b"\xe0\0", SERVICE + b"\0\x1e"]  # untagged, VLAN 20, priority alone, VLAN 30
SERVICE_TAG = 3  # index in TAGS


def ip6(next_header, ports, payload=b"\1\0\0\7", length=12):
    head = b"\x60\0\0\0" + struct.pack(">HB", length, next_header) + b"\x40\xfe\x80".ljust(17, b"\0")
    udp = struct.pack(">HHHH", *ports, 8 + len(payload), 0)
    return BROADCAST_MAC + MAC + ETHERTYPE6 + head + b"\xff\x02".ljust(15, b"\0") + b"\1" + udp + payload


def solicit(xid):
    return ip6(17, (546, 547), bytes([1]) + xid.to_bytes(3, "big"))


def tagged(tag, frame):
    return frame[:12] + tag + frame[12:]


def changed(frame, at, data):
    return frame[:at] + data + frame[at + len(data):]


def near_misses():
    """Frames that are almost DHCP, untagged and tagged."""
    discover = client_frame(MAC, 1, dhcp4.DISCOVER)
    frames = [changed(discover, 36, b"\0\x45"), changed(discover, 23, b"\6"), changed(discover, 20, b"\0\1"),
              ip6(17, (547, 548)), ip6(6, (546, 547))]
    return [tagged(tag, frame) for tag in TAGS for frame in frames]


class Snooped(Lab):
    """The hosts c1 and srv on one link. The tool listens on the server's end, "lan"."""

    def __enter__(self):
        super().__enter__()
        self.add("c1", "srv")
        self.wire_up()
        return self

    def wire_up(self):
        self.link(("srv", "lan", "10.20.0.1/24", "2001:db8:20::1/64"), ("c1", "eth0"))

    def snoop(self, *options):
        tool = self.start("srv", "dhcptool", os.environ["DHCPTOOL"], "snoop", "-i", "lan", *options)
        tool.saw("dhcptool: listening on lan\n")
        return tool

    def reread(self, path):
        return [json.loads(line) for line in subprocess.run(
            [os.environ["DHCPTOOL"], "snoop", "-r", path, "--json", "--interface", "lan", "--native-vlan",
             str(NATIVE_VLAN)], check=True, capture_output=True, timeout=30).stdout.splitlines()]


def messages(tool):
    return [json.loads(line) for line in tool.log().splitlines() if line.startswith("{")]


def shown(message):
    """The result of `on_wire` for a frame, taken from the tool's output."""
    kind = message["messageType"] if "messageType" in message else message["dhcpMsgTypeOpt"]
    return message["tagged"], message["vlanId"], kind, int(message["xid"], 16)


def read_alike(message):
    """The part of a message's output that does not depend on whether the frame came from the kernel or a file."""
    unlike = {"interface", "outgoing", "sentBytes", "etherHdrLen", "offset", "dhcp6OptionsOffset"}
    return {name: value for name, value in message.items() if name not in unlike}


def on_wire(frame):
    """Whether a frame is tagged, its VLAN, message type and transaction id; None for a frame that is not DHCP."""
    tag = frame[12:16] if frame[12:14] in (DOT1Q, SERVICE) else b""
    inner = frame[:12] + frame[12 + len(tag):]
    if tag[:2] == SERVICE:
        tag = b""  # the parser does not treat a service tag as a VLAN tag
    vlan = int.from_bytes(tag[2:], "big") & 0xFFF or NATIVE_VLAN
    if inner[12:14] == ETHERTYPE4 and inner[20:22] in (b"\0\0", b"\x40\0") and inner[23] == 17 and \
            inner[36:38] in (b"\0\x43", b"\0\x44"):
        m = Message.read(inner)
        return bool(tag), vlan, m.type, int.from_bytes(m.xid, "big")
    if inner[12:14] == ETHERTYPE6 and inner[20] == 17 and inner[56:58] in (b"\x02\x22", b"\x02\x23"):
        return bool(tag), vlan, MESSAGES6[inner[62]], int.from_bytes(inner[63:66], "big")
    return None


def send_near_misses(wire):
    frames = near_misses()
    for _ in range(0, FLOOD, len(frames)):
        for frame in frames:
            wire.send(frame)
        time.sleep(0.002)


def flood():
    """The tool prints each DHCP frame once, and the same lines for the capture that it wrote."""
    require()
    with Snooped() as lab:
        written = os.path.join(lab.folder, "live.pcap")
        tool = lab.snoop("--json", "--write", written, "--native-vlan", str(NATIVE_VLAN))
        witness, wire = lab.frames("c1", "eth0"), lab.frames("c1", "eth0")
        witness.setsockopt(socket.SOL_SOCKET, SO_RCVBUFFORCE, 1 << 27)
        wire.setblocking(True)
        others = threading.Thread(target=send_near_misses, args=(wire,))
        others.start()
        for n in range(0, 40 * len(TAGS), len(TAGS)):
            for at, tag in enumerate(TAGS):
                wire.send(tagged(tag, client_frame(MAC, n + at, dhcp4.DISCOVER)))
                wire.send(tagged(tag, solicit(n + at)))
            time.sleep(0.05)
        others.join()
        passed = received(witness)
        _, lost = struct.unpack("II", witness.getsockopt(SOL_PACKET, PACKET_STATISTICS, 8))
        wanted = Counter(filter(None, map(on_wire, passed)))
        assert lost == 0 and len(passed) > FLOOD, lost
        wait_for("every message", 5, lambda: len(messages(tool)) >= wanted.total())
        counts = ended(tool, signal.SIGTERM)

        seen = messages(tool)
        assert Counter(map(shown, seen)) == wanted, (Counter(map(shown, seen)) - wanted, wanted - Counter(map(shown, seen)))
        assert f"frames {len(seen)}: " in counts and " refused 0, other traffic 0\n" in counts, counts
        assert f"dhcptool: lan: received {len(seen)}, dropped 0, errors 0\n" in counts, counts
        # In the file the service tag is in the frame, so the parser does not see the IP packet after it.
        service = [m for m in seen if m["srcMac"] == MAC_TEXT and int(m["xid"], 16) % len(TAGS) == SERVICE_TAG]
        assert len(service) == 80
        accepted = [m for m in lab.reread(written) if m["rejection"] is None]
        assert list(map(read_alike, accepted)) == [read_alike(m) for m in seen if m not in service]


def links():
    """The link goes down and up, the interface is removed and comes back. Each frame is printed once."""
    require()
    with Snooped() as lab:
        tool, xids = lab.snoop(), []

        def passes():
            xids.append(f" xid 0x{len(xids) + 0xC0FFEE00:08x} ")
            lab.frames("c1", "eth0").send(client_frame(MAC, int(xids[-1].split()[1], 16), dhcp4.DISCOVER))
            tool.saw(xids[-1])

        def says(state, times):
            wait_for(f"'{state}', {times} times", 5, lambda: tool.log().count(f"dhcptool: lan: {state}") == times)

        passes()
        lab.run("srv", "ip", "link", "set", "lan", "down")
        says("link is down", 1)
        lab.run("srv", "ip", "link", "set", "lan", "up")
        says("link is up", 1)
        passes()
        for gone in (1, 2):
            lab.run("srv", "ip", "link", "del", "lan")
            says("there is no such interface, waiting for it", gone)
            lab.wire_up()
            says("link is up", 1 + gone)
            passes()
        counts = ended(tool, signal.SIGINT)
        assert [tool.log().count(xid) for xid in xids] == [1] * len(xids), tool.log()
        assert f"frames {len(xids)}: DHCP {len(xids)}, BOOTP 0, DHCPv6 0, DHCP refused 0, other traffic 0\n" in counts, counts

        counted, timed = lab.snoop("--count", "2"), lab.snoop("--duration", "1")
        wire = lab.frames("c1", "eth0")
        for xid in range(3):
            wire.send(solicit(xid))
        assert "frames 2: DHCP 0, BOOTP 0, DHCPv6 2, DHCP refused 0, other traffic 0\n" in ended(counted)
        assert "frames 3: " in ended(timed)


def drops():
    """Frames that do not fit into the buffer are counted, and reported while the tool runs."""
    require()
    with Snooped() as lab:
        tool, wire, sent = lab.snoop("--buffer", "1"), lab.frames("c1", "eth0"), 8000
        wire.setblocking(True)
        tool.signal(signal.SIGSTOP)
        for xid in range(sent):
            wire.send(solicit(xid))
        tool.signal(signal.SIGCONT)
        tool.saw("dhcptool: lan: the kernel dropped ")
        received_count, dropped = map(int, re.search(r"lan: received (\d+), dropped (\d+), errors 0\n",
                                                     ended(tool, signal.SIGINT)).groups())
        assert received_count > 500 and dropped > 500 and received_count + dropped == sent, tool.log()[-500:]


def ended(tool, number=None):
    """The counters that the tool prints when it ends without an error."""
    if number is not None:
        tool.signal(number)
    assert tool.popen.wait(5) == 0
    return tool.log()[tool.log().rindex("dhcptool: frames "):]


if __name__ == "__main__":
    main({"drops": drops, "flood": flood, "links": links})
