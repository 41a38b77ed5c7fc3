"""dhcptool relay -r -w: what becomes of messages and of all other frames, byte for byte."""

import os
import shutil
import struct
import subprocess
import unittest

from capture_files import FilesTest, bundled, content, discover, frames, option, pcap

TOOL = os.environ["DHCPTOOL"]

EVERYTHING = ("--circuit-id ab --remote-id c --vendor-interface Et1 --vendor-vtep 10.0.9.1 --link-selection 10.0.5.1 "
              "--server-id-override 10.0.11.1 --vrf red").split()


def relay(data, *arguments):
    """Runs the tool with pipes. Returns status, written frames, output lines and messages."""
    done = subprocess.run([TOOL, "relay", "-r", "-", "-w", "-", *arguments], input=data, capture_output=True, timeout=60)
    err = done.stderr.decode("ascii").splitlines()
    lines = [line for line in err if line.startswith("frame ")]
    return done.returncode, frames(done.stdout), lines, [line for line in err if line not in lines]


def places(frame):
    """Positions of the IPv4 header and of the message."""
    at = 12
    while frame[at:at + 2] in (b"\x81\x00", b"\x88\xa8", b"\x91\x00"):
        at += 4
    return at + 2, at + 2 + 4 * (frame[at + 2] & 15) + 8


def message(frame):
    ip, at = places(frame)
    return frame[at:at + struct.unpack_from(">H", frame, at - 4)[0] - 8]


def answered(frame):
    """The request as a reply."""
    at = places(frame)[1]
    return frame[:at] + b"\x02" + frame[at + 1:]


def datagram(udp_payload, **fields):
    """An untagged frame to port 67 with one header field changed, and the bytes `behind` after the datagram."""
    frame = bytearray(discover(b""))[:34]
    udp = struct.pack(">HHHH", 68, fields.get("port", 67), fields.get("udp_length", 8 + len(udp_payload)), 0)
    options_ = fields.get("ip_options", b"")
    frame[14] = fields.get("version", 0x45) + len(options_) // 4
    struct.pack_into(">H", frame, 16, fields.get("ip_length", 28 + len(options_) + len(udp_payload)))
    struct.pack_into(">H", frame, 20, fields.get("fragment", 0))
    return bytes(frame) + options_ + udp + udp_payload + fields.get("behind", b"")


def wide(data):
    """A capture whose frames may be longer than it says."""
    return data[:16] + struct.pack("<I", 262144) + data[20:]


def tagged(frame, *tpids):
    return frame[:12] + b"".join(struct.pack(">HH", tpid, 20) for tpid in tpids) + frame[12:]


REQUEST = message(discover(b""))
GROWN = "DHCPDISCOVER, option 82 none -> 4 bytes, message 244 -> 548 bytes"
ROWS = (
    (discover(b""), GROWN),
    (tagged(discover(b""), 0x8100), GROWN),
    (tagged(discover(b""), 0x88A8, 0x8100), GROWN),
    (datagram(REQUEST, ip_options=b"\x07\x07\x04" + bytes(5)), GROWN),
    (datagram(REQUEST, behind=b"trailer"), GROWN),
    (datagram(REQUEST + b"\xee", ip_length=28 + len(REQUEST), udp_length=8 + len(REQUEST)), GROWN),
    (discover(option(82, b"")), "copied, infoOptionEmpty"),
    (discover(option(82, option(5, bytes(4)))), "copied, assertion: tempInfoOpt->length > oldSubOptLen"),
    (datagram(REQUEST[:240] + b"\xff"), "bootpRequest, option 82 none -> 4 bytes, message 241 -> 548 bytes"),
    (datagram(REQUEST[:236] + bytes(64)), "copied, notDhcp"),
    (datagram(b"\x03" + REQUEST[1:]), "copied, neither request nor reply"),
    (datagram(REQUEST, fragment=0x2000), "copied, fragment"),
    (datagram(REQUEST, fragment=0x4000), GROWN),
    (datagram(REQUEST, ip_length=29 + len(REQUEST)), "copied, datagram cut short"),
    (datagram(REQUEST, udp_length=9 + len(REQUEST)), "copied, malformed lengths"),
    (datagram(REQUEST, udp_length=7), "copied, malformed lengths"),
    (datagram(REQUEST, version=0x65), "copied, malformed IPv4 header"),
    (discover(b"")[:33], "copied, IPv4 header cut short"),
    (discover(b"")[:41], "copied, UDP header cut short"),
    (datagram(REQUEST + bytes(65507 - len(REQUEST) - 9) + b"end"), GROWN.replace("244", "65501")),
    (datagram(REQUEST[:-1] + option(43, bytes(253)) * 255 + option(43, bytes(236)) + b"\xff"), "copied, too large for an IPv4 datagram"),
    (datagram(REQUEST, port=53), None),
    (discover(b"")[:23] + b"\x06" + discover(b"")[24:], None),
    (discover(b"")[:12] + b"\x86\xdd" + discover(b"")[14:], None),
    (tagged(discover(b""), 0x8100)[:16], None),
)


class Frames(unittest.TestCase):
    def test_are_rewritten_or_copied_and_told_apart(self):
        inputs = [frame for frame, _ in ROWS]
        status, out, lines, totals = relay(wide(pcap(inputs)), "--circuit-id", "ab")
        self.assertEqual(status, 0)
        self.assertEqual(lines, [f"frame {number}: {text}" for number, (_, text) in enumerate(ROWS, 1) if text])
        for (before, text), after in zip(ROWS, out, strict=True):
            if not text or "copied" in text:
                self.assertEqual(after, before, text)
        grown = REQUEST[:-1] + option(82, option(1, b"ab")) + b"\xff"
        for before, after in zip(inputs[:6], out):
            self.assertEqual(message(after), grown + bytes(548 - len(grown)))
            ip, at = places(before)
            for start, end in ((0, ip + 2), (ip + 4, ip + 10), (ip + 12, at - 4)):  # all but lengths and checksums
                self.assertEqual(after[start:end], before[start:end])
        self.assertEqual(totals, [
            f"dhcptool: frames {len(ROWS)}, requests rewritten 9, replies rewritten 0, messages copied 12",
            "  1  IPv4 header cut short", "  1  UDP header cut short",
            "  1  assertion: tempInfoOpt->length > oldSubOptLen", "  1  datagram cut short", "  1  fragment",
            "  1  infoOptionEmpty", "  1  malformed IPv4 header", "  2  malformed lengths",
            "  1  neither request nor reply", "  1  notDhcp", "  1  too large for an IPv4 datagram"])

    def test_are_copied_where_option_82_would_be_broken(self):
        link, circuit = option(5, bytes(4)), option(1, b"circuit")
        infos = [link + circuit, circuit + link, circuit + b"\x06\x09"]
        data = pcap([discover(option(82, info)) for info in infos])
        for arguments, broken in (([], [1, 3]), (EVERYTHING, [3]), (["--link-selection", "10.0.5.1"], [3]),
                                  (["--generation", "new"] + EVERYTHING, [])):
            lines = relay(data, *arguments)[2]
            self.assertEqual([number for number, line in enumerate(lines, 1) if "copied" in line], broken, arguments)
            self.assertEqual(sum("copied, infoOptionWouldBreak" in line for line in lines), len(broken))

    def test_say_what_was_restored(self):
        reply = answered(discover(option(54, bytes(4)) + option(82, option(1, b"ab"))))
        inputs = [reply, answered(discover(b"")), answered(discover(option(54, b"ab")))]
        out, lines = relay(pcap(inputs), "--restore-server-id", "192.0.2.1")[1:3]
        self.assertEqual(lines, [
            "frame 1: DHCPDISCOVER, option 82 4 bytes -> none, message 256 -> 300 bytes, server identifier 192.0.2.1",
            "frame 2: DHCPDISCOVER, option 82 none -> none, message 244 -> 300 bytes",
            "frame 3: copied, server identifier is not 4 bytes long"])
        restored = option(53, b"\1") + option(54, bytes([192, 0, 2, 1])) + b"\xff"
        self.assertEqual(message(out[0])[240:].rstrip(b"\0"), restored)


class Files(FilesTest):
    def run_tool(self, *arguments, **more):
        done = subprocess.run([TOOL, "relay", *arguments], capture_output=True, timeout=60, **more)
        return done.returncode, done.stdout.decode("ascii"), done.stderr.decode("ascii")

    def test_that_cannot_be_written(self):
        source = self.path("both")
        shutil.copyfile(bundled("v4-dhclient-dhcpd"), source)
        os.symlink(source, self.path("link"))
        for target, why in ((self.path("link"), "is the capture that is being read"), (self.folder, "Is a directory"),
                            ("/dev/full", "No space left on device")):
            status, _, err = self.run_tool("-r", source, "-w", target)
            self.assertEqual(status, 1, target)
            self.assertIn(why, err)
        with open(source, "rb") as file:
            self.assertEqual(file.read(), content("v4-dhclient-dhcpd"))

    def test_cut_short_are_relayed_up_to_there(self):
        whole = content("v4-dhclient-dhcpd")
        status, out, _, messages = relay(whole[:-1])
        self.assertEqual((status, len(out)), (2, len(frames(whole)) - 1))
        self.assertIn("truncated dump file", messages[-1])


if __name__ == "__main__":
    unittest.main()
