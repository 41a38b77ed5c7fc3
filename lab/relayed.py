"""A relay agent between clients on two links and a server. The programs' paths: DHCPRELAY, DHCPLOAD."""

import os
import select
import signal
import struct
import threading

from lab import Lab, wait_for

SOL_PACKET, PACKET_AUXDATA, PACKET_IGNORE_OUTGOING = 263, 8, 23
SERVER, SERVER6 = "10.82.0.2", "2001:db8:82::2"
CLIENT_SCRIPT = """#!/bin/sh
case "${reason:-$1}" in
bound|renew|BOUND|RENEW|REBIND)
    ip addr flush dev $interface scope global
    ip addr add ${ip:-$new_ip_address}/24 dev $interface
    ip route replace default via ${router:-$new_routers} dev $interface ;;
*6) [ -z "$new_ip6_address" ] || ip -6 addr replace "$new_ip6_address/64" dev "$interface" ;;
esac
echo "event ${reason:-$1} ${ip:-$new_ip_address}${new_ip6_address:-$new_dhcp6_ia_na1_ia_addr1} \\
server ${serverid:-$new_dhcp_server_identifier} prefix $new_ip6_prefix$new_dhcp6_ia_pd1_prefix1"
"""


class AccessPort(threading.Thread):
    """A switch between c2 and the relay. It adds the tag to c2's frames, and removes it from frames to c2."""

    def __init__(self, lab, tpid, tci):
        super().__init__(daemon=True)
        self.tag, self.vlan = struct.pack(">HH", tpid, tci), (tpid, tci & 0xFFF)
        self.inner, self.outer = (lab.frames("switch", name) for name in ("access", "trunk"))
        for sock in (self.inner, self.outer):
            sock.setsockopt(SOL_PACKET, PACKET_IGNORE_OUTGOING, 1)
            sock.setsockopt(SOL_PACKET, PACKET_AUXDATA, 1)
        self.wake, self.ended = os.pipe()

    def run(self):
        while self.wake not in (ready := select.select([self.wake, self.inner, self.outer], [], [])[0]):
            for sock in ready:
                frame, control, _, _ = sock.recvmsg(65536, 128)
                status, tci, tpid = struct.unpack("I12xHH", control[0][2])  # struct tpacket_auxdata
                if sock is self.inner:
                    self.outer.send(frame[:12] + self.tag + frame[12:])
                elif status & 0x10 and (tpid, tci & 0xFFF) == self.vlan:
                    self.inner.send(frame)

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        os.write(self.ended, b"0")
        self.join()


class Relayed(Lab):
    """Clients c1 and c2, the relay with a link to each, and the server. If `tagged`, c2 is behind a switch."""

    def __init__(self, tagged=False):
        super().__init__()
        self.tagged = tagged

    def __enter__(self):
        super().__enter__()
        self.add("c1", "c2", "relay", "srv", *(["switch"] if self.tagged else []))
        self.link(("relay", "up0", "10.82.0.1/24", "2001:db8:82::1/64"),
                  ("srv", "up1", f"{SERVER}/24", f"{SERVER6}/64"))
        self.run("srv", "ip", "route", "add", "10.0.0.0/8", "via", "10.82.0.1")
        self.run("srv", "ip", "-6", "route", "add", "default", "via", "2001:db8:82::1")
        for number in (1, 2):
            self.client_link(number)
        if self.tagged:
            self.link(("switch", "access"), ("c2", "eth0"))
            self.run("c2", "ethtool", "-K", "eth0", "tx", "off")  # the switch does not complete checksums
        # A subnet that clients of cl1 get only through link selection.
        self.run("relay", "ip", "route", "add", "10.40.0.0/24", "dev", "cl1")
        self.script = self.file("client.sh", CLIENT_SCRIPT, 0o755)
        return self

    def client_link(self, number):
        far_end = ("switch", "trunk") if self.tagged and number == 2 else (f"c{number}", "eth0")
        self.link(("relay", f"cl{number}", f"10.{number + 1}0.0.1/24", f"2001:db8:{number + 1}0::1/64"), far_end)

    def relay(self, *options, namespace="relay", ready=True):
        agent = self.start(namespace, "dhcprelay", os.environ["DHCPRELAY"], *options)
        if ready:
            agent.saw("dhcprelay: ready")
        return agent

    def counters(self, agent):
        before = len(agent.log())
        agent.signal(signal.SIGUSR1)
        wait_for("the agent's counters", 5, lambda: agent.log()[before:].endswith("\n"))
        return agent.log()[before:]

    def responder(self, address, *options):
        """A server that answers every request."""
        port = ":547" if ":" in address else ":67"
        self.start("srv", "responder", os.environ["DHCPLOAD"], "server", address, *options)
        wait_for("the responder's socket", 5, lambda: port in self.run("srv", "ss", "-ulnH"))

    def load(self, namespace, *options):
        return self.start(namespace, "load", os.environ["DHCPLOAD"], "clients", "eth0", *map(str, options))

    def udhcpc(self, namespace):
        return self.start(namespace, "udhcpc", "udhcpc", "-i", "eth0", "-f", "-R", "-t", "10", "-T", "1", "-s", self.script)

    def dhclient(self, namespace, *options):
        self.leases, self.pid = self.file(f"{namespace}.leases", ""), os.path.join(self.folder, f"{namespace}.pid")
        config = self.file("dhclient.conf", "initial-interval 1; backoff-cutoff 2; request routers, subnet-mask;\n")
        return self.start(namespace, "dhclient", "dhclient", *(options or ["-4"]), "-d", "-sf", self.script, "-lf",
                          self.leases, "-cf", "/dev/null" if options else config, "-pf", self.pid, "eth0")


def outcome(load, seconds=30):
    """Waits for the end of the load. Returns its result: started, completed, lost, stray, seconds."""
    assert load.popen.wait(seconds) == 0
    words = load.log().split()
    return {name: float(value) for name, value in zip(words[::2], words[1::2])}
