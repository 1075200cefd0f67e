// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>

struct nl_object;
struct nl_sock;

struct RouteSocketFree
{
    void operator()(nl_sock* socket) const;
};
using RouteSocket = std::unique_ptr<nl_sock, RouteSocketFree>;

/// A socket for questions to the kernel's route netlink. They fail after a second, and at once
/// where there is no socket to be had.
[[nodiscard]] RouteSocket openRouteSocket();

/// Hands each object of one of the kernel's lists over, RTM_GETADDR say; 0, or libnl's fault.
/// -NLE_DUMP_INTR: the list has changed meanwhile, so one may be missing or there twice.
[[nodiscard]] int readList(const RouteSocket& socket, int type,
                           const std::function<void(nl_object*)>& take);
