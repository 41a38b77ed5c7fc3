"""dhcptool relay -r -w: what becomes of messages and of all other frames, judged by a dissector and byte for byte."""

import glob
import os
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

from capture_files import FOLDER, bundled, content, discover, frames, option, pcap

TOOL = os.environ["DHCPTOOL"]

EVERYTHING = ("--circuit-id ab --remote-id c --vendor-interface Et1 --vendor-vtep 10.0.9.1 --link-selection 10.0.5.1 "
              "--server-id-override 10.0.11.1 --vrf red").split()
# What the dissector makes of sub-options 151 and 152 as they are sent here.
COMPLAINTS = {"length isn't 4", "ERROR, please report: Unknown subopt type handler 152", "Trailing stray characters"}


def relay(data, *arguments):
    """Status, the frames written, the lines and the messages; through pipes."""
    done = subprocess.run([TOOL, "relay", "-r", "-", "-w", "-", *arguments], input=data, capture_output=True, timeout=60)
    err = done.stderr.decode("ascii").splitlines()
    lines = [line for line in err if line.startswith("frame ")]
    return done.returncode, frames(done.stdout), lines, [line for line in err if line not in lines]


def every_frame(prefix):
    return [frame for path in sorted(glob.glob(os.path.join(FOLDER, prefix + "*.pcap")))
            for frame in frames(content(os.path.basename(path)[:-len(".pcap")]))]


def places(frame):
    """Of the IPv4 header and of the message."""
    at = 12
    while frame[at:at + 2] in (b"\x81\x00", b"\x88\xa8", b"\x91\x00"):
        at += 4
    return at + 2, at + 2 + 4 * (frame[at + 2] & 15) + 8


def message(frame):
    ip, at = places(frame)
    return frame[at:at + struct.unpack_from(">H", frame, at - 4)[0] - 8]


def options(msg):
    """[(code, data)] up to the end option, pads included, and what stands behind it."""
    found, at = [], 240
    while msg[at] != 255:
        size = 0 if msg[at] == 0 else 2 + msg[at + 1]
        found.append((msg[at], msg[at + 2:at + size]))
        at += size or 1
    return found, msg[at + 1:]


def smallest(msg):
    return 548 if msg[0] == 1 and all(code != 57 for code, _ in options(msg)[0]) else 300


def answered(frame):
    """The request as a reply."""
    at = places(frame)[1]
    return frame[:at] + b"\x02" + frame[at + 1:]


def rewritten(lines):
    """By frame number: option 82 before and after; of the messages that were rewritten."""
    found = {}
    for line in lines:
        match = re.match(r"frame (\d+): \S+, option 82 (.+) -> (.+), message (\d+) -> (\d+) bytes", line)
        if match:
            found[int(match[1])] = match.groups()[1:]
    return found


def dissected(data):
    """By frame number: checksums' states, complaints, and the sub-options of option 82."""
    fields = ["frame.number", "ip.checksum.status", "udp.checksum.status", "_ws.expert.message",
              "dhcp.option.agent_information_option.suboption"]
    command = ["tshark", "-r", "-", "-Y", "dhcp", "-T", "fields", "-E", "separator=|", "-E", "aggregator=;",
               "-o", "ip.check_checksum:TRUE", "-o", "udp.check_checksum:TRUE"]
    out = subprocess.run(command + [word for field in fields for word in ("-e", field)], input=data,
                         capture_output=True, timeout=120, check=True).stdout.decode("utf-8", "replace")
    rows = [line.split("|") for line in out.splitlines()]
    return {int(row[0]): (row[1], row[2], set(row[3].split(";")) - {""}, row[4]) for row in rows}


class Captures(unittest.TestCase):
    """Every frame of every capture at once: those of real peers, then hostile ones."""

    @classmethod
    def setUpClass(cls):
        real = every_frame("v4-")
        cls.real = len(real)
        cls.frames = real + every_frame("crafted-v4-")
        cls.data = pcap(cls.frames)

    def check_kept(self, out, lines):
        """What was not rewritten is as it was, what was has its size, and its headers but for lengths and checksums."""
        done = rewritten(lines)
        self.assertEqual(len(out), len(self.frames))
        for number, (before, after) in enumerate(zip(self.frames, out), 1):
            if number not in done:
                self.assertEqual(after, before, number)
                continue
            ip, at = places(before)
            for start, end in ((0, ip + 2), (ip + 4, ip + 10), (ip + 12, at - 4), (at, at + 240)):
                self.assertEqual(after[start:end], before[start:end], number)
            msg = message(after)
            self.assertEqual((len(msg), len(after)), (int(done[number][3]), at + len(msg)))
            behind = options(msg)[1]
            self.assertTrue(len(msg) == smallest(msg) or (len(msg) > smallest(msg) and not behind), number)
            self.assertEqual(behind.strip(b"\0"), b"")
        return done

    @unittest.skipUnless(shutil.which("tshark"), "tshark is not there")
    def check_dissected(self, out, done, asked):
        """Of real messages: the dissector stops at other options of hostile ones."""
        before, after = dissected(self.data), dissected(pcap(out))
        created = 0
        for number in filter(lambda number: number <= self.real, done):
            had = done[number][0]
            ip_sum, udp_sum, complaints, suboptions = after[number]
            self.assertEqual((ip_sum, udp_sum), ("1", "1"), number)
            self.assertLessEqual(complaints, before[number][2] | COMPLAINTS, number)
            if out[number - 1][places(out[number - 1])[1]] == 1 and had == "none":
                self.assertEqual(suboptions, asked, number)
                created += 1
        self.assertGreater(created, 50)

    def test_requests_gain_what_was_asked_for(self):
        for generation, arguments, asked in (("old", EVERYTHING, "1;2;9;5;11;151;152"),
                                             ("new", EVERYTHING + ["--no-vss-control"], "1;2;9;5;11;151")):
            with self.subTest(generation=generation, asked=asked):
                status, out, lines, _ = relay(self.data, "--generation", generation, *arguments)
                self.assertEqual(status, 0)
                self.check_dissected(out, self.check_kept(out, lines), asked)


def datagram(udp_payload, **fields):
    """An untagged frame to port 67, with a field of its headers changed, `behind` the datagram more bytes."""
    frame = bytearray(discover(b""))[:34]
    udp = struct.pack(">HHHH", 68, fields.get("port", 67), fields.get("udp_length", 8 + len(udp_payload)), 0)
    options_ = fields.get("ip_options", b"")
    frame[14] = fields.get("version", 0x45) + len(options_) // 4
    struct.pack_into(">H", frame, 16, fields.get("ip_length", 28 + len(options_) + len(udp_payload)))
    struct.pack_into(">H", frame, 20, fields.get("fragment", 0))
    return bytes(frame) + options_ + udp + udp_payload + fields.get("behind", b"")


def wide(data):
    """The capture, of frames that may be longer than it said."""
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
    (datagram(REQUEST[:-1] + option(43, bytes(253)) * 255 + option(43, bytes(236)) + b"\xff"), "copied, no room in an IPv4 datagram"),
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
        for number, (before, after) in enumerate(zip(inputs, out, strict=True), 1):
            if number not in rewritten(lines):
                self.assertEqual(after, before, number)
        grown = REQUEST[:-1] + option(82, option(1, b"ab")) + b"\xff"
        for frame in out[:6]:
            self.assertEqual(message(frame), grown + bytes(548 - len(grown)))
        self.assertEqual(totals, [
            f"dhcptool: frames {len(ROWS)}, requests rewritten 9, replies rewritten 0, messages copied 12",
            "  1  IPv4 header cut short", "  1  UDP header cut short",
            "  1  assertion: tempInfoOpt->length > oldSubOptLen", "  1  datagram cut short", "  1  fragment",
            "  1  infoOptionEmpty", "  1  malformed IPv4 header", "  2  malformed lengths",
            "  1  neither request nor reply", "  1  no room in an IPv4 datagram", "  1  notDhcp"])

    def test_are_copied_where_option_82_would_be_broken(self):
        link, circuit = option(5, bytes(4)), option(1, b"circuit")
        infos = [link + circuit, circuit + link, circuit + b"\x06\x09"]
        data = pcap([discover(option(82, info)) for info in infos])
        for arguments, broken in (([], [1, 3]), (EVERYTHING, [1, 2, 3]), (["--link-selection", "10.0.5.1"], [3]),
                                  (["--generation", "new"] + EVERYTHING, [])):
            lines = relay(data, *arguments)[2]
            self.assertEqual([number for number, line in enumerate(lines, 1) if "copied" in line], broken, arguments)
            self.assertEqual(sum("copied, option 82 would be broken" in line for line in lines), len(broken))

    def test_say_what_was_restored(self):
        reply = answered(discover(option(54, bytes(4)) + option(82, option(1, b"ab"))))
        inputs = [reply, answered(discover(b"")), answered(discover(option(54, b"ab")))]
        out, lines = relay(pcap(inputs), "--restore-server-id", "192.0.2.1")[1:3]
        self.assertEqual(lines, [
            "frame 1: DHCPDISCOVER, option 82 4 bytes -> none, message 256 -> 300 bytes, server identifier 192.0.2.1",
            "frame 2: DHCPDISCOVER, option 82 none -> none, message 244 -> 300 bytes",
            "frame 3: copied, server identifier is no address"])
        self.assertEqual(options(message(out[0]))[0], [(53, b"\1"), (54, bytes([192, 0, 2, 1]))])

    def test_keep_their_times_and_what_was_sent_of_them(self):
        data = pcap([discover(b""), b"cut"])
        data = data[:-7] + struct.pack("<I", 1500) + data[-3:]
        done = subprocess.run([TOOL, "relay", "-r", "-", "-w", "-"], input=data, capture_output=True, timeout=60)
        self.assertEqual(done.stdout[-19:], data[-19:])
        self.assertEqual(done.stdout[24:32], data[24:32])


class Files(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def run_tool(self, *arguments, **more):
        done = subprocess.run([TOOL, "relay", *arguments], capture_output=True, timeout=60, **more)
        return done.returncode, done.stdout.decode("ascii"), done.stderr.decode("ascii")

    def test_that_cannot_be_written(self):
        source = self.path("both")
        shutil.copyfile(bundled("v4-dhclient-dhcpd"), source)
        os.symlink(source, self.path("link"))
        for target, why in ((self.path("link"), "is the capture that is read"), (self.folder, "Is a directory"),
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

    def test_need_good_arguments(self):
        for arguments in (["--circuit-id", "x" * 256], ["--vendor-vtep", "x"], ["--restore-server-id", "::1"]):
            status, _, err = self.run_tool("-r", bundled("v4-dhclient-dhcpd"), "-w", self.path("out"), *arguments)
            self.assertEqual(status, 1)
            self.assertIn(arguments[0], err)
            self.assertFalse(os.path.exists(self.path("out")))


if __name__ == "__main__":
    unittest.main()
