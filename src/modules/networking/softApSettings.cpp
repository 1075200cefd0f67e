#include "softApSettings.h"

namespace {

using Settings = OrvaNetworkProfileSoftApSettings;

QStringList stickyFields()
{
    return {Settings::DhcpRangeFrom(), Settings::DhcpRangeTo(), Settings::CountryCode(),
            Settings::Channel(),       Settings::Ssid(),        Settings::Bssid(),
            Settings::ApAddress(),     Settings::ApNetmask(),   Settings::ApInterface(),
            Settings::DomainName()};
}

void copyFields(const QStringList& fields, const Settings& from, QVariantHash& to)
{
    for (const QString& field : fields) {
        if (from.__contains(field))
            to.insert(field, from.__hash().value(field));
    }
}

} // namespace

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

SoftApFold foldSoftApRequests(const Settings& running, const Settings& configured,
                              const QVector<OrvaNetworkProfileSoftApRequest>& requests)
{
    SoftApFold fold;
    fold.settings = mergeSoftApSettings(stickySoftApSettings(running), configured);
    for (const OrvaNetworkProfileSoftApRequest& request : requests) {
        fold.settings = mergeSoftApSettings(request.settings(), fold.settings);
        fold.hold = fold.hold || request.holdSoftAp();
    }
    return fold;
}
