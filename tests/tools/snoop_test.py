"""dhcptool snoop -r: what it prints, what it counts, and what it makes of files and terminals that turn bad."""

import json
import os
import pty
import subprocess
import tempfile
import threading
import unittest

from capture_files import bundled, content, discover, option, pcap, pcapng

TOOL = os.environ["DHCPTOOL"]

# The attributes of the parser, in their order.
ATTRIBUTES = """bridgingConfig etherType srcMac dstMac tagged vlanId etherHdrLen isIp ipProtocol srcIp dstIp ipHdrLen
isUdp udpSrcPort udpDstPort udpHdrLen isDhcp dhcpOpType dhcpMsgType dhcpMsgTypeOpt xid chaddr ciaddr yiaddr giaddr
circuitId remoteId serverId serverIdExist leaseTime leaseTimeExist lastTransactionTime lastTransactionTimeExist
associatedIps hostname paramReqList vendorClassId offset""".split()


def snoop(*arguments, data=None, **more):
    """Status, output and messages; `data` goes in through the standard input."""
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
        self.assertEqual(err, "dhcptool: frames 23, DHCP 18, BOOTP 0, rejected 5\n"
                         "  2  Ethernet payload is not IP\n  3  IP payload is not UDP\n")

    def test_name_bootp_and_a_missing_type_by_direction(self):
        out = snoop("-r", bundled("crafted-v4-bootp-a"))[1].splitlines()
        self.assertIn(" untagged BOOTP bootpRep xid ", out[1])
        self.assertIn(" untagged DHCP bootpReq xid ", out[5])

    def test_follow_the_port(self):
        tagged = bundled("v4-vlan20-dhclient-dhcpd")
        for arguments, shown in (((), " vlan 20 tagged "), (("--switchport-mode", "trunk"), " vlan 20 tagged "),
                                 (("--switchport-mode", "dot1q-tunnel", "--native-vlan", "9"), " vlan 9 untagged ")):
            self.assertIn(shown, snoop("-r", tagged, *arguments)[1].splitlines()[0])

    def test_count_every_reason(self):
        self.assertEqual(snoop("-r", bundled("crafted-v4-frames-a"))[2],
                         "dhcptool: frames 88, DHCP 33, BOOTP 1, rejected 54\n"
                         "  6  DHCP packet option format is invalid\n"
                         "  12  Ethernet payload is not IP\n"
                         "  5  Frame too short for BOOTP header\n"
                         "  8  Frame too short for Ethernet header\n"
                         "  6  Frame too short for IPv4 header\n"
                         "  4  Frame too short for UDP header\n"
                         "  3  IP payload is not UDP\n"
                         "  1  Tag with the reserved VLAN 4095\n"
                         "  9  UDP payload is not DHCP packet\n")

    def test_trace_by_frame_when_asked_to(self):
        capture = bundled("v4-dhclient-dhcpd")
        shown = [line for line in snoop("-r", capture, "--trace", "2")[2].splitlines() if ": trace " in line]
        self.assertIn("dhcptool: frame 1: trace 1: Option-82 information does not have CircuitId and/or RemoteId, "
                      "CircuitId len: 0, RemoteId len: 0", shown)
        self.assertNotIn(": trace 4: ", "\n".join(shown))
        self.assertNotIn("trace", snoop("-r", capture)[2])
        self.assertIn(": trace 4: ", snoop("-r", capture, env={**os.environ, "DHCPLIB_TRACE": "4"})[2])


class JsonObjects(unittest.TestCase):
    def test_hold_every_attribute_in_order(self):
        for message in messages("-r", bundled("v4-relay-full82-dhclient-dhcpd-server")).values():
            self.assertEqual(list(message), ["frame"] + ATTRIBUTES)

    def test_spell_values_by_their_kind(self):
        found = messages("-r", bundled("v4-leasequery-dhcpd-server"), "--interface", "Port-Channel7",
                         "--native-vlan", "12", "--switchport-mode", "trunk")[15]
        port = {"Port-Channel7": {"nativeVlan": 12, "switchportMode": "trunk"}}
        for name, value in {
                "bridgingConfig": {"switchIntfConfig": port}, "etherType": 2048, "srcMac": "02:5e:00:00:01:1e",
                "tagged": False, "vlanId": 12, "srcIp": "10.82.0.2", "udpDstPort": 67, "isDhcp": True,
                "dhcpOpType": "bootpRep", "dhcpMsgType": "DHCPLEASEACTIVE", "dhcpMsgTypeOpt": 13, "xid": 0xfbc99c20,
                "ciaddr": "10.20.0.101", "circuitId": b"Ethernet1".hex(), "remoteId": "", "leaseTime": 600,
                "lastTransactionTimeExist": True, "associatedIps": ["10.20.0.100"], "paramReqList": "",
                "vendorClassId": b"Lab-Vendor:X1".hex(), "offset": 42}.items():
            self.assertEqual(found[name], value, name)
        self.assertEqual(messages("-r", bundled("v4-leasequery-dhcpd-server"))[14]["paramReqList"], "51,91,92")

    def test_keep_state_only_on_request(self):
        capture = bundled("v4-leasequery-dhcpd-server")
        self.assertEqual(messages("-r", capture)[17]["associatedIps"], [])
        self.assertEqual(messages("-r", capture, "--keep-state")[17]["associatedIps"], ["10.20.0.100"])

    def test_list_addresses_in_ascending_order(self):
        addresses = bytes([192, 0, 2, 9, 10, 0, 0, 1, 192, 0, 2, 10])
        frames = [discover(option(92, addresses)), discover(option(92, bytes([9, 0, 0, 1])))]
        self.assertEqual(messages("--keep-state", data=pcap(frames))[2]["associatedIps"],
                         ["9.0.0.1", "10.0.0.1", "192.0.2.9", "192.0.2.10"])


class HostileBytes(unittest.TestCase):
    def test_never_reach_a_terminal(self):
        title, quote = b"\x1b]0;owned\x07", b'a "b" \\'
        relay = option(1, b"line\nforged") + option(2, b"\xc3\xa9\x9b2J")
        frame = discover(option(12, title) + option(60, quote) + option(82, relay))
        line = snoop(data=pcap([frame]))[1]
        self.assertTrue(line.endswith(" circuit-id 0x6c696e650a666f72676564 remote-id 0xc3a99b324a hostname "
                                      '0x1b5d303b6f776e656407 vendor-class "a \\"b\\" \\\\"\n'), line)
        self.assertEqual(messages(data=pcap([frame]))[1]["hostname"], title.hex())
        for arguments in (("-r", "no\x1b[2Jfile"), ("-r", "x", "--interface", "\x1b[2J"), ("-r", "x", "--\x1b[2J")):
            status, _, err = snoop(*arguments)
            self.assertNotEqual(status, 0)
            self.assertIn("\\x1b[2J", err)
            self.assertTrue(err.replace("\n", "").isprintable(), err)

    def test_in_timestamps_do_no_harm(self):
        frame = discover(b"")
        for data, shown in ((pcapng([frame], 1700000000000005), "1 2023-11-14T22:13:20.000005Z vlan"),
                            (pcapng([frame], 2**64 - 1, 0), "1 1969-12-31T23:59:59.000000Z vlan"),
                            (pcapng([frame], 2**63 - 1, 0), "1 294247-01-09T04:00:54.000000Z vlan"),
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
        for name, path, why in (("missing", os.path.join(self.folder, "none"), "No such file or directory"),
                                ("folder", self.folder, "Is a directory"),
                                ("empty", self.path("a", b""), "truncated dump file"),
                                ("header cut", self.path("b", whole[:10]), "truncated dump file"),
                                ("garbage", self.path("c", b"garbage" * 99), "unknown file format"),
                                ("Wi-Fi", self.path("d", wifi), "link type is 802.11, not Ethernet")):
            with self.subTest(name):
                status, out, err = snoop("-r", path)
                self.assertEqual((status, out), (2, ""))
                self.assertTrue(err.startswith(f'dhcptool: "{path}": ') and why in err, err)

    def test_cut_short_are_shown_up_to_there(self):
        whole = content("v4-vlan20-dhclient-dhcpd")
        for cut in (len(whole) - 1, 2000):
            status, out, err = snoop("-r", self.path("cut", whole[:cut]))
            self.assertEqual(status, 2)
            self.assertTrue(snoop(data=whole)[1].startswith(out) and out.endswith("\n"))
            self.assertRegex(err, r"frames \d+, (.*\n)+dhcptool: .*truncated dump file")
        self.assertEqual(len(out.splitlines()), 5)

    def test_may_be_pipes_and_pcapng(self):
        whole, frame = content("v4-dhclient-dhcpd"), discover(option(12, b"a"))
        fifo = os.path.join(self.folder, "fifo")
        os.mkfifo(fifo)
        feeder = threading.Thread(target=self.path, args=("fifo", whole))
        feeder.start()
        self.assertEqual(snoop("-r", fifo), snoop("-r", bundled("v4-dhclient-dhcpd")))
        feeder.join()
        self.assertEqual(snoop(data=whole), snoop("-r", bundled("v4-dhclient-dhcpd")))
        self.assertEqual(snoop("--json", data=pcapng([frame], 1)), snoop("--json", data=pcap([frame])))

    def large(self):
        return self.path("large", pcap([discover(bytes(1000))] * 8000))

    def test_large_have_a_bar_on_a_terminal_alone(self):
        def on_terminal(path):
            ours, theirs = pty.openpty()
            with subprocess.Popen([TOOL, "snoop", "-r", path], stdout=subprocess.DEVNULL, stderr=theirs):
                os.close(theirs)
                shown = b""
                try:
                    while part := os.read(ours, 4096):
                        shown += part
                except OSError:
                    pass  # the terminal's other end is closed
            os.close(ours)
            return shown

        shown = on_terminal(self.large())
        self.assertIn(b"\r[#########################.........................]  50 %", shown)
        self.assertIn(b"\r\x1b[Kdhcptool: frames 8000, ", shown)
        self.assertNotIn(b"%", on_terminal(bundled("v4-dhclient-dhcpd")))
        self.assertNotIn("%", snoop("-r", self.large())[2])

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
                          ("-r", "x", "--interface", "9"), ("-r", "x", "--trace", "all")):
            status, out, err = snoop(*arguments)
            self.assertEqual((status, out), (1, ""), arguments)
            self.assertRegex(err, "^dhcptool: .+; --help tells the usage\n$")

    def test_is_told(self):
        self.assertIn("dhcptool snoop [OPTIONS]", snoop("--help")[1])


if __name__ == "__main__":
    unittest.main()
