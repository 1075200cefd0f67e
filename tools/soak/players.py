# SPDX-License-Identifier: Apache-2.0
"""Who plays in a soak: clients of the host, the network, and the daemon's bad luck. Each action takes the
device and the random numbers, does one thing and returns nothing; what it asks is answered later."""
import dbus

KEY = "canary-soak-key"  # of every network that has one: it must appear nowhere
NETWORKS = ["Home", "Home guests", "Café Zoë", "Attic 1999", "Printer setup", "Nowhere", "x" * 33, ""]
REQUESTERS = ["wizard", "party", "kiosk"]


# --- clients -----------------------------------------------------------------------------------------

def start(device, rng):
    device.invoke("network/start")


def stop(device, rng):
    device.invoke(rng.choice(["network/stop", "network/restart", "network/shutdown"]))


def network(rng):
    secured = rng.random() < 0.7
    return {"ssid": rng.choice(NETWORKS), "encryption": 2 if secured else 0,
            "key": rng.choice([KEY, KEY, KEY + "-wrong", "short"]) if secured else "", "dhcp": True}


def set_profile(device, rng):
    profile = {"type": rng.randrange(3), "wired": {"dhcp": True}}
    if rng.random() < 0.3:
        profile["wired"] = {"ip": "192.0.2.7", "netmask": "255.255.255.0", "gateway": "192.0.2.1",
                            "dns": ["192.0.2.1"]}
    if rng.random() < 0.8:
        profile["wireless"] = network(rng)
    if rng.random() < 0.5:
        profile["wirelessNetworks"] = [network(rng) for _ in range(rng.randrange(12))]
    device.invoke("network/profile/set", {"networkProfile": profile})


def remove_network(device, rng):
    device.invoke("network/wireless/remove", {"string": rng.choice(NETWORKS)})


def scan(device, rng):
    for _ in range(rng.choice([1, 1, 1, 20])):
        device.invoke("network/scan")


def ask_radio(device, rng):
    device.invoke(rng.choice(["network/wireless/rssi", "network/wireless/reconnect",
                              "network/wireless/restart", "wifi-restart/restart"]))


def start_wps(device, rng):
    if rng.random() < 0.5:
        apply = rng.random() < 0.5  # chosen now: the answer comes at a time of its own
        device.invoke("network/wps/pbc", done=lambda value: apply and device.invoke("network/wps/apply", value))
    else:
        device.invoke("network/wps/pin", {"string": rng.choice(["12345670", "87654321", "1234"])})


def share_soft_ap(device, rng):
    request = {"name": rng.choice(REQUESTERS)}
    if rng.random() < 0.6:
        request["timeout"] = rng.choice([-1, 0, 50, 500, 5000])
    if rng.random() < 0.3:
        request["holdSoftAp"] = True
    request["settings"] = {"apInterface": rng.choice(["uap0", "uap0", "uap0", "uap7"]),
                           "ssid": rng.choice(NETWORKS), "channel": rng.choice([1, 6, 11])}
    device.invoke("network/softap/request", {"networkSoftApRequest": request})


def revoke_soft_ap(device, rng):
    device.invoke("network/softap/revoke", {"string": rng.choice(REQUESTERS)})


def switch(device, rng):
    on = {"bool": rng.random() < 0.5}
    if rng.random() < 0.5:
        device.invoke("network/wake-on-lan/set-enabled", on)
    else:
        device.ask("SetValue", "network/airplane-mode", on)


def write_setting(device, rng):
    path, value = rng.choice([
        ("softap-auto-enabled", {"bool": rng.random() < 0.5}), ("max-auth-failures", {"i32": rng.randrange(5)}),
        ("max-wifi-networks", {"i32": rng.randrange(12)}), ("airplane-mode-type", {"airplaneModeType": 1}),
        ("wifi-restart-criteria", {"wifiRestartCriteria": {
            "checkIntervalMs": rng.choice([0, 100]), "maxTxIncreaseNoRxIncreaseThreshold": 2,
            "restartActivatePath": "wifi-restart/restart"}})])
    device.ask("SetValue", "settings/network/" + path, value)


def read(device, rng):
    method, path = rng.choice([("GetValue", "network/info"), ("GetValue", "network/profile"), ("ListNodes", None),
                               ("GetRows", "network/scan/results"), ("GetRows", "power/requests")])
    device.ask(method, *([path] if path else []))


def ask_nonsense(device, rng):
    method, *words = rng.choice([
        ("GetValue", "no/such/node"), ("GetValue", "network/start"), ("Invoke", "network/info", {}),
        ("SetValue", "network/info", {"bool": True}), ("SetValue", "settings/network/max-auth-failures", {}),
        ("Invoke", "network/profile/set", {"networkProfile": {"wirelessNetworks": "Home", "key": KEY}}),
        ("Invoke", "network/profile/set", {"i32": 7}), ("Invoke", "network/softap/request", {}),
        ("Invoke", "network/wps/apply", {"networkInterface": {"ssid": 7, "key": KEY}}),
        ("SetValue", "network/airplane-mode", {"string": "x" * 100000})])
    device.ask(method, *words)


def leave_early(device, rng):
    device.replace_client()


# --- the network -------------------------------------------------------------------------------------

def cable(device, rng):
    device.act(rng.choice(["Plug", "Unplug"]))


def move_about(device, rng):
    device.act("ChangeAccessPoint", rng.choice(NETWORKS), {"signal": -40 - rng.randrange(50)})


def change_key(device, rng):
    device.act("ChangeAccessPoint", rng.choice(["Home", "Café Zoë"]), {"key": rng.choice([KEY, KEY + "-new"])})


def access_point(device, rng):
    bssid = f"02:a0:00:00:01:{rng.randrange(8):02x}"
    if rng.random() < 0.5:
        device.act("AddAccessPoint", {"ssid": rng.choice(NETWORKS), "bssid": bssid, "security": "wpa-psk",
                                      "key": KEY, "wps": True, "network": "home"})
    else:
        device.act("RemoveAccessPoint", bssid)


def answer_wps(device, rng):
    device.act(*rng.choice([("PressWps", "Home"), ("PressWps", "Café Zoë"), ("FailWps", "out of luck"),
                            ("EnterWpsPin", "Home", "12345670"), ("EnterWpsPin", "Home", "00000000")]))


def station(device, rng):
    address = f"02:00:00:00:aa:{rng.randrange(4):02x}"
    device.act(*rng.choice([("JoinStation", "uap0", address), ("LeaveStation", address)]))


# --- the daemon's bad luck ---------------------------------------------------------------------------

def crash(device, rng):
    device.act("Crash")


def kill(device, rng):
    device.kill_daemon()


def hang(device, rng):
    device.act("Hang", dbus.UInt32(rng.choice([100, 1000])))


def garble(device, rng):
    device.act("Garble", rng.choice(["wrong-types", "missing-keys", "oversized"]))
    device.act("Garble", "none")


CLIENTS = {start: 8, stop: 3, set_profile: 8, remove_network: 3, scan: 6, ask_radio: 3, start_wps: 3,
           share_soft_ap: 8, revoke_soft_ap: 5, switch: 3, write_setting: 2, read: 12, ask_nonsense: 4,
           leave_early: 1}
NETWORK = {cable: 5, move_about: 5, change_key: 1, access_point: 4, answer_wps: 4, station: 5}
BAD_LUCK = {crash: 0.6, kill: 0.6, hang: 0.5, garble: 0.3}
ALL = {**CLIENTS, **NETWORK, **BAD_LUCK}
