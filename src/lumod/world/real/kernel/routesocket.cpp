// SPDX-License-Identifier: Apache-2.0
#include "world/real/kernel/routesocket.h"

#include <linux/rtnetlink.h>
#include <netlink/msg.h>
#include <netlink/netlink.h>
#include <netlink/route/rtnl.h>
#include <sys/socket.h>
#include <sys/time.h>

using Take = std::function<void(nl_object*)>;
using Callbacks = std::unique_ptr<nl_cb, void (*)(nl_cb*)>;

namespace {

void hand(nl_object* object, void* to)
{
    (*static_cast<const Take*>(to))(object);
}

} // namespace

void RouteSocketFree::operator()(nl_sock* socket) const
{
    nl_socket_free(socket);
}

RouteSocket openRouteSocket()
{
    RouteSocket socket(nl_socket_alloc());
    nl_connect(socket.get(), NETLINK_ROUTE);
    const timeval limit{1, 0}; // the kernel answers at once, but nothing may hold us up for ever
    setsockopt(nl_socket_get_fd(socket.get()), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    return socket;
}

int readList(const RouteSocket& socket, int type, const Take& take)
{
    const auto parse = [](nl_msg* message, void* to) {
        nl_msg_parse(message, hand, to);
        return static_cast<int>(NL_OK);
    };
    const Callbacks callbacks(nl_cb_alloc(NL_CB_DEFAULT), nl_cb_put);
    nl_cb_set(callbacks.get(), NL_CB_VALID, NL_CB_CUSTOM, parse, const_cast<Take*>(&take));
    const int fault = nl_rtgen_request(socket.get(), type, AF_UNSPEC, NLM_F_DUMP);
    return fault < 0 ? fault : nl_recvmsgs(socket.get(), callbacks.get());
}
