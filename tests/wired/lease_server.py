# SPDX-License-Identifier: Apache-2.0
"""A DHCP server of few words: offers 192.0.2.50 for some seconds, and falls silent when told (SIGUSR1)."""
import signal, socket, struct, sys

seconds, silent = int(sys.argv[1]), []
signal.signal(signal.SIGUSR1, lambda *_: silent.append(True))
server = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
server.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
server.setsockopt(socket.SOL_SOCKET, socket.SO_BINDTODEVICE, b"r0")
server.bind(("", 67))
here, address, mask = (socket.inet_aton(text) for text in ("192.0.2.1", "192.0.2.50", "255.255.255.0"))
while True:
    asked = server.recv(2000)
    kind = asked[asked.index(b"\x35\x01") + 2]  # 1 discover, 3 request
    if silent or kind not in (1, 3):
        continue
    options = b"\x35\x01" + (b"\x02" if kind == 1 else b"\x05") + b"\x36\x04" + here + b"\x33\x04" + \
        struct.pack("!I", seconds) + b"\x01\x04" + mask + b"\x03\x04" + here + b"\x06\x04" + here + b"\xff"
    server.sendto(b"\x02" + asked[1:16] + address + here + asked[24:236] + asked[236:240] + options, ("255.255.255.255", 68))
