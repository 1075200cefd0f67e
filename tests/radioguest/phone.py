# SPDX-License-Identifier: Apache-2.0
"""A phone in the air around the device: the fourth radio, which joins the device's access point."""
import pathlib, subprocess, time

from air import AIR, run

RADIO = "wlan3"
LEASE = """#!/bin/sh
[ "$1" != bound ] || { ip addr flush dev $interface; ip addr add $ip/$mask dev $interface; echo "nameserver $dns" >/etc/netns/air/resolv.conf; echo "$opt114" >/run/page; }
"""


class Phone:
    def __init__(self):
        pathlib.Path("/etc/netns/air").mkdir(parents=True, exist_ok=True)
        pathlib.Path("/etc/netns/air/resolv.conf").touch()
        pathlib.Path("/run/lease").write_text(LEASE, encoding="utf-8")
        pathlib.Path("/run/lease").chmod(0o755)
        self.engine = None
        self.mac = run(*AIR, "cat", f"/sys/class/net/{RADIO}/address").strip()

    def join(self, ssid, key=""):
        """Tries for ever to; `joined` says where it is."""
        self.leave()
        lines = ["ctrl_interface=/run/phone", "network={", f"ssid={ssid.encode().hex()}", "scan_ssid=1",
                 f'psk="{key}"' if key else "key_mgmt=NONE", "}"]
        conf = pathlib.Path("/run/phone.conf")
        conf.write_text("\n".join(lines) + "\n", encoding="utf-8")
        log = open("/out/phone.log", "a", encoding="utf-8")
        self.engine = subprocess.Popen([*AIR, "wpa_supplicant", "-i", RADIO, "-D", "nl80211", "-c", str(conf)], stdout=log, stderr=log)

    def leave(self):
        if self.engine:
            self.engine.terminate()
            self.engine.wait()
            self.engine = None
        run(*AIR, "ip", "addr", "flush", "dev", RADIO)

    def joined(self):
        """The access point's address and frequency, None for none."""
        words = subprocess.run([*AIR, "iw", "dev", RADIO, "link"], capture_output=True, text=True, check=False).stdout.split()
        return (words[2], int(words[words.index("freq:") + 1])) if words[:1] == ["Connected"] else None

    def lease(self):
        """Asks for an address, and says which it is; "" for none."""
        run(*AIR, "busybox", "udhcpc", "-i", RADIO, "-n", "-q", "-t", "10", "-T", "1", "-s", "/run/lease", "-O", "114")
        return run(*AIR, "ip", "-br", "-4", "addr", "show", RADIO).split()[2:][0]

    def page(self):
        """What the lease says of a page, a URL as text or in hexadecimal digits."""
        text = pathlib.Path("/run/page").read_text(encoding="utf-8").strip()
        return text if ":" in text else bytes.fromhex(text).decode()

    def finds(self, name):
        """The addresses of a name, as the access point tells them."""
        return subprocess.run([*AIR, "getent", "ahostsv4", name], capture_output=True, text=True, check=False).stdout.split()[:1]

    def fetch(self, url):
        return run(*AIR, "curl", "--silent", "--show-error", "--retry", "20", "--retry-connrefused", "--retry-delay", "1", url)

    def beacon(self, ssid):
        """What iw says of the access point of that name, once it hears one; "" when it does not in a while."""
        end = time.monotonic() + 20
        while time.monotonic() < end:  # a radio that has just left a network may refuse to scan
            run(*AIR, "ip", "link", "set", RADIO, "up")
            text = subprocess.run([*AIR, "iw", "dev", RADIO, "scan", "-u", "freq", "2412", "2437", "2462", "flush"], capture_output=True,
                                  text=True, check=False).stdout
            for bss in text.split("\nBSS "):
                if f"SSID: {ssid}\n" in bss:
                    return bss
            time.sleep(0.5)
        return ""
