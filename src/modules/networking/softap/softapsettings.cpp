// SPDX-License-Identifier: Apache-2.0
#include "softap/softapsettings.h"

#include "core/orvamask.h"

namespace {

using Settings = OrvaNetworkProfileSoftApSettings;

QStringList stickyFields()
{
    return {Settings::DhcpRangeFrom(), Settings::DhcpRangeTo(), Settings::CountryCode(),
            Settings::Channel(),       Settings::Ssid(),        Settings::Bssid(),
            Settings::ApAddress(),     Settings::ApNetmask(),   Settings::ApInterface(),
            Settings::DomainName(),    Settings::Passphrase()};
}

void copyFields(const QStringList& fields, const Settings& from, QVariantHash& to)
{
    for (const QString& field : fields) {
        if (from.__contains(field))
            to.insert(field, from.__hash().value(field));
    }
}

/// As much of the text's beginning as fits into `bytes` of UTF-8.
QString leftBytes(const QString& text, int bytes)
{
    const QByteArray whole = text.toUtf8();
    int end = qBound(0, bytes, whole.size());
    const auto isInside = [&] { return end < whole.size() && (whole.at(end) & 0xc0) == 0x80; };
    while (end > 0 && isInside())
        --end;
    return QString::fromUtf8(whole.left(end));
}

} // namespace

QString ownSoftApSsid(const QString& configured, const QString& mac)
{
    constexpr int longest = 32; // bytes
    const QString suffix = QLatin1Char('_') + QString(mac).remove(QLatin1Char(':'));
    return leftBytes(leftBytes(configured, longest - suffix.toUtf8().size()) + suffix, longest);
}

Settings mergeSoftApSettings(const Settings& first, const Settings& second)
{
    const QStringList fields = stickyFields() << Settings::VendorSpecificData();
    QVariantHash merged;
    copyFields(fields, second, merged);
    copyFields(fields, first, merged);
    return Settings(merged);
}

Settings stickySoftApSettings(const Settings& settings)
{
    QVariantHash sticky;
    copyFields(stickyFields(), settings, sticky);
    return Settings(sticky);
}

Settings maskedSoftApSettings(const Settings& settings)
{
    Settings masked = settings;
    if (!settings.passphrase().isEmpty())
        masked.setPassphrase(orvaMask());
    return masked;
}

SoftApFold foldSoftApRequests(const Settings& running, const Settings& configured,
                              const SoftApTable& table)
{
    SoftApFold fold;
    fold.settings = mergeSoftApSettings(stickySoftApSettings(running), configured);
    for (const LiveSoftApRequest& live : table.requests()) {
        fold.settings = mergeSoftApSettings(live.request.settings(), fold.settings);
        fold.hold = fold.hold || live.request.holdSoftAp();
    }
    return fold;
}
