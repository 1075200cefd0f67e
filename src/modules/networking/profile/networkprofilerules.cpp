// SPDX-License-Identifier: Apache-2.0
#include "profile/networkprofilerules.h"

#include "core/orvamask.h"
#include "network/networkrules.h"
#include "networkinglog.h"

#include <QHash>

#include <algorithm>

namespace {

OrvaResult<void> verifyNetwork(const OrvaNetworkInterface& network)
{
    const QString why = orvaNetworkIsKeyValid(network.key(), network.encryption());
    if (why.isEmpty())
        return {};
    LOG4CPLUS_ERROR(networkingLogger(), "Invalid key/encryption: " << why);
    return CMError::failed(why);
}

/// Every container is searched and every type counts as a key, since a setting may hold fields that
/// no record describes. `secret` says that the value stands, at whatever depth, under a secret's
/// name.
QVariant masked(const QVariant& value, bool secret)
{
    if (value.userType() == QMetaType::QVariantHash) {
        QVariantHash hash = value.toHash();
        for (auto field = hash.begin(); field != hash.end(); ++field)
            *field = masked(*field, secret || orvaIsSecretKey(field.key()));
        return hash;
    }
    if (value.userType() == QMetaType::QVariantList) {
        QVariantList list = value.toList();
        for (QVariant& item : list)
            item = masked(item, secret);
        return list;
    }
    const bool isEmptyText = value.userType() == QMetaType::QString && value.toString().isEmpty();
    return secret && !isEmptyText ? orvaMask() : value;
}

bool holdsMask(const QVariant& value)
{
    return value.userType() == QMetaType::QString && value.toString() == orvaMask();
}

/// `record` with its masked secrets taken from `stored`, those that no record describes included.
template <typename Record>
Record withSecretsOf(const Record& record, const Record& stored)
{
    QVariantHash hash = record.__hash();
    for (auto field = hash.begin(); field != hash.end(); ++field) {
        if (orvaIsSecretKey(field.key()) && holdsMask(*field) && stored.__contains(field.key()))
            *field = stored.__hash().value(field.key());
    }
    return Record(hash);
}

/// The settings of the soft AP on the same interface.
OrvaNetworkProfileSoftApSettings storedSoftAp(const OrvaNetworkProfile& profile,
                                              const QString& interface)
{
    for (const OrvaNetworkProfileSoftApSettings& settings : profile.softApSettings()) {
        if (settings.apInterface() == interface)
            return settings;
    }
    return {};
}

/// Networks by their SSID; of two with one SSID the first of the list.
using KnownNetworks = QHash<QString, OrvaNetworkInterface>;

KnownNetworks storedNetworks(const OrvaNetworkProfile& profile)
{
    const auto networks = profile.wirelessNetworks();
    KnownNetworks known = {{profile.wireless().ssid(), profile.wireless()}};
    for (auto network = networks.crbegin(); network != networks.crend(); ++network)
        known.insert(network->ssid(), *network);
    return known;
}

OrvaNetworkInterface restored(const OrvaNetworkInterface& network, const KnownNetworks& stored)
{
    return withSecretsOf(network, stored.value(network.ssid()));
}

/// The network set goes to the front; without one the most preferred is used.
void preferSetNetwork(OrvaNetworkProfile& profile)
{
    auto networks = profile.wirelessNetworks();
    const OrvaNetworkInterface set = profile.wireless();
    if (set.ssid().isEmpty()) {
        if (!networks.isEmpty())
            profile.setWireless(networks.first());
        return;
    }
    const auto listed =
        std::find_if(networks.begin(), networks.end(), [&](const OrvaNetworkInterface& network) {
            return network.ssid() == set.ssid();
        });
    if (listed != networks.end())
        networks.erase(listed);
    networks.prepend(set);
    profile.setWirelessNetworks(networks);
}

void limitNetworks(OrvaNetworkProfile& profile, qint32 maximum)
{
    const auto networks = profile.wirelessNetworks();
    if (networks.size() < 2 || maximum < 1 || maximum >= networks.size())
        return;
    LOG4CPLUS_INFO(networkingLogger(), "Have too many configured wifi networks, only keeping first "
                                           << maximum << " network(s)");
    profile.setWirelessNetworks(networks.mid(0, maximum));
}

/// The content of `wireless` where no network is configured.
OrvaNetworkInterface noNetwork()
{
    OrvaNetworkInterface wireless;
    wireless.setDhcp(true);
    return wireless;
}

} // namespace

OrvaResult<void> verifyProfile(const OrvaNetworkProfile& profile)
{
    if (profile.wireless().ssid().isEmpty())
        return {};
    auto verified = verifyNetwork(profile.wireless());
    const auto networks = profile.wirelessNetworks();
    for (auto network = networks.begin(); verified && network != networks.end(); ++network)
        verified = verifyNetwork(*network);
    return verified;
}

OrvaNetworkProfile hidePassword(const OrvaNetworkProfile& profile)
{
    return OrvaNetworkProfile(masked(profile.__variant(), false).toHash());
}

OrvaNetworkProfile restorePassword(const OrvaNetworkProfile& profile,
                                   const OrvaNetworkProfile& stored)
{
    OrvaNetworkProfile result = profile;
    if (profile.__contains(OrvaNetworkProfile::Wired()))
        result.setWired(withSecretsOf(profile.wired(), stored.wired()));
    const KnownNetworks known = storedNetworks(stored);
    if (profile.__contains(OrvaNetworkProfile::Wireless()))
        result.setWireless(restored(profile.wireless(), known));
    if (profile.__contains(OrvaNetworkProfile::WirelessNetworks())) {
        auto networks = profile.wirelessNetworks();
        for (OrvaNetworkInterface& network : networks)
            network = restored(network, known);
        result.setWirelessNetworks(networks);
    }
    if (profile.__contains(OrvaNetworkProfile::SoftApSettings())) {
        auto softAps = profile.softApSettings();
        for (OrvaNetworkProfileSoftApSettings& settings : softAps)
            settings = withSecretsOf(settings, storedSoftAp(stored, settings.apInterface()));
        result.setSoftApSettings(softAps);
    }
    return result;
}

OrvaNetworkProfile computeNewNetworkProfile(const OrvaNetworkProfile& newProfile,
                                            const OrvaNetworkProfile& oldProfile, qint32 maximum)
{
    checkNetworkProfileInvariants(oldProfile);
    OrvaNetworkProfile result = newProfile;
    if (result.__contains(OrvaNetworkProfile::Wireless())) {
        const QString& list = OrvaNetworkProfile::WirelessNetworks();
        if (!result.__contains(list) && oldProfile.__contains(list))
            result.setWirelessNetworks(oldProfile.wirelessNetworks());
        preferSetNetwork(result);
    }
    limitNetworks(result, maximum);
    checkNetworkProfileInvariants(result);
    return result;
}

void checkNetworkProfileInvariants(const OrvaNetworkProfile& profile)
{
    const auto networks = profile.wirelessNetworks();
    if (!networks.isEmpty() && profile.wireless() != networks.first())
        LOG4CPLUS_WARN(networkingLogger(),
                       "Profile invariant (wireless == wirelessNetworks[0]) is false: " << profile);
}

OrvaNetworkProfile withNetworkList(const OrvaNetworkProfile& profile)
{
    OrvaNetworkProfile result = profile;
    if (!profile.wireless().ssid().isEmpty() && profile.wirelessNetworks().isEmpty())
        result.setWirelessNetworks({profile.wireless()});
    return result;
}

OrvaNetworkProfile withoutNetwork(const OrvaNetworkProfile& profile, const QString& ssid)
{
    OrvaNetworkProfile result = profile;
    auto networks = profile.wirelessNetworks();
    const auto isRemoved = [&](const OrvaNetworkInterface& network) {
        return network.ssid() == ssid;
    };
    networks.erase(std::remove_if(networks.begin(), networks.end(), isRemoved), networks.end());
    result.setWirelessNetworks(networks);
    if (profile.wireless().ssid() == ssid)
        result.setWireless(networks.isEmpty() ? noNetwork() : networks.first());
    return result;
}

OrvaNetworkProfile withoutNetworks(const OrvaNetworkProfile& profile)
{
    OrvaNetworkProfile result = profile;
    result.setWireless(noNetwork());
    result.setWirelessNetworks({});
    return result;
}

OrvaNetworkProfile withNetworksOf(const OrvaNetworkProfile& profile,
                                  const OrvaNetworkProfile& backup)
{
    OrvaNetworkProfile result = withNetworkList(profile);
    auto networks = result.wirelessNetworks();
    const auto saved = withNetworkList(backup).wirelessNetworks();
    for (const OrvaNetworkInterface& network : saved) {
        const auto isSame = [&](const OrvaNetworkInterface& own) {
            return own.ssid() == network.ssid();
        };
        if (std::none_of(networks.cbegin(), networks.cend(), isSame))
            networks.append(network);
    }
    result.setWirelessNetworks(networks);
    if (!networks.isEmpty())
        result.setWireless(networks.first());
    return result;
}

bool hasNetwork(const OrvaNetworkProfile& profile)
{
    return !profile.wireless().ssid().isEmpty() || !profile.wirelessNetworks().isEmpty();
}

bool isWirelessConfigured(const OrvaNetworkProfile& profile)
{
    return profile.type() != OrvaNetworkProfileType::Wired && !profile.wireless().ssid().isEmpty();
}

bool isWiredConfigured(const OrvaNetworkProfile& profile)
{
    return profile.type() != OrvaNetworkProfileType::Wireless;
}
