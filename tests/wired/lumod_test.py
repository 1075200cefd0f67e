# SPDX-License-Identifier: Apache-2.0
"""The daemon on a real cable: the same stories as in the played world."""
import unittest

import network
from cable import CableStories
from wiredcase import WiredCase


class RealCable(WiredCase, CableStories):
    def begin(self, silent=False):  # a machine under load is not to be taken for a silent server
        super().begin(serve=not silent, dhcpDeadline=5 if silent else 60)

    # An interface that has just been set up looks for a moment as if its cable were in, and dhcpcd believes it.
    def mode(self, mode):
        super().mode(mode)
        if not self.net.plugged:
            self.p.until(lambda: any(text in self.p.logged() for text in ("waiting for carrier", "carrier lost")))


if __name__ == "__main__":
    network.enclose()
    unittest.main()
