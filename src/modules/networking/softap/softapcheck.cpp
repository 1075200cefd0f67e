// SPDX-License-Identifier: Apache-2.0
#include "softap/softapcheck.h"

#include "network/networkrules.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "softap/softapsettings.h"

#include <QHostAddress>

namespace {

using Request = OrvaNetworkProfileSoftApRequest;
using Settings = OrvaNetworkProfileSoftApSettings;

/// The longest time-out that a request may ask for, in milliseconds.
constexpr qint32 longestSoftApTimeoutMs = 60000;

/// The longest name of a requester, in characters; as that of a module.
constexpr int longestSoftApRequester = 64;

/// The most requesters that one interface has.
constexpr int mostSoftApRequesters = 64;

/// A text of the settings, its check, and the error of a text that fails it.
struct Row
{
    QString field;
    bool (*fits)(const QString& text);
    const char* error;
};

/// An SSID that no access point can have would never bring a link up to answer the request.
bool isSsid(const QString& text)
{
    const int length = text.toUtf8().size();
    return length >= 1 && length <= 32;
}

/// An empty one would open an access point that was meant to be closed.
bool isPassphrase(const QString& text)
{
    return text.size() < 64 && // which may be the digits of a key
           orvaNetworkIsKeyValid(text, OrvaNetworkProfileWirelessEncryption::WpaPsk).isEmpty();
}

bool isAddress(const QString& text)
{
    return !orvaIPv4Address(text).isEmpty();
}

/// Ones, then zeros.
bool isNetmask(const QString& text)
{
    const quint32 hostBits = ~QHostAddress(orvaIPv4Address(text)).toIPv4Address();
    return isAddress(text) && (hostBits & (hostBits + 1)) == 0;
}

bool isShort(const QString& text)
{
    return text.toUtf8().size() <= 1024; // each, as the bus carries them
}

const QVector<Row>& rows()
{
    static const QVector<Row> all = {
        {Settings::Ssid(), isSsid, "SoftAp SSID needs to have 1 to 32 bytes"},
        {Settings::Passphrase(), isPassphrase,
         "SoftAp passphrase needs to have 8 to 63 printable ASCII characters"},
        {Settings::ApAddress(), isAddress, "SoftAp apAddress needs to be an IPv4 address"},
        {Settings::ApNetmask(), isNetmask, "SoftAp apNetmask needs to be an IPv4 netmask"},
        {Settings::DhcpRangeFrom(), isAddress, "SoftAp dhcpRangeFrom needs to be an IPv4 address"},
        {Settings::DhcpRangeTo(), isAddress, "SoftAp dhcpRangeTo needs to be an IPv4 address"},
        {Settings::Bssid(), isShort, "SoftAp bssid is too long"},
        {Settings::CountryCode(), isShort, "SoftAp countryCode is too long"},
        {Settings::DomainName(), isShort, "SoftAp domainName is too long"},
        {Settings::VendorSpecificData(), isShort, "SoftAp vendorSpecificData is too long"},
    };
    return all;
}

/// True for the number of a channel in the 2.4, 5 or 6 GHz band.
bool isChannel(int number)
{
    const auto inSteps = [number](int first, int last) {
        return number >= first && number <= last && (number - first) % 4 == 0;
    };
    return (number >= 1 && number <= 14) || inSteps(36, 64) || inSteps(100, 144) ||
           inSteps(1, 233); // the upper 5 GHz channels are among those of 6 GHz
}

} // namespace

CMError softApRequestError(const char* text)
{
    return networkingError("void Networking::on_requestSoftAp_req(const CMSetDataRequest&)", text);
}

OrvaResult<void> checkSoftApTimeout(const Request& request)
{
    if (request.timeout() > longestSoftApTimeoutMs) {
        LOG4CPLUS_WARN(networkingLogger(),
                       "Requested timeout too large (" << request.timeout() << ")");
        return softApRequestError("Timeout too large");
    }
    if (request.holdSoftAp() && request.timeout() < 1) {
        LOG4CPLUS_WARN(networkingLogger(), "Requested hold without timeout");
        return softApRequestError("Requested hold without timeout");
    }
    return {};
}

OrvaResult<void> checkSoftApRequester(const QString& name, const SoftApTable& table)
{
    if (name.size() > longestSoftApRequester)
        return softApRequestError("SoftAp requester name needs to have at most 64 characters");
    if (table.size() >= mostSoftApRequesters && !table.contains(name))
        return softApRequestError("SoftAp interface has 64 requesters already");
    return {};
}

OrvaResult<void> checkSoftApSettings(const Settings& settings)
{
    if (settings.__contains(Settings::Channel()) && !isChannel(settings.channel()))
        return softApRequestError("SoftAp channel needs to be one of the 2.4, 5 or 6 GHz band");
    const QVariantHash& fields = settings.__hash();
    for (const Row& row : rows()) {
        if (fields.contains(row.field) && !row.fits(fields.value(row.field).toString()))
            return softApRequestError(row.error);
    }
    return {};
}

Settings normalSoftApSettings(const Settings& settings)
{
    QVariantHash normal = mergeSoftApSettings(settings, {}).__hash();
    for (const QString& field : {Settings::ApAddress(), Settings::ApNetmask(),
                                 Settings::DhcpRangeFrom(), Settings::DhcpRangeTo()}) {
        const QString text = normal.take(field).toString();
        const QString address = orvaIPv4Address(text);
        if (!address.isEmpty())
            normal.insert(field, address);
        else if (!text.isEmpty())
            LOG4CPLUS_WARN(networkingLogger(),
                           "Not an IPv4 " << field << " of a soft AP, leaving it out: " << text);
    }
    return Settings(normal);
}
