"""dhcptool snoop -r: output, counters, and errors of files and terminals."""

import json
import os
import subprocess
import tempfile
import unittest

from capture_files import bundled, content, dhcp6_frame, discover, option, option6, pcap, pcapng

TOOL = os.environ["DHCPTOOL"]

def snoop(*arguments, data=None, **more):
    """Runs the tool with `data` on its standard input. Returns status, output and messages."""
    if data is not None:
        arguments = ("-r", "-") + arguments
    done = subprocess.run([TOOL, "snoop", *arguments], input=data, capture_output=True, timeout=60, **more)
    return done.returncode, done.stdout.decode("ascii"), done.stderr.decode("ascii")


def messages(*arguments, **more):
    return {m["frame"]: m for m in map(json.loads, snoop("--json", *arguments, **more)[1].splitlines())}


class Lines(unittest.TestCase):
    def test_say_what_a_message_holds(self):
        status, out, err = snoop("-r", bundled("v4-leasequery-dhcpd-server"))
        self.assertEqual(status, 0)
        lines = out.splitlines()
        self.assertEqual(lines[0], "3 2026-11-21T01:47:34.152869Z vlan 1 untagged DHCPDISCOVER xid 0xab47a363 "
                         "client 02:c1:00:00:01:1e 10.82.0.1:67 > 10.82.0.2:67 giaddr 10.20.0.1 circuit-id "
                         '"Ethernet1" hostname "known" params 1,3,6,12,15,28,42 vendor-class "udhcp 1.35.0"')
        self.assertEqual(lines[9], "15 2026-11-21T01:47:36.352844Z vlan 1 untagged DHCPLEASEACTIVE xid 0xfbc99c20 "
                         "client 02:c1:00:00:01:1e 10.82.0.2:67 > 10.20.0.1:67 ciaddr 10.20.0.101 giaddr 10.20.0.1 "
                         'circuit-id "Ethernet1" server-id 10.82.0.2 lease-time 600s last-transaction 0s '
                         'associated [10.20.0.100] vendor-class "Lab-Vendor:X1"')
        self.assertEqual(err, "dhcptool: frames 23, DHCP 18, BOOTP 0, DHCPv6 0, rejected 5\n"
                         "  2  Ethernet payload is not IP\n  3  IP payload is not UDP\n")

    def test_count_every_reason(self):
        self.assertEqual(snoop("-r", bundled("crafted-v4-frames-a"))[2],
                         "dhcptool: frames 88, DHCP 33, BOOTP 1, DHCPv6 0, rejected 54\n"
                         "  6  DHCP packet option format is invalid\n"
                         "  10  Ethernet payload is not IP\n"
                         "  5  Frame too short for BOOTP header\n"
                         "  8  Frame too short for Ethernet header\n"
                         "  6  Frame too short for IPv4 header\n"
                         "  4  Frame too short for UDP header\n"
                         "  5  IP payload is not UDP\n"
                         "  1  Tag with the reserved VLAN 4095\n"
                         "  9  UDP payload is not DHCP packet\n")


class JsonObjects(unittest.TestCase):
    def test_spell_values_by_their_kind(self):
        found = messages("-r", bundled("v4-leasequery-dhcpd-server"), "--interface", "Port-Channel7",
                         "--native-vlan", "12", "--switchport-mode", "trunk")[15]
        port = {"Port-Channel7": {"nativeVlan": 12, "switchportMode": "trunk"}}
        for name, value in {"bridgingConfig": {"switchIntfConfig": port}, "dhcpMsgType": "DHCPLEASEACTIVE",
                            "circuitId": b"Ethernet1".hex(), "associatedIps": ["10.20.0.100"]}.items():
            self.assertEqual(found[name], value, name)


class Dhcp6(unittest.TestCase):
    def test_lines_unwrap_relays_and_decode_identifiers(self):
        _, out, err = snoop("-r", bundled("crafted-v6-a"))
        self.assertIn("frames 141, DHCP 0, BOOTP 0, DHCPv6 101, rejected 40\n", err)
        self.assertIn("\n  3  Frame too short for DHCPv6 relay header\n", err)
        self.assertIn("\n  3  Received Invalid MSG type\n", err)
        lines = dict(line.split(" ", 1) for line in out.splitlines())
        way = "untagged relayForward [fe80::c1:ff:fe00:c01]:547 > [ff02::1:2]:547 hops 0 link 2001:db8:20::1 " \
              "peer fe80::c01"
        client = "solicit xid 0x123456 client-id LL 02:c1:00:00:0c:01 IA_NA 0x00000001 2001:db8::100 " \
                 "preferred 300s valid 600s"
        for number, shown in (
                ("78", f'{way} interface-id "Et1" vrf "blue" vtep 10.0.0.1 vtep-mac 02:c1:00:00:0c:01 {client}'),
                ("81", f'{way} interface-id "Et1" remote-id enterprise 32473 02:c1:00:00:0c:01 l3-interface 42 '
                       f"interface Ethernet1 vlan 10 {client}"),
                ("84", way.replace("hops 0", "hops 1") + ' interface-id "outer" relayForward hops 0 link 2001:db8:20::1'
                       f' peer fe80::c01 interface-id "inner" {client}'),
                ("58", 'remote-id enterprise 9 "switch-7:Gi0/1"'),
                ("72", "IA_TA 0x00000003 IA_PD 0x00000004 2001:db8:f000::/56 preferred 0s valid 0s")):
            self.assertTrue(lines[number].endswith(" " + shown), lines[number])
        for name, shown in (("dhcpcd-uuid-dhcpd", "client-id UUID 00112233-4455-6677-8899-aabbccddeeff IA_NA 0x000006"),
                            ("dibbler-kea", "client-id EN 32473 0xaabbccdd IA_NA 0x00000001 T1 infinite T2 infinite"),
                            ("dhclient-kea", "client-id LLT 02:c1:00:00:06:01 2026-11-21T01:47:38Z IA_NA 0x00000601 ")):
            self.assertIn(shown, snoop("-r", bundled("v6-" + name))[1].splitlines()[0])

    def test_hostile_messages_are_shown_whole_cut_and_nested(self):
        steer = b"\x1b]0;owned\x07"
        ids = option6(1, b"\0\2" + bytes(4) + steer) + option6(2, b"\0\2") + option6(3, bytes(5)) + \
            option6(25, bytes(12) + option6(26, b"\xff" * 25) + option6(26, bytes(24))) + \
            option6(18, b"\1\x0a" + steer + b"\2\x69" + b"v" * 105) + option6(37, bytes(4) + steer)
        solicit = b"\1abc" + ids
        hop = lambda inner: b"\x0c\x20" + bytes(32) + option6(18, steer) + option6(9, inner)
        nested = solicit
        for _ in range(40):
            nested = hop(nested)
        relayed = dhcp6_frame(hop(solicit))
        frames = [relayed[:n] for n in range(len(relayed) + 1)]
        frames += [dhcp6_frame(m) for m in (solicit, nested, hop(b""), b"\x0c")] + [dhcp6_frame(solicit, 53)]
        for more in ((), ("--json", "--keep-state", "--trace", "9")):
            status, out, err = snoop(*more, data=pcap(frames))
            self.assertEqual(status, 0)
            self.assertTrue((out + err).replace("\n", "").isprintable())
            # Of the truncated frames those with a whole relay header, then three of the last five.
            self.assertIn(f"DHCPv6 {len(relayed) + 1 - 62 - 34 + 3}, ", err)
        last = len(relayed) + 2
        lines = snoop(data=pcap(frames))[1].splitlines()
        self.assertTrue(lines[-3].endswith(
            " client-id EN 0 0x1b5d303b6f776e656407 server-id 0x0002 IA_PD 0x00000000 ffff:ffff:ffff:ffff:ffff:ffff:"
            f"ffff:ffff/255 preferred infinite valid infinite interface-id 0x{steer.hex()} vrf \"{'v' * 105}\" "
            f"remote-id enterprise 0 0x{steer.hex()}"), lines[-3])
        shown = messages(data=pcap(frames))
        self.assertEqual((len(shown[last + 1]["relay"]), shown[last + 1]["messageType"]), (33, None))
        self.assertEqual((len(shown[last + 2]["relay"]), shown[last + 2]["xid"]), (1, None))


class HostileBytes(unittest.TestCase):
    def test_never_reach_a_terminal(self):
        title, quote = b"\x1b]0;owned\x07", b'a "b" \\'
        relay = option(1, b"line\nforged") + option(2, b"\xc3\xa9\x9b2J")
        line = snoop(data=pcap([discover(option(12, title) + option(60, quote) + option(82, relay))]))[1]
        self.assertTrue(line.endswith(" circuit-id 0x6c696e650a666f72676564 remote-id 0xc3a99b324a hostname "
                                      '0x1b5d303b6f776e656407 vendor-class "a \\"b\\" \\\\"\n'), line)
        for arguments in (("-r", "no\x1b[2Jfile"), ("-r", "x", "--interface", "\x1b[2J"), ("-r", "x", "--\x1b[2J")):
            err = snoop(*arguments)[2]
            self.assertTrue("\\x1b[2J" in err and err.replace("\n", "").isprintable(), err)

    def test_in_timestamps_do_no_harm(self):
        frame = discover(b"")
        for data, shown in ((pcapng([frame], 1700000000000005), "1 2023-11-14T22:13:20.000005Z vlan"),
                            (pcapng([frame], 1700000000000000005, 9), "1 2023-11-14T22:13:20.000000005Z vlan"),
                            (pcapng([frame], 2**63 - 1, 0), "1 2262-04-10T23:47:16.000000Z vlan"),
                            (pcap([frame])[:28] + b"\xff" * 4 + pcap([frame])[32:], "1 2023-11-14T22:13:19.999999Z")):
            status, out, _ = snoop(data=data)
            self.assertEqual((status, out[:len(shown)]), (0, shown))


class Files(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name, data):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as file:
            file.write(data)
        return path

    def test_that_cannot_be_read_give_status_2(self):
        whole = content("v4-dhclient-dhcpd")
        wifi = whole[:20] + bytes([105, 0, 0, 0]) + whole[24:]
        for path, why in ((os.path.join(self.folder, "none"), "No such file or directory"),
                          (self.path("a", b""), "truncated dump file"),
                          (self.path("c", b"garbage" * 99), "unknown file format"),
                          (self.path("d", wifi), "link type 802.11 is not supported")):
            status, out, err = snoop("-r", path)
            self.assertEqual((status, out), (2, ""))
            self.assertTrue(err.startswith(f'dhcptool: "{path}": ') and why in err, err)

    def test_cut_short_are_shown_up_to_there(self):
        whole = content("v4-vlan20-dhclient-dhcpd")
        status, out, err = snoop("-r", self.path("cut", whole[:2000]))
        self.assertEqual((status, len(out.splitlines())), (2, 5))
        self.assertRegex(err, r"frames \d+, (.*\n)+dhcptool: .*truncated dump file")

    def test_may_be_pipes_and_pcapng(self):
        whole, frame = content("v4-dhclient-dhcpd"), discover(option(12, b"a"))
        self.assertEqual(snoop(data=whole), snoop("-r", bundled("v4-dhclient-dhcpd")))
        self.assertEqual(snoop("--json", data=pcapng([frame], 1)), snoop("--json", data=pcap([frame])))

    def large(self):
        return self.path("large", pcap([discover(bytes(1000))] * 8000))

    def test_output_that_nobody_reads_ends_quietly(self):
        for restore in (True, False):  # whether the tool starts with the default for SIGPIPE
            with subprocess.Popen([TOOL, "snoop", "-r", self.large()], stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, restore_signals=restore) as tool:
                tool.stdout.readline()
                tool.stdout.close()
                self.assertEqual((tool.stderr.read(), tool.wait(60)), (b"", 0))

    def test_output_that_does_not_fit_is_an_error(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([TOOL, "snoop", "-r", bundled("v4-dhclient-dhcpd")], stdout=full,
                                  stderr=subprocess.PIPE, check=False)
        self.assertEqual((done.returncode, done.stderr),
                         (1, b"dhcptool: cannot write the output: No space left on device\n"))


class Usage(unittest.TestCase):
    def test_wrong_gives_status_1(self):
        for arguments in ((), ("-r", "x", "--native-vlan", "4095"), ("-r", "x", "--switchport-mode", "hybrid"),
                          ("-r", "x", "--interface", "9"), ("-r", "x", "--trace", "all"), ("-r", "x", "-i", "y"),
                          ("-r", "x", "--native-vlan", "y=1"), ("-r", "x", "--count", "1")):
            status, out, err = snoop(*arguments)
            self.assertEqual((status, out), (1, ""), arguments)
            self.assertRegex(err, "^dhcptool: .+; see --help\n$")


if __name__ == "__main__":
    unittest.main()
