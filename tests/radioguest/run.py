# SPDX-License-Identifier: Apache-2.0
"""All that is tried on simulated radios, in one guest: run by ./test --radio."""
import radiocase
from device_test import Device
from softap_test import SoftAp, WithoutSoftApEngine
from station_test import Station, WithoutEngine
from uplinks_test import Uplinks
from wps_test import HastyWps, Wps

if __name__ == "__main__":
    radiocase.main()
