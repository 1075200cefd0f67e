# SPDX-License-Identifier: Apache-2.0
"""Two network namespaces with a cable between them, in namespaces of the test's own: nothing of the machine is
touched. In `dev` the device has eth0; in `rt` a router has r0 (192.0.2.1, and 2001:db8:1::1 when it is wanted)."""
import json, os, pathlib, subprocess, sys

from privatebus import until

DEV, ROUTER = ("ip", "netns", "exec", "dev"), ("ip", "netns", "exec", "rt")


def enclose(*more):
    """Runs this program again where /run, /var/lib and the processes are its own; skips it without privilege."""
    if os.environ.get("ORVA_ENCLOSED") == "yes":
        for directory in "/run", "/var/lib":
            subprocess.run(["mount", "-t", "tmpfs", "test", directory], check=True)
        return
    if os.geteuid() != 0:
        print("SKIP : namespaces want root")
        sys.exit(77)
    os.execvpe("unshare", ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc", *more,
                           sys.executable, "-B", *sys.argv], {**os.environ, "ORVA_ENCLOSED": "yes"})


def ip(*words):
    done = subprocess.run(["ip", "-j", *words], capture_output=True, text=True, check=False)
    assert done.returncode == 0, (words, done.stderr)
    return json.loads(done.stdout) if done.stdout.strip() else []


class Network:
    """The two namespaces and what runs in `rt`; the cable is out."""

    def __init__(self):
        self.servers, self.plugged = [], False
        for name in "dev", "rt":
            ip("netns", "add", name)
            ip("-n", name, "link", "set", "lo", "up")
        self.add_interface()

    def add_interface(self):
        ip("link", "add", "eth0", "netns", "dev", "address", "02:00:00:00:10:01", "type", "veth", "peer", "name", "r0", "netns",
           "rt")
        ip("-n", "rt", "addr", "add", "192.0.2.1/24", "dev", "r0")
        # An advertisement from an address that is still looked for would be ignored, and the next one is seconds away.
        # It keeps its addresses while the cable is out, or it would advertise their end when it is back.
        subprocess.run([*ROUTER, "sh", "-c", "cd /proc/sys/net/ipv6/conf/r0 && echo 0 >accept_dad && echo 1 >keep_addr_on_down"],
                       check=True)

    def remove_interface(self):
        ip("-n", "dev", "link", "delete", "eth0")

    def cable(self, plugged):
        self.plugged = plugged
        ip("-n", "rt", "link", "set", "r0", "up" if plugged else "down")

    def start(self, *command, ready=("udp", ":0043 ")):
        """A server, until it listens: a line of /proc/net says so. A question before that would be asked again late."""
        self.servers.append(subprocess.Popen([*ROUTER, "setpriv", "--pdeathsig=KILL", *command],
                                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
        table, text = ready
        until(lambda: text in subprocess.run([*ROUTER, "cat", f"/proc/net/{table}"], capture_output=True, text=True, check=True).stdout)

    def serve(self, *options, gateway="192.0.2.1", servers="192.0.2.1,9.9.9.9", ipv4=True,
              lease="2m"):
        """A DHCP server, and what `options` say beside it. dnsmasq's shortest lease is two minutes."""
        self.start("dnsmasq", "--keep-in-foreground", "--conf-file=/dev/null", "--user=root", "--port=0", "--no-ping",
                   "--interface=r0", "--bind-dynamic", "--dhcp-authoritative",
                   *([f"--dhcp-range=192.0.2.10,192.0.2.99,{lease}"] if ipv4 else []),
                   f"--dhcp-option=option:router,{gateway}", f"--dhcp-option=option:dns-server,{servers}",
                   "--dhcp-option=option:domain-name,lan.test", "--dhcp-leasefile=/run/leases", "--pid-file=", *options,
                   ready=("udp", ":0043 ") if ipv4 else ("raw6", ":003A "))

    def advertise(self):
        """IPv6: addresses by advertisement, with name servers."""
        ip("-n", "rt", "addr", "replace", "2001:db8:1::1/64", "dev", "r0", "nodad")
        return ["--enable-ra", "--ra-param=r0,1", "--dhcp-range=::,constructor:r0,slaac,64,2m",
                "--dhcp-option=option6:dns-server,[2001:db8:1::1],[fe80::1]"]

    def silence(self):
        while self.servers:
            server = self.servers.pop()
            server.kill()
            server.wait()
        pathlib.Path("/run/leases").unlink(missing_ok=True)

    def close(self):
        self.silence()
        for name in "dev", "rt":
            ip("netns", "delete", name)
