"""Compares the output of dhcptool snoop for each bundled capture with that of an independent dissector.

The rules below are the differences between a snooping agent and the dissector; tests/data/captures/README.md explains
the records. DHCPLIB_SHARED_CAPTURES may name one more folder of captures.
"""

import json
import os
import socket
import subprocess
import unittest

from capture_files import FOLDER, all_captures, frames, joined

NATIVE_VLAN = 7
TYPES6 = [None] + """solicit advertise request confirm renew rebind reply release decline reconfigure infoRequest
                     relayForward relayReply""".split()
IA_KINDS = {3: "IA_NA", 4: "IA_TA", 25: "IA_PD"}


def tagged(record):
    """Only the outermost tag counts, and only if it is 802.1Q."""
    return bool(record["tags"]) and record["tags"][0]["tpid"] == "8100"


def vlan(record):
    return tagged(record) and record["tags"][0]["vid"] or NATIVE_VLAN


def is_message(record, frame):
    """Whether the agent accepts the frame; None if the dissector stopped before the end of the options."""
    if vlan(record) == 4095 or record["l3_off"] != (18 if tagged(record) else 14):
        return False
    size = len(frame) - record["off"]
    if record["proto"] == "dhcpv6":  # after extension headers UDP is not looked for
        return record["ethertype"] == "86dd" and record["ip_proto"] == 17 and record["udp_dport"] in (546, 547) and \
            size >= (4 if record["msg_type"] < 12 else 34) and 1 <= record["msg_type"] <= 13
    if record["udp_dport"] not in (67, 68) or size < 34:
        return False
    if "malformed" in record.get("tshark_errors", ()):
        return None
    return record["end_off"] is not None if record["cookie"] else size > 236


def has_no_dhcp_header(frame, shown):
    """The agent reads neither the IP version nor fragment offsets and lengths; the dissector does."""
    ip, v6 = shown["etherHdrLen"], "isIp6" in shown
    udp = ip + (40 if v6 else shown["ipHdrLen"])
    number = lambda at: int.from_bytes(frame[at:at + 2], "big")
    if v6:
        return frame[ip] >> 4 != 6 or number(ip + 4) < 12 or number(udp + 4) < 12
    return frame[ip] >> 4 != 4 or number(ip + 6) & 0x1FFF or number(ip + 2) < udp - ip + 244 or number(udp + 4) < 244


def sub_options(record, frame):
    """{code: (data in hex, position)} of the first option 82. Ends at a sub-option that passes its end."""
    found, (at, end) = {}, next(((at + 2, at + 2 + size) for code, size, at in record["opts"] if code == 82), (0, 0))
    while at + 2 <= end and at + 2 + frame[at + 1] <= end:
        found.setdefault(frame[at], (frame[at + 2:at + 2 + frame[at + 1]].hex(), at + 2))
        at += 2 + frame[at + 1]
    return found


def options4(record, frame):
    """The attributes that come from the options, by the agent's rules."""
    last = {code: (length, at) for code, length, at in record["opts"]}
    subs, known = sub_options(record, frame), lambda key, other: other if record.get(key) is None else record[key]
    # Four bytes from the start of the data, whatever the length.
    override = socket.inet_ntoa(frame[subs[11][1]:][:4].ljust(4, b"\0") if 11 in subs else bytes(4))
    kind = known("msg_type", frame[last[53][1] + 2] if 53 in last else 0)  # the first byte, whatever the length
    overridden = override != "0.0.0.0"
    return {"dhcpMsgTypeOpt": kind if kind <= 13 else 0,
            "leaseTimeExist": 51 in last, "leaseTime": known("lease_time", 0),
            "lastTransactionTimeExist": 91 in last, "lastTransactionTime": known("last_transaction", 0),
            "serverIdExist": 54 in last or overridden,
            "serverId": override if overridden else known("server_id", "0.0.0.0"),
            "associatedIps": sorted(set(known("associated_ips", []) if 92 in last and last[92][0] % 4 == 0 else []),
                                    key=socket.inet_aton),
            "circuitId": subs.get(1, [""])[0], "remoteId": subs.get(2, [""])[0], "hostname": known("host_name", ""),
            "vendorClassId": known("vendor_class", ""), "paramReqList": known("prl", "")}


def expected4(record, frame):
    fields = {"ipHdrLen": record["ip_hdr_len"], "srcIp": record["src_ip"], "dstIp": record["dst_ip"],
              "offset": record["off"], "isDhcp": record["cookie"], "xid": f'0x{int(record["xid"], 16):08x}',
              "dhcpOpType": {1: "bootpReq", 2: "bootpRep"}.get(record["op"], "bootpOpUnknown"),
              "chaddr": ":".join(record["chaddr"][at:at + 2] for at in range(0, 12, 2))}
    fields.update((name, record[name]) for name in ("ciaddr", "yiaddr", "giaddr"))
    if not record["cookie"]:
        return {**fields, "dhcpMsgType": "BOOTP"}
    return {**fields, **options4(record, frame)}


def expected6(record):
    fields = {"ip6HdrLen": 40, "srcIp6": record["src_ip"], "dstIp6": record["dst_ip"], "udpLen": record["udp_len"],
              "relay": []}
    while record.get("relayed"):
        fields["relay"].append({"messageType": TYPES6[record["msg_type"]], "hopCount": record["hop_count"],
                                "linkAddr": record["link_addr"], "peerAddr": record["peer_addr"], **ids(record)})
        record = record["relayed"]
    return {**fields, "messageType": TYPES6[record["msg_type"]], "xid": "0x" + str(record["xid"]), **ids(record),
            **data_of(record, clientId="client_duid", serverId="server_duid"),
            "ia": [(IA_KINDS[ia["code"]], ia["iaid"], ia["t1"] or 0, ia["t2"] or 0, ia.get("addr", []),
                    ia.get("prefix", [])) for ia in record.get("ia", [])]}


def data_of(record, **keys):
    """Options by our names, null if absent. The dissector continues behind an option of code 0."""
    goes_on = record["opts"] and record["opts"][0][0] == 0
    return {name: None if goes_on else record.get(key) for name, key in keys.items()}


def ids(record):
    """A remote-id without a whole enterprise number is ignored."""
    found = data_of(record, interfaceId="interface_id", remoteId="remote_id")
    return {**found, "remoteId": found["remoteId"] if len(found["remoteId"] or "") >= 8 else None}


def comparable(shown):
    """The printed message, with options as their data and associations as tuples."""
    if "relay" not in shown:
        return shown
    data = lambda message: {name: value["data"] if isinstance(value, dict) and "data" in value else value
                            for name, value in message.items() if name != "options"}
    # The dissector does not print the IAID of an IA_TA.
    associations = [(ia["type"], f'{ia["iaid"]:08x}' if ia["type"] != "IA_TA" else None, ia["t1"], ia["t2"],
                     *([lease["address"] for lease in ia[kind]] for kind in ("addresses", "prefixes")))
                    for ia in shown["ia"]]
    return {**data(shown), "relay": [data(hop) for hop in shown["relay"]], "ia": associations}


class Captures(unittest.TestCase):
    def compare(self, record, frame, shown):
        ethernet = {"srcMac": record["src_mac"], "dstMac": record["dst_mac"], "tagged": tagged(record),
                    "vlanId": vlan(record), "etherType": int(record["ethertype"], 16), "etherHdrLen": record["l3_off"],
                    "ipProtocol": 17, "isUdp": True, "udpSrcPort": record["udp_sport"],
                    "udpDstPort": record["udp_dport"]}
        fields = expected6(record) if record["proto"] == "dhcpv6" else expected4(record, frame)
        for name, value in {**ethernet, **fields}.items():
            self.assertEqual(shown[name], value, name)

    def test_are_shown_as_a_dissector_reads_them(self):
        compared = 0
        folders = [FOLDER] + [folder for folder in [os.environ.get("DHCPLIB_SHARED_CAPTURES")] if folder]
        paths = [path for folder in folders for path in all_captures(folder)]
        done = subprocess.run([os.environ["DHCPTOOL"], "snoop", "--json", "-r", "-", "--native-vlan", str(NATIVE_VLAN)],
                              input=joined(paths), capture_output=True, timeout=60, check=True)
        printed = [m for m in map(json.loads, done.stdout.splitlines()) if m["rejection"] is None]
        all_shown, before = {m["frame"]: comparable(m) for m in printed}, 0
        for path in paths:
            with open(path, "rb") as file, open(path.replace(".pcap", ".expected.jsonl"), encoding="ascii") as lines:
                sent, records = frames(file.read()), {r["frame"]: r for r in map(json.loads, lines)}
            for number, frame in enumerate(sent, 1):
                shown = all_shown.get(before + number)
                with self.subTest(path, frame=number):
                    if number not in records:
                        self.assertTrue(shown is None or has_no_dhcp_header(frame, shown))
                        continue
                    wanted = is_message(records[number], frame)
                    self.assertIn(wanted, (None, shown is not None))
                    if wanted:
                        self.compare(records[number], frame, shown)
                        compared += 1
            before += len(sent)
        self.assertGreater(compared, 500)


if __name__ == "__main__":
    unittest.main()
