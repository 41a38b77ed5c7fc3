"""dhcptool snoop -r: link types, compression, several files in the order of time, cut and stopped input."""

import gzip
import json
import os
import signal
import struct
import subprocess
import unittest

from capture_files import FilesTest, bundled, content, discover, joined, pcap

TOOL = os.environ["DHCPTOOL"]
CAPTURES = ("v4-vlan20-dhclient-dhcpd", "v6-dhclient-kea")
ETHERNET, NULL, RAW, SLL, SLL2 = 1, 0, 101, 113, 276
IFINDEX = 3


def snoop(*arguments, data=None):
    if data is not None:
        arguments = ("-r", "-") + arguments
    done = subprocess.run([TOOL, "snoop", *arguments], input=data, capture_output=True, timeout=60, check=False)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def shown(*arguments, data=None):
    return list(map(json.loads, snoop(*arguments, "--json", data=data)[1].splitlines()))


def sll(frame):
    return struct.pack(">HHH", 0, 1, 6) + frame[6:12] + b"\xff\xff" + frame[12:]


def sll2(frame):
    return frame[12:14] + struct.pack(">HIHBB", 0, IFINDEX, 1, 0, 6) + frame[6:12] + b"\xff\xff" + frame[14:]


def null(frame):
    return struct.pack("<I", 2) + frame[14:]


def rebuilt(data, change=lambda frame: frame, link_type=ETHERNET, keep=lambda number: True):
    """A capture with some of the frames of another, changed, with their times."""
    out, at, number = data[:20] + struct.pack("<I", link_type), 24, 0
    while at < len(data):
        seconds, fraction, size, sent = struct.unpack_from("<IIII", data, at)
        frame = change(data[at + 16:at + 16 + size])
        if keep(number):
            out += struct.pack("<IIII", seconds, fraction, len(frame), sent - size + len(frame)) + frame
        at, number = at + 16 + size, number + 1
    return out


class LinkTypes(unittest.TestCase):
    def test_give_what_the_ethernet_frames_give(self):
        whole = joined(map(bundled, CAPTURES))
        untagged = rebuilt(whole, lambda f: f[:12] + f[16:] if f[12:14] == b"\x81\0" else f)
        ethernet = {data: shown(data=data) for data in (whole, untagged)}
        # The headers do not have the destination; those without a link header do not have the source either.
        for data, change, link_type, unknown in ((whole, sll, SLL, {"dstMac"}), (whole, sll2, SLL2, {"dstMac"}),
                                                 (untagged, lambda f: f[14:], RAW, {"dstMac", "srcMac"}),
                                                 (untagged, null, NULL, {"dstMac", "srcMac"})):
            known = lambda message: {n: v for n, v in message.items() if n not in unknown | {"outgoing"}}
            found = list(map(known, shown(data=rebuilt(data, change, link_type))))
            self.assertEqual({m.pop("ifIndex", None) for m in found}, {IFINDEX if link_type == SLL2 else None})
            self.assertEqual(found, list(map(known, ethernet[data])), link_type)

    def test_cut_within_the_link_header_do_no_harm(self):
        frame = discover(b"")
        for change, link_type in ((sll, SLL), (sll2, SLL2), (null, NULL), (lambda f: f[14:], RAW)):
            whole = change(frame)
            status, out, _ = snoop(data=pcap([whole[:n] for n in range(30)] + [whole], link_type))
            self.assertEqual((status, out.splitlines()[-1][:3]), (0, "31 "))


class Compressed(unittest.TestCase):
    def setUp(self):
        self.whole = content(CAPTURES[0])

    def test_files_are_read_as_the_file_itself(self):
        half = len(self.whole) // 2
        members = gzip.compress(self.whole[:half]) + gzip.compress(self.whole[half:])
        zstd = subprocess.run(["zstd", "-qc"], input=self.whole, capture_output=True, check=True).stdout
        for data in (members, zstd):
            self.assertEqual(snoop(data=data), snoop(data=self.whole))

    def test_files_that_are_cut_or_damaged_are_shown_up_to_there(self):
        data = gzip.compress(self.whole, 0)
        cut = "the compressed data are cut"
        for broken, why in ((data[:len(data) // 2], cut), (data[:-2], cut),
                            (data[:-8] + bytes(8), "the compressed data are damaged: incorrect data check")):
            status, out, err = snoop(data=broken)
            self.assertTrue(status == 2 and out and err.endswith(f'dhcptool: "-": {why}\n'), err)


class SeveralFiles(FilesTest):
    def test_are_merged_in_the_order_of_time(self):
        whole = content(CAPTURES[0])
        parts = [self.path(f"part{i}", rebuilt(whole, keep=lambda number, i=i: number % 3 == i)) for i in range(3)]
        self.assertEqual(shown("-r", *parts), shown(data=whole))

    def test_of_which_one_is_cut_are_shown_without_its_rest(self):
        whole = content(CAPTURES[0])
        status, out, err = snoop("-r", self.path("cut", whole[:-1]), self.path("whole", whole))
        self.assertEqual((status, len(out.splitlines())), (2, 2 * len(snoop(data=whole)[1].splitlines()) - 1))
        self.assertIn("truncated dump file", err)


class Stopped(unittest.TestCase):
    def test_reading_ends_with_whole_lines_and_the_counts(self):
        sent = pcap([discover(b"")])
        with subprocess.Popen([TOOL, "snoop", "-r", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE) as tool:
            tool.stdin.write(sent)
            tool.stdin.write(sent[24:50])  # the next frame is cut: the writer has not ended
            tool.stdin.flush()
            line = tool.stdout.readline()
            tool.send_signal(signal.SIGINT)
            rest, err = tool.stdout.read(), tool.stderr.read()
            self.assertEqual((tool.wait(10), line[-1:], rest), (0, b"\n", b""))
            self.assertIn(b"frames 1: ", err)
            tool.stdin.close()


if __name__ == "__main__":
    unittest.main()
