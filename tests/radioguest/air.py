# SPDX-License-Identifier: Apache-2.0
"""What is in the air around the device, in the guest of tools/radio: access points that hostapd makes of the other
radios, in a namespace of their own, with a DHCP server. wlan0 is the device's; wlan1 has channel 6, wlan2 channel 11."""
import pathlib, subprocess, time

AIR = ("ip", "netns", "exec", "air")
CHANNELS, NETS = {"wlan1": 6, "wlan2": 11}, {"wlan1": "10.1", "wlan2": "10.2"}
WPA2 = {"wpa": 2, "wpa_key_mgmt": "WPA-PSK", "rsn_pairwise": "CCMP"}
WPS = {"eap_server": 1, "wps_state": 2, "config_methods": "virtual_push_button keypad", "device_name": "Router"}


def wpa2(ssid, key, **more):
    return {"ssid": ssid, **WPA2, "wpa_passphrase": key, **more}


def wpa3(ssid, key):
    return {"ssid": ssid, **WPA2, "wpa_key_mgmt": "SAE", "ieee80211w": 2, "sae_password": key}


def mixed(ssid, key):
    return wpa2(ssid, key, wpa_key_mgmt="WPA-PSK SAE", ieee80211w=1)


def raw(name):
    """A name of any bytes."""
    return {"ssid2": name.hex(), "utf8_ssid": 1}


def run(*command):
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    assert done.returncode == 0, (command, done.stdout, done.stderr)
    return done.stdout


class Air:
    def __init__(self):
        self.points, self.server = {}, None
        run("ip", "netns", "add", "air")
        run("ip", "-n", "air", "link", "set", "lo", "up")
        for radio in "phy1", "phy2", "phy3":
            run("iw", "phy", radio, "set", "netns", "name", "air")
        run("ip", "link", "add", "eth0", "type", "veth", "peer", "name", "r0", "netns", "air")
        run("ip", "-n", "air", "addr", "add", "192.0.2.1/24", "dev", "r0")
        self.serve()

    def serve(self):
        self.server = subprocess.Popen(
            [*AIR, "dnsmasq", "--keep-in-foreground", "--conf-file=/dev/null", "--user=root", "--port=0", "--no-ping",
             "--bind-dynamic", "--dhcp-authoritative", "--dhcp-leasefile=/run/leases", "--pid-file=", "--except-interface=lo",
             *(f"--dhcp-range={net}.10,{net}.99,1h" for net in ("192.0.2", *(f"10.{i}.{j}" for i in (1, 2) for j in range(10))))],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def silence(self):
        self.server.kill()
        self.server.wait()

    def cable(self, plugged):
        run("ip", "-n", "air", "link", "set", "r0", "up" if plugged else "down")

    def start(self, radio, *networks):
        """Access points on one radio, in place of those that were there; addresses go to who joins any of them."""
        self.stop(radio)
        lines = [f"interface={radio}", "hw_mode=g", f"channel={CHANNELS[radio]}", f"ctrl_interface=/run/{radio}",
                 f"bssid=02:00:00:00:{CHANNELS[radio]:02x}:00"]
        for number, network in enumerate(networks):
            lines += [f"bss={radio}_{number}"] if number else []
            lines += [f"{key}={value}" for key, value in network.items()]
        conf = pathlib.Path(f"/run/{radio}.conf")
        conf.write_text("\n".join(lines) + "\n", encoding="utf-8")
        log = open(f"/out/hostapd-{radio}.log", "a", encoding="utf-8")
        self.points[radio] = subprocess.Popen([*AIR, "hostapd", str(conf)], stdout=log, stderr=log)
        self.until_enabled(radio)
        for number in range(len(networks)):
            run("ip", "-n", "air", "addr", "replace", f"{NETS[radio]}.{number}.1/24", "dev", f"{radio}_{number}" if number else radio)

    def until_enabled(self, radio):
        end = time.monotonic() + 20
        while subprocess.run([*AIR, "hostapd_cli", "-p", f"/run/{radio}", "-i", radio, "status"], capture_output=True, text=True,
                             check=False).stdout.find("state=ENABLED") < 0:
            assert time.monotonic() < end and self.points[radio].poll() is None, f"hostapd on {radio} does not come up"
            time.sleep(0.1)

    def stop(self, radio, farewell=True):
        """Without farewell nobody is told that the access point goes."""
        point = self.points.pop(radio, None)
        if point:
            point.terminate() if farewell else point.kill()
            point.wait()
            run("ip", "-n", "air", "link", "set", radio, "down")

    def command(self, radio, *words):
        return run(*AIR, "hostapd_cli", "-p", f"/run/{radio}", "-i", radio, *words)

    def close(self):
        for radio in list(self.points):
            self.stop(radio)
        self.silence()
