// SPDX-License-Identifier: Apache-2.0
// The check of a packet for wake-on-LAN reads nothing beyond the packet and accepts none without a
// port.
#include "wake/magicpacket.h"

extern "C" int LLVMFuzzerTestOneInput(const uchar* data, std::size_t size)
{
    constexpr std::size_t shortest = 10; // with no header length: up to the protocol
    if (isWakeDatagram(data, size) && size < shortest)
        __builtin_trap();
    return 0;
}
