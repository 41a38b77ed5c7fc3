"""Builds capture files for the tests of dhcptool: complete, truncated and hostile ones."""

import glob
import os
import struct
import tempfile
import unittest

FOLDER = os.environ["CAPTURES"]


def bundled(name):
    return os.path.join(FOLDER, name + ".pcap")


def content(name):
    with open(bundled(name), "rb") as file:
        return file.read()


def all_captures(folder=FOLDER):
    return sorted(glob.glob(os.path.join(folder, "*.pcap")))


def joined(paths):
    """One capture with the frames of several, in this order. dhcptool then starts once instead of for each file."""
    parts = []
    for path in paths:
        with open(path, "rb") as file:
            parts.append(file.read())
    return parts[0][:24] + b"".join(part[24:] for part in parts)


class FilesTest(unittest.TestCase):
    """Tests with a folder for their files."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name, data=None):
        """The path of a file in the folder, which is written if there is data."""
        path = os.path.join(self.folder, name)
        if data is not None:
            with open(path, "wb") as file:
                file.write(data)
        return path


def frames(data):
    """Header of a little-endian pcap file."""
    found, at = [], 24
    while at < len(data):
        size = struct.unpack_from("<I", data, at + 8)[0]
        found.append(data[at + 16:at + 16 + size])
        at += 16 + size
    return found


def pcap(frames, link_type=1):
    header = struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, link_type)
    return header + b"".join(struct.pack("<IIII", 1700000000, 5, len(f), len(f)) + f for f in frames)


def pcapng(frames, timestamp, resolution=6):
    """`timestamp`: 64 bits, in units of 10 to the power of -`resolution` seconds."""

    def block(kind, body):
        size = len(body) + 12
        return struct.pack("<II", kind, size) + body + struct.pack("<I", size)

    interface = struct.pack("<HHI", 1, 0, 0) + struct.pack("<HHB3xHH", 9, 1, resolution, 0, 0)
    out = block(0x0A0D0D0A, struct.pack("<IHHq", 0x1A2B3C4D, 1, 0, -1)) + block(1, interface)
    for frame in frames:
        head = struct.pack("<IIIII", 0, timestamp >> 32, timestamp & 0xFFFFFFFF, len(frame), len(frame))
        out += block(6, head + frame + bytes(-len(frame) % 4))
    return out


def discover(options):
    """A DISCOVER in an untagged frame, with these bytes between option 53 and the end option."""
    bootp = bytes([1, 1, 6, 0]) + bytes.fromhex("3903f326") + bytes(20) + bytes.fromhex("02c100000a01") + bytes(202)
    message = bootp + bytes.fromhex("63825363350101") + options + b"\xff"
    udp = struct.pack(">HHHH", 68, 67, 8 + len(message), 0) + message
    ip = struct.pack(">BBHHHBBH", 0x45, 0, 20 + len(udp), 0, 0, 64, 17, 0) + bytes(4) + b"\xff" * 4
    return b"\xff" * 6 + bytes.fromhex("02c100000a01") + b"\x08\x00" + ip + udp


def option(code, data):
    return bytes([code, len(data)]) + data


def dhcp6_frame(message, port=547):
    """A DHCPv6 message in an untagged frame."""
    udp = struct.pack(">HHHH", 546, port, 8 + len(message), 0) + message
    ip = struct.pack(">IHBB", 6 << 28, len(udp), 17, 64) + bytes(32)
    return bytes(12) + b"\x86\xdd" + ip + udp


def option6(code, data):
    return struct.pack(">HH", code, len(data)) + data
