"""DHCPv6 messages that were built with the views mean to a dissector what was asked for."""

import os
import shutil
import subprocess
import sys

from capture_files import dhcp6_frame, pcap

SOLICIT = """Message type: Solicit (1) | Transaction ID: 0x5eed06 | DUID Type: link-layer address plus time (1)
    | Hardware type: Ethernet (1) | DUID Time: Mar  7, 2022 20:26:40.000000000 UTC
    | Link-layer address: 02:c1:00:00:0a:01 | Identity Association for Non-temporary Address | IAID: 00000a01
    | Enterprise ID: Cable Television Laboratories, Inc. (4491) | Suboption: CCAP-CORES :  (61)
    | 1 IPv6 address: 2001:db8:c::1 | 2 IPv6 address: 2001:db8:c::2"""
RELAY_FORWARD = f"""Message type: Relay-forw (12) | Hopcount: 0 | Link address: 2001:db8:a::1 | Peer address: fe80::a01
    | Relay Message | {SOLICIT} | Interface-ID: 010945746865726e6574310203726564
    | Enterprise ID: Example Enterprise Number for Documentation Use (32473)
    | Remote-ID: 0003000102c100000a010000000000000007010c45746865726e6574313a3130
    | Virtual Subnet Selection | Length: 4 | Client Link-Layer Address | Length: 8"""
REPLY = """Message type: Reply (7) | Client Identifier | DUID Type: Universally Unique IDentifier (UUID) (4)
    | UUID: 30313233343536373839616263646566 | Server Identifier
    | DUID Type: assigned by vendor based on Enterprise number (2)
    | Enterprise ID: Example Enterprise Number for Documentation Use (32473) | Identifier: 7370616d
    | Identity Association for Non-temporary Address | IAID: 00000a01 | IA Address
    | IPv6 address: 2001:db8:a::1001 | Valid lifetime: 4000 | Identity Association for Prefix Delegation
    | IAID: 00000a02 | IA Prefix | Valid lifetime: 5000 | Prefix length: 56 | Prefix address: 2001:db8:b:100::"""

if shutil.which("tshark") is None:
    print("SKIPPED: not installed: tshark")
    sys.exit(77)
messages = subprocess.run([os.environ["BUILT6"]], capture_output=True, text=True, check=True).stdout.split()
capture = pcap([dhcp6_frame(bytes.fromhex(message)) for message in messages])
dissected = subprocess.run(["tshark", "-r", "-", "-V", "-O", "dhcpv6"], input=capture, capture_output=True, check=True,
                           timeout=60).stdout.decode().split("\nFrame ")
assert len(dissected) == len(messages) == 3, dissected
for text, expected in zip(dissected, (SOLICIT, RELAY_FORWARD, REPLY)):
    assert "Malformed" not in text and "Expert Info" not in text, text
    lines = iter(line.strip() for line in text.splitlines())
    for wanted in expected.split("|"):
        assert any(line == wanted.strip() for line in lines), f"'{wanted.strip()}' is missing or out of order in\n{text}"
