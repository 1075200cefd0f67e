// SPDX-License-Identifier: Apache-2.0
#include "world/real/powersave.h"

#include "log.h"

#include <linux/nl80211.h>
#include <memory>
#include <netlink/genl/ctrl.h>
#include <netlink/genl/genl.h>
#include <netlink/netlink.h>

void setPowerSave(int index, bool on)
{
    const std::unique_ptr<nl_sock, void (*)(nl_sock*)> socket(nl_socket_alloc(), nl_socket_free);
    const std::unique_ptr<nl_msg, void (*)(nl_msg*)> message(nlmsg_alloc(), nlmsg_free);
    int fault = genl_connect(socket.get());
    const int family = fault == 0 ? genl_ctrl_resolve(socket.get(), "nl80211") : fault;
    if (family < 0) {
        qCWarning(lcLumod, "Cannot ask for power save: %s", nl_geterror(family));
        return;
    }
    genlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, family, 0, 0, NL80211_CMD_SET_POWER_SAVE,
                0);
    nla_put_u32(message.get(), NL80211_ATTR_IFINDEX, static_cast<uint32_t>(index));
    nla_put_u32(message.get(), NL80211_ATTR_PS_STATE,
                on ? NL80211_PS_ENABLED : NL80211_PS_DISABLED);
    fault = nl_send_auto(socket.get(), message.get());
    if (fault >= 0)
        fault = nl_wait_for_ack(socket.get());
    if (fault < 0)
        qCInfo(lcLumod, "The radio does not choose about power save: %s", nl_geterror(fault));
}
