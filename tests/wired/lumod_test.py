"""The daemon on a real cable: the same stories as in the played world."""
import unittest

import network
from cable import CableStories
from wiredcase import WiredCase


class RealCable(WiredCase, CableStories):
    pass


if __name__ == "__main__":
    network.enclose()
    unittest.main()
