// SPDX-License-Identifier: Apache-2.0
#include "wps/wpscredentials.h"

OrvaNetworkProfile withWpsCredentials(OrvaNetworkProfile profile,
                                      const OrvaNetworkInterface& credentials)
{
    OrvaNetworkInterface wireless;
    wireless.setDhcp(true);
    wireless.setSsid(credentials.ssid());
    wireless.setKey(credentials.key());
    wireless.setEncryption(credentials.encryption());
    profile.setType(OrvaNetworkProfileType::Auto);
    profile.setWireless(wireless);
    profile.setSoftApSettings({});
    return profile;
}
