// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/supplicantreason.h"

#include <QHash>

#include <array>

namespace {

/// The event without its priority, "<3>".
QByteArray eventOf(const QByteArray& datagram)
{
    const int end = datagram.startsWith('<') ? datagram.indexOf('>') : -1;
    return datagram.mid(end + 1);
}

/// "name=value" words.
QHash<QByteArray, QByteArray> fieldsOf(const QList<QByteArray>& words)
{
    QHash<QByteArray, QByteArray> fields;
    for (const auto& word : words)
        if (const int equals = word.indexOf('='); equals > 0)
            fields.insert(word.left(equals), word.mid(equals + 1));
    return fields;
}

int numberOf(const QByteArray& text)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    return ok && number >= 0 && !text.startsWith('+') ? number : -1;
}

QByteArray hardwareAddressOf(const QByteArray& text)
{
    constexpr int bytes = 6;
    const auto address = QByteArray::fromHex(text);
    return address.size() == bytes && address.toHex(':') == text.toLower() ? address : QByteArray();
}

/// "BSSID auth_type=3 auth_transaction=2 status_code=1": in the second step of SAE the access point
/// has found that the two do not share a password. Other refusals say nothing about the key.
std::optional<SupplicantReason> authenticationRejected(const QByteArray& text)
{
    const auto words = text.split(' ');
    const auto fields = fieldsOf(words);
    const auto status = fields.value("status_code");
    const auto bssid = hardwareAddressOf(words.first());
    if (fields.value("auth_type") != "3" || fields.value("auth_transaction") != "2" ||
        (status != "1" && status != "15") || bssid.isEmpty())
        return std::nullopt;
    return SupplicantReason{SupplicantReason::Kind::KeyRejected, -1, bssid, 0};
}

/// "id=0 ssid="NAME" auth_failures=1 duration=10 reason=WRONG_KEY"
std::optional<SupplicantReason> networkPaused(const QByteArray& text)
{
    const auto first = text.left(text.indexOf(' '));
    const int network = first.startsWith("id=") ? numberOf(first.mid(3)) : -1;
    const auto reason = text.mid(text.lastIndexOf(' ') + 1);
    if (network < 0 || !reason.startsWith("reason="))
        return std::nullopt;
    return SupplicantReason{reason == "reason=WRONG_KEY" ? SupplicantReason::Kind::WrongKey
                                                         : SupplicantReason::Kind::Paused,
                            network,
                            {},
                            0};
}

/// "ret=-16 retry=1": that one is tried again without our doing.
std::optional<SupplicantReason> scanFailed(const QByteArray& text)
{
    const auto fields = fieldsOf(text.split(' '));
    const auto result = fields.value("ret");
    const int error = result.startsWith('-') ? numberOf(result.mid(1)) : -1;
    if (error <= 0 || fields.contains("retry"))
        return std::nullopt;
    return SupplicantReason{SupplicantReason::Kind::ScanFailed, -1, {}, error};
}

std::optional<SupplicantReason> joined(const QByteArray&)
{
    return SupplicantReason();
}

std::optional<SupplicantReason> driverRefused(const QByteArray&)
{
    return SupplicantReason{SupplicantReason::Kind::DriverRefused, -1, {}, 0};
}

struct Event
{
    const char* name;
    std::optional<SupplicantReason> (*parse)(const QByteArray& text);
};

constexpr std::array events = {
    Event{"CTRL-EVENT-AUTH-REJECT ", authenticationRejected},
    Event{"CTRL-EVENT-SSID-TEMP-DISABLED ", networkPaused},
    Event{"CTRL-EVENT-SCAN-FAILED ", scanFailed},
    Event{"SME: Authentication request to the driver failed", driverRefused},
    Event{"Association request to the driver failed", driverRefused},
    Event{"CTRL-EVENT-CONNECTED ", joined}};

} // namespace

std::optional<SupplicantReason> parseSupplicantReason(const QByteArray& datagram)
{
    const auto text = eventOf(datagram);
    for (const auto& event : events)
        if (text.startsWith(event.name))
            return event.parse(text.mid(static_cast<int>(qstrlen(event.name))));
    return std::nullopt;
}
