// SPDX-License-Identifier: Apache-2.0
#include "world/real/kernel/nl80211.h"

#include <memory>
#include <netlink/genl/ctrl.h>
#include <netlink/genl/genl.h>
#include <netlink/netlink.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace {

int send(nl_sock* socket, std::uint8_t command, const std::function<void(nl_msg*)>& fill)
{
    const std::unique_ptr<nl_msg, void (*)(nl_msg*)> message(nlmsg_alloc(), nlmsg_free);
    int fault = genl_connect(socket);
    if (fault != 0)
        return fault;
    const timeval limit{1, 0}; // nothing may hold us up for ever
    setsockopt(nl_socket_get_fd(socket), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    const int family = genl_ctrl_resolve(socket, "nl80211");
    if (family < 0)
        return family;
    genlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, family, 0, 0, command, 0);
    fill(message.get());
    fault = nl_send_auto(socket, message.get());
    return fault < 0 ? fault : nl_wait_for_ack(socket);
}

} // namespace

Result<> callNl80211(std::uint8_t command, const std::function<void(nl_msg*)>& fill)
{
    const std::unique_ptr<nl_sock, void (*)(nl_sock*)> socket(nl_socket_alloc(), nl_socket_free);
    const int fault = send(socket.get(), command, fill);
    if (fault < 0)
        return Failure{QString::fromUtf8(nl_geterror(fault))};
    return {};
}
