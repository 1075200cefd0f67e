# SPDX-License-Identifier: Apache-2.0
"""What a device uses, and what its log says."""
import os
import pathlib
import re
import time

# An error in the log, and the actions one of which must have come in the half minute before.
PROVOKED = [
    ("start_req called while already started", {"start"}),
    ("Request to lumod failed", {"crash", "kill", "hang"}),
    ("Received low-level network error", {"set_profile", "remove_network", "start", "crash", "kill"}),
    ("Scan failed", {"scan"}),
    ("Scan request timed out", {"scan"}),
    ("WifiRestarter: Couldn't restart wlan0: No such device", {"ask_radio", "write_setting"}),
    ("Invalid key/encryption", {"set_profile", "start_wps"}),
    ("Unable to apply profile", {"set_profile", "remove_network", "start"}),
    ("WPS is already running", {"start_wps"}),
    ("WPS Error", {"start_wps", "answer_wps", "crash", "kill"}),
    ("Unmatched WPS notify", {"start_wps"}),
]


def uses(host):
    """What the host's process has: memory in KiB, descriptors, processes below it."""
    memory = dict(re.findall(r"^(Rss|Private_Dirty): +(\d+)",
                             pathlib.Path(f"/proc/{host}/smaps_rollup").read_text(encoding="ascii"), re.M))
    children = pathlib.Path(f"/proc/{host}/task/{host}/children").read_text(encoding="ascii").split()
    return {"resident KiB": int(memory["Rss"]), "private KiB": int(memory["Private_Dirty"]),
            "descriptors": len(os.listdir(f"/proc/{host}/fd")), "processes": len(children),
            "threads": len(os.listdir(f"/proc/{host}/task"))}


def unprovoked(log, deeds):
    """The lines of the log that tell of trouble which none of the deeds, as (time, name), explains."""
    for line in log.read_text(encoding="utf-8", errors="replace").splitlines():
        if re.search(r"runtime error:|ERROR: .*Sanitizer|^==\d+== |terminate called|ASSERT|Rejected send", line):
            yield line
        found = re.match(r"(\S+ \S+)\.\d+ (?:ERROR|FATAL) +(.*)", line)
        if not found:
            continue
        at = time.mktime(time.strptime(found[1], "%Y-%m-%d %H:%M:%S"))
        causes = next((causes for text, causes in PROVOKED if text in found[2]), set())
        if not any(name in causes and at - 30 <= when <= at + 2 for when, name in deeds):
            yield line
