// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Makes the kernel deliver to `socket` only the packets that `isWakeDatagram()` accepts.
///
/// `socket` must deliver packets from their IPv4 header on. A packet socket for IPv4 sees all that
/// the device receives, on a streaming device the whole audio stream; packets that the filter drops
/// never wake the process. Returns false, with `errno` set, when the kernel refuses; the socket
/// then stays unfiltered.
[[nodiscard]] bool attachWakeFilter(int socket);
