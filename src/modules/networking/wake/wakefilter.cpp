// SPDX-License-Identifier: Apache-2.0
#include "wake/wakefilter.h"

#include "wake/magicpacket.h"

#include <array>

#include <linux/filter.h>
#include <sys/socket.h>

bool attachWakeFilter(int socket)
{
    constexpr quint32 wholePacket = 0xFFFFFFFF;
    // A load beyond the end of the packet drops it, as the check does.
    std::array<sock_filter, 10> program{{
        BPF_STMT(BPF_LD | BPF_B | BPF_ABS, 0), // version and header length
        BPF_STMT(BPF_ALU | BPF_AND | BPF_K, 0xF0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0x40, 0, 6),
        BPF_STMT(BPF_LD | BPF_B | BPF_ABS, 9), // protocol
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, wakeProtocol, 0, 4),
        BPF_STMT(BPF_LDX | BPF_B | BPF_MSH, 0), // x = length of the IPv4 header
        BPF_STMT(BPF_LD | BPF_H | BPF_IND, 2),  // destination port
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, wakePort, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, wholePacket),
        BPF_STMT(BPF_RET | BPF_K, 0),
    }};
    const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    return setsockopt(socket, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter) == 0;
}
