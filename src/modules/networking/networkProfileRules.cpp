#include "networkProfileRules.h"

#include "network/networkrules.h"
#include "networking_log.h"

namespace {

const QString& maskedKey()
{
    static const QString text = QStringLiteral("****");
    return text;
}

QString verifyNetwork(const OrvaNetworkInterface& network)
{
    const QString why = orvaNetworkIsKeyValid(network.key(), network.encryption());
    if (!why.isEmpty())
        LOG4CPLUS_ERROR(networkingLogger(), "Invalid key/encryption: " << why);
    return why;
}

QVariant masked(const QVariant& value);

/// Every container is looked into and every type counts as a key, since a setting may hold what no
/// record describes.
QVariant maskedField(const QString& name, const QVariant& value)
{
    const bool isContainer =
        value.userType() == QMetaType::QVariantHash || value.userType() == QMetaType::QVariantList;
    if (isContainer)
        return masked(value);
    return orvaIsSecretKey(name) && !value.toString().isEmpty() ? maskedKey() : value;
}

QVariant masked(const QVariant& value)
{
    if (value.userType() == QMetaType::QVariantHash) {
        QVariantHash hash = value.toHash();
        for (auto field = hash.begin(); field != hash.end(); ++field)
            *field = maskedField(field.key(), *field);
        return hash;
    }
    if (value.userType() == QMetaType::QVariantList) {
        QVariantList list = value.toList();
        std::transform(list.begin(), list.end(), list.begin(), masked);
        return list;
    }
    return value;
}

OrvaNetworkInterface restored(OrvaNetworkInterface network,
                              const OrvaList<OrvaNetworkInterface>& stored)
{
    if (network.key() != maskedKey())
        return network;
    const auto known =
        std::find_if(stored.begin(), stored.end(), [&](const OrvaNetworkInterface& candidate) {
            return candidate.ssid() == network.ssid();
        });
    if (known != stored.end())
        network.setKey(known->key());
    return network;
}

OrvaList<OrvaNetworkInterface> storedNetworks(const OrvaNetworkProfile& profile)
{
    const auto networks = profile.wirelessNetworks();
    return networks.isEmpty() ? OrvaList<OrvaNetworkInterface>{profile.wireless()} : networks;
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

/// What `wireless` holds where no network is configured.
OrvaNetworkInterface noNetwork()
{
    OrvaNetworkInterface wireless;
    wireless.setDhcp(true);
    return wireless;
}

} // namespace

QString verifyProfile(const OrvaNetworkProfile& profile)
{
    if (profile.wireless().ssid().isEmpty())
        return QString();
    const QString why = verifyNetwork(profile.wireless());
    if (!why.isEmpty())
        return why;
    const auto networks = profile.wirelessNetworks();
    for (const OrvaNetworkInterface& network : networks) {
        const QString whyListed = verifyNetwork(network);
        if (!whyListed.isEmpty())
            return whyListed;
    }
    return QString();
}

OrvaNetworkProfile hidePassword(const OrvaNetworkProfile& profile)
{
    return OrvaNetworkProfile(masked(profile.__variant()).toHash());
}

OrvaNetworkProfile restorePassword(const OrvaNetworkProfile& profile,
                                   const OrvaNetworkProfile& stored)
{
    OrvaNetworkProfile result = profile;
    if (profile.wired().key() == maskedKey()) {
        OrvaNetworkInterface wired = profile.wired();
        wired.setKey(stored.wired().key());
        result.setWired(wired);
    }
    const auto known = storedNetworks(stored);
    if (profile.__contains(OrvaNetworkProfile::Wireless()))
        result.setWireless(restored(profile.wireless(), known));
    if (profile.__contains(OrvaNetworkProfile::WirelessNetworks())) {
        auto networks = profile.wirelessNetworks();
        for (OrvaNetworkInterface& network : networks)
            network = restored(network, known);
        result.setWirelessNetworks(networks);
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
