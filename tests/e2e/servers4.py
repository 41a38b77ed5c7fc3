"""ISC dhcpd, Kea and dnsmasq with the same subnets, a short renewal time, and circuit-ids in the log."""

import json
import os

SUBNETS = ["10.20.0", "10.30.0", "10.40.0"]  # the clients' two links, and one that only link selection leads to
RENEWAL = 6  # seconds


def pool(subnet):
    return f"{subnet}.100", f"{subnet}.199"


class Dhcpd:
    program = "dhcpd"

    def start(self, lab):
        subnets = "".join(f"subnet {s}.0 netmask 255.255.255.0 {{ range {pool(s)[0]} {pool(s)[1]}; "
                          f"option routers {s}.1; }}\n" for s in SUBNETS)
        config = lab.file("dhcpd.conf", f"""
authoritative; default-lease-time 120; max-lease-time 120; option dhcp-renewal-time {RENEWAL};
if exists agent.circuit-id {{ log(info, concat("circuit-id ", option agent.circuit-id)); }}
subnet 10.82.0.0 netmask 255.255.255.0 {{ }}
{subnets}""")
        leases = lab.file("dhcpd.leases", "")
        self.process = lab.start("srv", self.program, "dhcpd", "-4", "-f", "-d", "-cf", config, "-lf", leases, "-pf",
                                 os.path.join(lab.folder, "dhcpd.pid"), "up1")
        self.process.saw("Server starting service")

    def saw_circuit_id(self, text):
        self.process.saw(f"circuit-id {text}")


class Kea:
    program = "kea-dhcp4"

    def start(self, lab):
        config = {"Dhcp4": {
            "interfaces-config": {"interfaces": ["up1"], "dhcp-socket-type": "udp"},
            "lease-database": {"type": "memfile", "persist": False},
            "valid-lifetime": 120, "renew-timer": RENEWAL,
            "subnet4": [{"id": i + 1, "subnet": f"{s}.0/24", "pools": [{"pool": " - ".join(pool(s))}],
                         "option-data": [{"name": "routers", "data": f"{s}.1"}]} for i, s in enumerate(SUBNETS)],
            "loggers": [{"name": "kea-dhcp4", "severity": "DEBUG", "debuglevel": 55,
                         "output_options": [{"output": "stdout"}]}]}}
        lab.environment.update(KEA_LOCKFILE_DIR=lab.folder, KEA_PIDFILE_DIR=lab.folder)
        self.process = lab.start("srv", self.program, "kea-dhcp4", "-c", lab.file("kea.json", json.dumps(config)))
        self.process.saw("DHCP4_STARTED")


class Dnsmasq:
    program = "dnsmasq"

    def start(self, lab):
        ranges = [f"--dhcp-range={pool(s)[0]},{pool(s)[1]},255.255.255.0,120s" for s in SUBNETS]
        self.process = lab.start("srv", self.program, "dnsmasq", "-d", "-C", "/dev/null", "-p", "0", "--log-dhcp",
                                 "--user=root", "--interface=up1", "--dhcp-authoritative", "--no-ping",
                                 f"--dhcp-leasefile={lab.folder}/dnsmasq.leases", f"--dhcp-option=option:T1,{RENEWAL}",
                                 *ranges)
        self.process.saw("DHCP, IP range")


SERVERS = {"dhcpd": Dhcpd, "kea": Kea, "dnsmasq": Dnsmasq}
