// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/powersave.h"

#include "log.h"
#include "world/real/kernel/nl80211.h"

#include <linux/nl80211.h>
#include <netlink/attr.h>

void setPowerSave(int index, bool on)
{
    const auto set = callNl80211(NL80211_CMD_SET_POWER_SAVE, [index, on](nl_msg* message) {
        nla_put_u32(message, NL80211_ATTR_IFINDEX, static_cast<uint32_t>(index));
        nla_put_u32(message, NL80211_ATTR_PS_STATE, on ? NL80211_PS_ENABLED : NL80211_PS_DISABLED);
    });
    if (!set)
        qCInfo(lcLumod).noquote() << "The radio does not choose about power save:" << set.why();
}
