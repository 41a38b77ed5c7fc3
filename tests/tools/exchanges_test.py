"""dhcptool follow and stats on captures of real clients and servers."""

import json
import os
import subprocess
import unittest

import jsonschema
from capture_files import bundled

TOOL = os.environ["DHCPTOOL"]
FAULTS = os.path.join(os.environ["CAPTURES"], "faults")


def fault(name):
    return os.path.join(FAULTS, name + ".pcap")


def run(command, *arguments):
    return subprocess.run([TOOL, command, "-r", *arguments], check=True, capture_output=True, timeout=120).stdout.decode()


def objects(command, *arguments):
    with open(os.environ["SCHEMA"], encoding="utf-8") as file:
        schema = json.load(file)
    kind = {"follow": "exchange", "stats": "statistics"}[command]
    validator = jsonschema.Draft202012Validator({**schema, "oneOf": [{"$ref": "#/$defs/" + kind}]})
    found = [json.loads(line) for line in run(command, *arguments, "--json").splitlines()]
    for one in found:
        validator.validate(one)
    return found


def marks(exchange):
    return [mark["kind"] for mark in exchange["marks"]]


class Exchanges(unittest.TestCase):
    def test_of_two_captures_are_joined_at_the_relay(self):
        exchange, = objects("follow", fault("relay-drops-option82-client"), fault("relay-drops-option82-server"))
        self.assertEqual(marks(exchange), ["notAnswered", "relayInfoChanged"])
        self.assertEqual((exchange["port"], exchange["relayedPort"]), (b"access-sw1:7".hex(), b"lan1".hex()))
        self.assertEqual(exchange["messages"][0]["count"], 3)
        relayed = [bundled("v4-relay-dhcpcd-kea-" + side) for side in ("client", "server")]
        for found in objects("follow", *relayed):
            self.assertNotIn("retransmitted", marks(found))
            self.assertNotIn("answeredTwice", marks(found))

    def test_pass_a_filter_as_a_whole(self):
        out = run("follow", fault("nak-after-move"), "--type", "nak", "--time", "relative", "--problems")
        self.assertRegex(out, r'^0\.\d+ 02:c1:00:00:00:01 vlan 1 REQUEST \(reboot\) -> NAK \S+ server .* ! NAK .*"\n$')


class Counts(unittest.TestCase):
    def test_say_who_answers_and_how_fast(self):
        found, = objects("stats", fault("pool-exhausted"), fault("rogue-server"), fault("not-on-link"))
        self.assertEqual(found["dhcp4"], {"DISCOVER": 5, "OFFER": 3, "REQUEST": 2, "ACK": 2, "NAK": 1})
        self.assertEqual((found["exchanges"], found["answerDue"], found["notAnswered"]), (6, 6, 1))
        servers = {server["server"]: server for server in found["servers"]}
        self.assertEqual((servers["10.10.0.1"]["exchanges"], servers["10.10.0.1"]["refusals"]), (2, 1))
        rogue = servers["192.168.1.1"]["offers"]
        self.assertEqual((rogue["count"], rogue["histogram"]), (1, [{"fromNs": 2000000, "count": 1}]))
        self.assertAlmostEqual(rogue["medianNs"], 4261000, delta=4261000 * 0.016)
        first, rest = objects("stats", fault("pool-exhausted"), "--top", "1")[0]["clients"]
        self.assertEqual((first["exchanges"], rest["client"], rest["exchanges"]), (1, None, 1))

    def test_end_after_as_many_as_wanted(self):
        self.assertEqual(objects("stats", fault("pool-exhausted"), "--count", "2")[0]["messages"], 2)
        self.assertEqual(len(run("follow", fault("nak-after-move"), "--count", "2").splitlines()), 2)

    def test_fit_a_terminal(self):
        out = run("stats", fault("rogue-server"), "--top", "1")
        self.assertIn("with problems: 1\n", out)
        self.assertTrue(max(map(len, out.splitlines())) <= 80, out)


if __name__ == "__main__":
    unittest.main()
