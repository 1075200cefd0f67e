#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What the host costs as a process: the way to its name on the bus, its memory and its rest.

    process.py BUILD [SECONDS]

Runs BUILD/bin/orva-host with BUILD's module and the fake backend on a bus of its own; SECONDS (default
60) is how long it is left alone. Prints one JSON document a line."""
import json
import os
import pathlib
import subprocess
import sys
import time

os.environ["ORVA_BUILD"] = os.path.abspath(sys.argv[1])
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tests/support"))

from privatebus import BUILD, PrivateBus

STARTS = 20
CALL = ["busctl", "call", "org.orva.Host1", "/org/orva/Host1", "org.orva.Host1", "GetValue", "s"]


def report(what, **figures):
    print(json.dumps({"what": what, **figures}))


class Device(PrivateBus):
    """A bus, and what a host on it needs."""

    def __init__(self):
        super().__init__(DEVICE_BACKEND="fake")
        self.start_bus()

    def measured_host(self):
        return subprocess.Popen([BUILD / "bin/orva-host", "--config", self.directory / "host.json", "--state-dir",
                                 self.directory / "state"], env=self.environment, stderr=subprocess.DEVNULL)

    def get(self, path):
        return self.run(*CALL, path).stdout


def end(process):
    process.terminate()
    process.wait()


def read_rollup(pid):
    wanted = {"Rss": 0, "Private_Dirty": 0}
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        key = line.split(":")[0]
        if key in wanted:
            wanted[key] = int(line.split()[1])
    return wanted


def switches(pid):
    """How often any thread of the process went to sleep: it woke before."""
    total = 0
    for status in pathlib.Path(f"/proc/{pid}/task").glob("*/status"):
        total += sum(int(line.split()[1]) for line in status.read_text().splitlines()
                     if line.startswith(("voluntary_ctxt", "nonvoluntary_ctxt")))
    return total


def cpu_ticks(pid):
    return sum(map(int, pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[11:13]))


def measure_starts(device):
    named, pictured = [], []
    for _ in range(STARTS):
        watch = subprocess.Popen(
            ["dbus-monitor", "--address", device.address,
             "type='signal',member='NameOwnerChanged',arg0='org.orva.Host1'",
             "type='signal',member='ValueChanged',arg0='network/state/connected'"],
            stdout=subprocess.PIPE, text=True)
        for line in watch.stdout:
            if "NameLost" in line:
                break  # what the bus tells a monitor when it has become one
        began = time.monotonic()
        host = device.measured_host()
        for line in watch.stdout:
            if 'string "org.orva.Host1"' in line:
                named.append((time.monotonic() - began) * 1000)
            if "boolean true" in line:
                pictured.append((time.monotonic() - began) * 1000)
                break
        end(watch)
        end(host)
    for what, times in (("exec to name owned", named), ("exec to first true picture", pictured)):
        times.sort()
        report(what, p50_ms=round(times[len(times) // 2], 1), max_ms=round(times[-1], 1))


def measure_rest(device, seconds):
    host = device.measured_host()
    until = time.monotonic() + 20
    while "true" not in device.get("network/state/connected") and time.monotonic() < until:
        time.sleep(0.1)
    time.sleep(11)  # the Wi-Fi resource is given back after five seconds, unused memory three later
    before = switches(host.pid), cpu_ticks(host.pid)
    time.sleep(seconds)
    after = switches(host.pid), cpu_ticks(host.pid)
    report("idle", seconds=seconds, wakeups=after[0] - before[0], cpu_ticks=after[1] - before[1],
           **{f"{key.lower()}_kib": value for key, value in read_rollup(host.pid).items()})
    end(host)


def main():
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 60
    device = Device()
    try:
        measure_starts(device)
        measure_rest(device, seconds)
    finally:
        device.close()


if __name__ == "__main__":
    main()
