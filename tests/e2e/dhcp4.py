"""Builds and parses DHCPv4 messages for the scenarios, independently of the library."""

import socket
import struct

COOKIE = b"\x63\x82\x53\x63"
DISCOVER, OFFER, REQUEST, ACK = 1, 2, 3, 5
BROADCAST_MAC = b"\xff" * 6


def checksum(data):
    if len(data) % 2:
        data += b"\0"
    total = sum(struct.unpack(f">{len(data) // 2}H", data))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


def items(data, pads=True):
    """[(code, bytes)] of code/length/data items, up to the end option."""
    found, at = [], 0
    while at < len(data):
        code = data[at]
        if pads and code in (0, 255):
            if code == 255:
                break
            at += 1
            continue
        length = data[at + 1]
        found.append((code, data[at + 2:at + 2 + length]))
        at += 2 + length
    return found


def item(code, data):
    return bytes([code, len(data)]) + data


class Message:
    """The fields of a DHCPv4 frame. `read` returns None for any other frame."""

    @staticmethod
    def read(frame):
        if len(frame) < 14 or frame[12:14] != b"\x08\x00" or frame[23] != 17:
            return None
        udp = 14 + (frame[14] & 15) * 4
        ports = struct.unpack(">HH", frame[udp:udp + 4])
        if not {67, 68} & set(ports):
            return None
        m = Message()
        m.dst_mac, m.src, m.dst = frame[0:6], socket.inet_ntoa(frame[26:30]), socket.inet_ntoa(frame[30:34])
        m.payload = frame[udp + 8:udp + struct.unpack(">H", frame[udp + 4:udp + 6])[0]]
        m.udp_good = frame[udp + 6:udp + 8] == b"\0\0" or checksum(
            frame[26:34] + b"\0\x11" + frame[udp + 4:udp + 6] + frame[udp:udp + 8] + m.payload) == 0
        m.op, m.hops, m.xid = m.payload[0], m.payload[3], m.payload[4:8]
        m.ciaddr, m.yiaddr, _, m.giaddr = (socket.inet_ntoa(m.payload[at:at + 4]) for at in (12, 16, 20, 24))
        m.chaddr = m.payload[28:34]
        m.options = dict(items(m.payload[240:]))
        m.type = m.options.get(53, b"\0")[0]
        return m

    def server_id(self):
        return socket.inet_ntoa(self.options[54])


def client_frame(mac, xid, kind, options=(), src="0.0.0.0", dst="255.255.255.255", giaddr="0.0.0.0", hops=0):
    """A broadcast frame of a client with that MAC address."""
    payload = struct.pack(">BBBBIHH", 1, 1, 6, hops, xid, 0, 0x8000) + bytes(12) + socket.inet_aton(giaddr)
    payload += mac.ljust(16, b"\0") + bytes(192) + COOKIE + item(53, bytes([kind]))
    payload = (payload + b"".join(item(code, data) for code, data in options) + b"\xff").ljust(300, b"\0")
    addresses = socket.inet_aton(src) + socket.inet_aton(dst)
    udp = struct.pack(">HHHH", 68, 67, len(payload) + 8, 0)
    udp = udp[:6] + struct.pack(">H", checksum(addresses + struct.pack(">HH", 17, len(payload) + 8) + udp + payload))
    ip = struct.pack(">BBHHHBBH", 0x45, 0, 28 + len(payload), 0, 0, 64, 17, 0)
    ip = ip[:10] + struct.pack(">H", checksum(ip + addresses))
    return BROADCAST_MAC + mac + b"\x08\x00" + ip + addresses + udp + payload
