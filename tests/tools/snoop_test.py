"""dhcptool snoop -r: output, counters, and errors of files and terminals."""

import json
import os
import struct
import subprocess
import unittest

import jsonschema

from capture_files import (FilesTest, all_captures, bundled, content, dhcp6_frame, discover, joined, option, option6,
                           pcap, pcapng)

TOOL = os.environ["DHCPTOOL"]

def snoop(*arguments, data=None, **more):
    """Runs the tool with `data` on its standard input. Returns status, output and messages."""
    if data is not None:
        arguments = ("-r", "-") + arguments
    done = subprocess.run([TOOL, "snoop", *arguments], input=data, capture_output=True, timeout=60, **more)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def messages(*arguments, **more):
    return {m["frame"]: m for m in map(json.loads, snoop("--json", *arguments, **more)[1].splitlines())}


def tails(frames, *arguments):
    """The lines for DHCPv4 requests, after the addresses."""
    return [line.split(":67 ")[-1] for line in snoop(*arguments, data=pcap(frames))[1].splitlines()]


class Lines(unittest.TestCase):
    def test_say_what_a_message_holds(self):
        status, out, err = snoop("-r", bundled("v4-leasequery-dhcpd-server"))
        self.assertEqual(status, 0)
        lines = out.splitlines()
        self.assertEqual(lines[0], "3 2026-11-21T01:47:34.152869Z vlan 1 untagged DHCPDISCOVER xid 0xab47a363 "
                         "client 02:c1:00:00:01:1e 10.82.0.1:67 > 10.82.0.2:67 giaddr 10.20.0.1 hops 1 circuit-id "
                         '"Ethernet1" hostname "known" client-id 02:c1:00:00:01:1e params 1,3,6,12,15,28,42 '
                         'vendor-class "udhcp 1.35.0"')
        self.assertEqual(lines[9], "15 2026-11-21T01:47:36.352844Z vlan 1 untagged DHCPLEASEACTIVE xid 0xfbc99c20 "
                         "client 02:c1:00:00:01:1e 10.82.0.2:67 > 10.20.0.1:67 ciaddr 10.20.0.101 giaddr 10.20.0.1 "
                         'circuit-id "Ethernet1" server-id 10.82.0.2 lease-time 600s last-transaction 0s '
                         'associated 10.20.0.100 client-id "abc" vendor-class "Lab-Vendor:X1"')
        self.assertEqual(err, "dhcptool: frames 23: DHCP 18, BOOTP 0, DHCPv6 0, DHCP refused 0, other traffic 5\n")

    def test_name_options_and_sub_options(self):
        info = option(5, b"\n\x14\0\1") + option(6, b"tenant") + option(11, b"\n\x14\0\2") + \
            option(151, b"\0blue") + option(152, b"") + option(200, b"\1\2")
        rows = (
                (option(50, b"\n\0\0\7") + option(54, b"\n\0\0\1") + option(56, b"no lease"),
                 'requested 10.0.0.7 server-id 10.0.0.1 message "no lease"'),
                (option(61, b"\xff" + bytes(4) + b"\0\3\0\1\2\xc1\0\0\0\1"),
                 "client-id IAID 0x00000000 DUID LL 02:c1:00:00:00:01"),
                (option(66, b"tftp.example") + option(67, b"pxe.0"), 'tftp-server "tftp.example" boot-file "pxe.0"'),
                (option(82, info), 'link-selection 10.20.0.1 subscriber-id "tenant" server-override 10.20.0.2 vrf "blue" '
                 "vrf-control option 200 0x0102"),
                (option(81, b"\4\0\0\5a xid\0"), "fqdn 0x056120786964" "00"))
        self.assertEqual(tails([discover(options) for options, _ in rows]), [shown for _, shown in rows])

    def test_count_every_reason(self):
        self.assertEqual(snoop("-r", bundled("crafted-v4-frames-a"))[2],
                         "dhcptool: frames 88: DHCP 33, BOOTP 1, DHCPv6 0, DHCP refused 21, other traffic 33\n"
                         "  7  VLAN tag that the parser does not take\n"
                         "  1  first IP fragment\n"
                         "  2  frame too short for a UDP header\n"
                         "  5  frame too short for a message header\n"
                         "  2  no end option\n"
                         "  3  no space for options\n"
                         "  1  tag with the reserved VLAN 4095\n")

    def test_mark_what_is_cut_or_malformed_and_where(self):
        whole = discover(option(12, b"pc"))
        rows = ((whole[:285], "[refused: cut by the snap length of the capture at byte 285]"),
                (whole[:285], "[refused: no end option, frame ends before its UDP datagram at byte 285]"),
                (discover(option(51, b"\0\0\1")), "[malformed: option 51 has a wrong length at byte 285]"),
                (discover(option(82, b"\1\5ab")),
                 "[malformed: sub-option 1 runs past the end of option 82 at byte 287]"))
        data = pcap([frame for frame, _ in rows])
        data = data[:36] + struct.pack("<I", len(whole)) + data[40:]  # only the first frame was cut by the capture
        _, out, err = snoop(data=data)
        for line, (_, mark) in zip(out.splitlines(), rows, strict=True):
            self.assertTrue(line.endswith(" " + mark), line)
        self.assertTrue(err.endswith("\n  1  cut by the snap length of the capture\n  1  no end option\n"), err)
        self.assertEqual(snoop("--rejected", data=data)[1].splitlines(), out.splitlines()[:2])


class Views(unittest.TestCase):
    def test_quick_lines_have_at_most_100_columns(self):
        _, out, _ = snoop("-q", data=joined(all_captures()))
        self.assertIn(" vlan 1 DHCPNAK 02:c1:00:00:01:0b ", out)
        self.assertEqual([line for line in out.splitlines() if len(line) > 100], [])
        # Codes 50 and 54 are other options in DHCPv6.
        wide, other = tails([discover(option(56, "\u6f22".encode() * 80)),
                             dhcp6_frame(b"\1abc" + option6(50, bytes(4)) + option6(54, bytes(4)))], "-q")
        self.assertTrue(wide.endswith("...") and other.endswith(" solicit"), other)

    def test_verbose_has_each_option_with_its_position(self):
        _, out, _ = snoop("-v", "-r", bundled("v6-pd-dhclient-kea"), "--type", "advertise")
        self.assertIn("\n   102    25 IA_PD 0x00000609 T1 100s T2 200s\n"
                      "   118      26 prefix 2001:db8:f000::/56 preferred 300s valid 600s\n", out)
        info = snoop("-v", data=pcap([discover(option(82, option(1, b"p1")) + option(99, b""))]))[1]
        self.assertTrue(info.endswith('\n   285    82 relay-info\n   287      1 circuit-id "p1"\n   291    99\n'), info)

    def test_times_and_colours_as_asked_for(self):
        arguments = ("-r", bundled("v4-nak-dhclient-dhcpd"), "-q", "--time")
        plain, coloured = snoop(*arguments, "relative")[1], snoop(*arguments, "delta", "--color", "always")[1]
        relative, delta = ([line.split()[1] for line in out.splitlines()] for out in (plain, coloured))
        self.assertEqual((relative[:2], len(relative)), (delta[:2], len(delta)))
        self.assertAlmostEqual(sum(map(float, delta)), float(relative[-1]), 4)
        self.assertIn("\x1b[1;31mDHCPNAK\x1b[0m", coloured)
        self.assertNotIn("\x1b", plain)


class Filters(FilesTest):
    def test_select_messages(self):
        name4, name6 = "v4-relay-dhclient-dhcpd-server", "v6-relay-dhclient-kea-server"
        everything = {name: list(messages("-r", bundled(name)).values()) for name in (name4, name6)}
        for name, arguments, matches in (
                (name4, ("--mac", "02:c1:00:00:01:01"), lambda m: m["chaddr"] == "02:c1:00:00:01:01"),
                (name4, ("--mac", "02:c1:00:00:01:ff"), lambda m: False),
                (name4, ("--type", "Ack"), lambda m: m["dhcpMsgType"] == "DHCPACK"),
                (name4, ("--xid", "0x1"), lambda m: False),
                (name4, ("--vlan", "1"), lambda m: True), (name4, ("--vlan", "2"), lambda m: False),
                (name4, ("--circuit-id", "Ethernet1"), lambda m: m["circuitId"] == b"Ethernet1".hex()),
                (name4, ("--circuit-id", "0x" + b"Ethernet".hex()), lambda m: False),
                (name4, ("--ip", "10.20.0.100"), lambda m: "10.20.0.100" in (m["yiaddr"], m["ciaddr"]) or any(
                    o["code"] == 50 and o["data"] == "0a140064" for o in m["options"])),
                (name4, ("--server", "10.82.0.2", "--type", "offer"), lambda m: m["dhcpMsgType"] == "DHCPOFFER"),
                (name6, ("--type", "reply"), lambda m: m["messageType"] == "reply"),
                (name6, ("--type", "relayreply"), lambda m: m["relay"][0]["messageType"] == "relayReply"),
                (name6, ("--duid", everything[name6][0]["clientId"]["data"]), lambda m: True),
                (name6, ("--duid", "00:01"), lambda m: False)):
            self.assertEqual([m["frame"] for m in everything[name] if matches(m)],
                             list(messages("-r", bundled(name), *arguments)), arguments)

    def test_bound_what_is_printed_and_written(self):
        path = self.path("offers")
        _, out, err = snoop("-r", bundled("v4-many-options-dhclient-dhcpd"), "--type", "offer", "--count", "1",
                            "--write", path)
        self.assertIn("; printed 1\n", err)
        written = snoop("-r", path)[1]
        self.assertEqual(written.split(" ", 1)[1], out.split(" ", 1)[1])
        status, _, err = snoop("-r", path, "--type", "ack", "--write", path)
        self.assertEqual((status, err), (1, f'dhcptool: "{path}" is the capture that is being read\n'))
        self.assertEqual(snoop("-r", path)[1], written)


class JsonObjects(unittest.TestCase):
    def test_spell_values_by_their_kind(self):
        arguments = ("-r", bundled("v4-leasequery-dhcpd-server"), "--interface", "Port-Channel7", "--native-vlan", "12",
                     "--switchport-mode", "trunk")
        found = messages(*arguments, "--bridging-config")[15]
        port = {"Port-Channel7": {"nativeVlan": 12, "switchportMode": "trunk"}}
        for name, value in {"bridgingConfig": {"switchIntfConfig": port}, "dhcpMsgType": "DHCPLEASEACTIVE",
                            "circuitId": b"Ethernet1".hex(), "associatedIps": ["10.20.0.100"], "xid": "0xfbc99c20",
                            "time": "2026-11-21T01:47:36.352844Z", "interface": "Port-Channel7"}.items():
            self.assertEqual(found[name], value, name)
        self.assertNotIn("bridgingConfig", messages(*arguments)[15])

    def test_are_as_the_schema_says(self):
        with open(os.environ["SCHEMA"], encoding="utf-8") as file:
            schema = json.load(file)
        kinds = {kind: jsonschema.Draft202012Validator({**schema, "oneOf": [{"$ref": "#/$defs/" + kind}]})
                 for kind in ("dhcp4", "dhcp6")}
        for found in messages("--bridging-config", data=joined(all_captures())).values():
            kinds["dhcp6" if "isIp6" in found else "dhcp4"].validate(found)


class Dhcp6(unittest.TestCase):
    def test_lines_unwrap_relays_and_decode_identifiers(self):
        _, out, err = snoop("-r", bundled("crafted-v6-a"))
        self.assertIn("frames 141: DHCP 0, BOOTP 0, DHCPv6 101, DHCP refused 25, other traffic 15\n", err)
        self.assertIn("\n  3  frame too short for a relay header\n", err)
        self.assertIn("\n  3  unknown message type\n", err)
        lines = dict(line.split(" ", 1) for line in out.splitlines())
        way = "untagged relayForward [fe80::c1:ff:fe00:c01]:547 > [ff02::1:2]:547 hops 0 link 2001:db8:20::1 " \
              "peer fe80::c01"
        client = "solicit xid 0x123456 client-id LL 02:c1:00:00:0c:01 IA_NA 0x00000001 2001:db8::100 " \
                 "preferred 300s valid 600s"
        for number, shown in (
                ("78", f'{way} interface-id "Et1" vrf "blue" vtep 10.0.0.1 vtep-mac 02:c1:00:00:0c:01 {client}'),
                ("81", f'{way} client-mac 02:c1:00:00:0c:01 interface-id "Et1" remote-id enterprise 32473 02:c1:00:00:0c:01 l3-interface 42 '
                       f'interface Ethernet1 vlan 10 vrf "blue" {client}'),
                ("84", way.replace("hops 0", "hops 1") + ' interface-id "outer" relayForward hops 0 link 2001:db8:20::1'
                       f' peer fe80::c01 interface-id "inner" {client}'),
                ("58", 'remote-id enterprise 9 "switch-7:Gi0/1"'),
                ("72", "IA_TA 0x00000003 IA_PD 0x00000004 2001:db8:f000::/56 preferred 0s valid 0s")):
            self.assertTrue(lines[number].endswith(" " + shown), lines[number])
        shown = {"dhcpcd-uuid-dhcpd": "client-id UUID 00112233-4455-6677-8899-aabbccddeeff IA_NA 0x000006",
                 "dibbler-kea": "client-id EN 32473 0xaabbccdd IA_NA 0x00000001 T1 infinite T2 infinite",
                 "dhclient-kea": "client-id LLT 02:c1:00:00:06:01 2026-11-21T01:47:38Z IA_NA 0x00000601 "}
        _, out, _ = snoop("--type", "solicit", data=joined([bundled("v6-" + name) for name in shown]))
        self.assertEqual([text for text in shown.values() if text not in out], [])

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
        outputs = []
        for more in ((), ("--json", "--keep-state", "--trace", "9")):
            status, out, err = snoop(*more, data=pcap(frames))
            outputs.append(out.splitlines())
            self.assertEqual(status, 0)
            self.assertTrue((out + err).replace("\n", "").isprintable())
            # Of the truncated frames those with a whole relay header, then three of the last five.
            self.assertIn(f"DHCPv6 {len(relayed) + 1 - 62 - 34 + 3}, ", err)
        last = len(relayed) + 2
        lines, objects = outputs
        steered = r'"\x1b]0;owned\x07"'
        self.assertTrue(lines[-4].endswith(
            f" client-id EN 0 {steered} server-id 0x0002 IA_NA 0x0000000000 IA_PD 0x00000000 ffff:ffff:ffff:ffff:ffff:"
            f"ffff:ffff:ffff/255 preferred infinite valid infinite 0x{'00' * 24} interface-id {steered} vrf "
            f"\"{'v' * 105}\" remote-id enterprise 0 {steered} [malformed: option 2 has a wrong length at byte 86]"),
            lines[-4])
        shown = {m["frame"]: m for m in map(json.loads, objects)}
        self.assertEqual((len(shown[last + 1]["relay"]), shown[last + 1]["messageType"]), (33, None))
        self.assertEqual((len(shown[last + 2]["relay"]), shown[last + 2]["xid"]), (1, None))


class HostileBytes(unittest.TestCase):
    def test_never_reach_a_terminal(self):
        title, quote = b"\x1b]0;owned\x07", b'a "b" \\'
        relay = option(1, b"line\nforged") + option(2, b"\xc3\xa9\x9b2J")
        rows = (
                (option(12, title) + option(60, quote) + option(82, relay),
                 r'circuit-id "line\x0aforged" remote-id "é\x9b2J" hostname "\x1b]0;owned\x07" vendor-class "a \"b\" \\"'),
                (option(12, "gr\u00fcn \u6f22\U0001f600".encode()), 'hostname "gr\u00fcn \u6f22\U0001f600"'),
                (option(12, "a\u202eb\u2066\u2028\u0085".encode()),
                 r'hostname "a\xe2\x80\xaeb\xe2\x81\xa6\xe2\x80\xa8\xc2\x85"'),
                (option(12, b"\x7f\xc0\xaf\xed\xa0\x80\xf4\x90\x80\x80\xc3"),
                 r'hostname "\x7f\xc0\xaf\xed\xa0\x80\xf4\x90\x80\x80\xc3"'),
                (option(82, option(1, b"\0\4\0\1ab")), "circuit-id 0x000400016162"))
        self.assertEqual(tails([discover(options) for options, _ in rows]), [shown for _, shown in rows])
        for arguments in (("-r", "no\x1b[2Jfile"), ("-r", "x", "--interface", "\x1b[2J"), ("-r", "x", "--\x1b[2J")):
            err = snoop(*arguments)[2]
            self.assertTrue("\\x1b[2J" in err and err.replace("\n", "").isprintable(), err)


class Files(FilesTest):
    def test_may_have_any_times(self):
        frame = discover(b"")
        files = (pcapng([frame], 1700000000000005), pcapng([frame], 1700000000000000005, 9),
                 pcapng([frame], 2**63 - 1, 0), pcapng([frame], 2**63, 0),
                 pcap([frame])[:28] + b"\xff" * 4 + pcap([frame])[32:])
        paths = [self.path(str(at), data) for at, data in enumerate(files)]
        for form, times in (("absolute", ["1677-09-22T00:12:44.000000Z", "2023-11-14T22:13:19.999999Z",
                                          "2023-11-14T22:13:20.000000005Z", "2023-11-14T22:13:20.000005Z",
                                          "2262-04-10T23:47:16.000000Z"]),
                            ("delta", ["0.000000", "9223372036.854775807", "0.000001005", "0.000004995",
                                       "7523285635.999995"])):
            status, out, _ = snoop("-r", *paths, "--time", form)
            self.assertEqual((status, [line.split()[1] for line in out.splitlines()]), (0, times))

    def test_that_cannot_be_read_give_status_2(self):
        whole = content("v4-dhclient-dhcpd")
        wifi = whole[:20] + bytes([105, 0, 0, 0]) + whole[24:]
        for path, why in ((self.path("none"), "No such file or directory"),
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
        self.assertRegex(err, r"frames \d+: (.*\n)+dhcptool: .*truncated dump file")

    def test_may_be_pipes_and_pcapng(self):
        whole, frame = content("v4-dhclient-dhcpd"), discover(option(12, b"a"))
        self.assertEqual(snoop(data=whole), snoop("-r", bundled("v4-dhclient-dhcpd")))
        self.assertEqual(snoop("-v", "--time", "delta", data=pcapng([frame], 1)),
                         snoop("-v", "--time", "delta", data=pcap([frame])))

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
                          ("-r", "x", "--native-vlan", "y=1"), ("-r", "x", "--xid", "abc"), ("-r", "x", "--duid", "0"),
                          ("-r", "x", "--vlan", "4095"), ("-r", "x", "-q", "--json"), ("-r", "x", "--time", "noon"),
                          ("-r", "x", "--duid", "1:02:3"), ("-i", "lo", "--duration", "nan")):
            status, out, err = snoop(*arguments)
            self.assertEqual((status, out), (1, ""), arguments)
            self.assertRegex(err, "^dhcptool: .+; see --help\n$")


if __name__ == "__main__":
    unittest.main()
