"""Network namespaces, links, processes and waiting, for all end-to-end scenarios."""

import ctypes
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
from contextlib import contextmanager

SKIPPED = 77  # CTest's SKIP_RETURN_CODE
CLONE_NEWNET = 0x40000000
ETH_P_ALL = 3
libc = ctypes.CDLL(None, use_errno=True)


def require(*programs):
    """Ends the test as skipped, with the reason, if it cannot run."""
    reason = None
    if os.geteuid() != 0:
        reason = "needs root for network namespaces"
    missing = [p for p in ("ip", *programs) if shutil.which(p, path=os.environ["PATH"] + ":/usr/sbin:/sbin") is None]
    if missing:
        reason = "not installed: " + ", ".join(missing)
    if reason is None:
        probe = subprocess.run(["ip", "netns", "add", f"dlprobe{os.getpid()}"], capture_output=True, text=True)
        subprocess.run(["ip", "netns", "del", f"dlprobe{os.getpid()}"], capture_output=True)
        if probe.returncode != 0:
            reason = "no network namespaces here: " + probe.stderr.strip()
    if reason is not None:
        print("SKIPPED:", reason)
        sys.exit(SKIPPED)


def wait_for(what, seconds, condition):
    """Waits for the first true value of the condition and returns it. Fails with `what` after the timeout."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.05)
    raise AssertionError(f"waited {seconds} s for {what}")


class Process:
    """A program that runs in a namespace and writes its output to a file."""

    def __init__(self, lab, namespace, name, command):
        self.name, self.log_path = name, os.path.join(lab.folder, f"{name}.{len(lab.processes)}.log")
        with open(self.log_path, "wb") as log:
            self.popen = subprocess.Popen(["ip", "netns", "exec", lab.full(namespace), *command], stdout=log,
                                          stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, cwd=lab.folder,
                                          env={**os.environ, **lab.environment})

    def log(self):
        with open(self.log_path, errors="replace") as log:
            return log.read()

    def saw(self, text, seconds=10):
        wait_for(f"'{text}' in the output of {self.name}", seconds, lambda: text in self.log())

    def signal(self, number):
        self.popen.send_signal(number)

    def stop(self, seconds=5):
        if self.popen.poll() is None:
            self.popen.send_signal(signal.SIGTERM)
            try:
                self.popen.wait(seconds)
            except subprocess.TimeoutExpired:
                self.popen.kill()
                self.popen.wait()
        return self.popen.returncode


class Lab:
    """The namespaces of one test. All are removed, with the processes in them, at the end of the `with` block."""

    def __init__(self):
        self.prefix = f"dl{os.getpid()}"
        self.namespaces, self.processes, self.environment = [], [], {"LC_ALL": "C"}

    def __enter__(self):
        self.folder = tempfile.mkdtemp(prefix="dhcplib-e2e-")
        return self

    def __exit__(self, kind, value, trace):
        for process in reversed(self.processes):
            process.stop()
        if kind is not None and kind is not SystemExit:
            for process in self.processes:
                print(f"--- {process.name}\n{process.log()[-4000:]}")
        for namespace in self.namespaces:
            subprocess.run(["ip", "netns", "del", self.full(namespace)], capture_output=True)
        shutil.rmtree(self.folder, ignore_errors=True)

    def full(self, namespace):
        return f"{self.prefix}{namespace}"

    def run(self, namespace, *command):
        return subprocess.run(["ip", "netns", "exec", self.full(namespace), *command], check=True, capture_output=True,
                              text=True, timeout=30).stdout

    def add(self, *namespaces):
        for namespace in namespaces:
            subprocess.run(["ip", "netns", "add", self.full(namespace)], check=True)
            self.namespaces.append(namespace)
            self.run(namespace, "sysctl", "-qw", "net.ipv4.ip_forward=1", "net.ipv6.conf.all.forwarding=1",
                     "net.ipv6.conf.default.accept_dad=0", "net.ipv6.conf.all.accept_dad=0")
            self.run(namespace, "ip", "link", "set", "lo", "up")

    def link(self, end, other):
        """Creates a veth pair between two (namespace, interface, addresses...) ends, without checksum offload."""
        (space, name, *addresses), (other_space, other_name, *other_addresses) = end, other
        self.run(space, "ip", "link", "add", name, "type", "veth", "peer", "name", other_name, "netns",
                 self.full(other_space))
        for where, what, own in ((space, name, addresses), (other_space, other_name, other_addresses)):
            self.run(where, "ip", "link", "set", what, "up")
            for address in own:
                self.run(where, "ip", "addr", "add", address, "dev", what)

    def start(self, namespace, name, *command):
        self.processes.append(Process(self, namespace, name, command))
        return self.processes[-1]

    def file(self, name, text, mode=0o644):
        path = os.path.join(self.folder, name)
        with open(path, "w") as out:
            out.write(text)
        os.chmod(path, mode)
        return path

    @contextmanager
    def inside(self, namespace):
        """Sockets opened in the block belong to the namespace."""
        home = os.open("/proc/self/ns/net", os.O_RDONLY)
        there = os.open(f"/run/netns/{self.full(namespace)}", os.O_RDONLY)
        try:
            if libc.setns(there, CLONE_NEWNET) != 0:
                raise OSError(ctypes.get_errno(), "setns")
            yield
        finally:
            libc.setns(home, CLONE_NEWNET)
            os.close(home)
            os.close(there)

    def frames(self, namespace, interface):
        """A packet socket that receives and sends whole frames."""
        with self.inside(namespace):
            sock = socket.socket(socket.AF_PACKET, socket.SOCK_RAW, socket.htons(ETH_P_ALL))
        sock.bind((interface, 0))
        sock.setblocking(False)
        sock.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
        return sock


def received(sock):
    """All frames that are waiting."""
    frames = []
    while True:
        try:
            frames.append(sock.recv(65536))
        except BlockingIOError:
            return frames


def main(scenarios):
    """Runs the scenarios that the command line names; all if it names none."""
    for name in sys.argv[1:] or scenarios:
        started = time.monotonic()
        scenarios[name]()
        print(f"passed: {name} ({time.monotonic() - started:.1f} s)", flush=True)
