// SPDX-License-Identifier: Apache-2.0
#include "world/real/softap/accesspointevent.h"

#include "world/real/radio/supplicantdecoding.h"

#include <algorithm>
#include <array>

namespace {

using Kind = AccessPointEvent::Kind;

struct Row
{
    const char* name; ///< the whole first word
    Kind kind;
};

constexpr std::array rows = {
    Row{"AP-ENABLED", Kind::Enabled},          Row{"AP-DISABLED", Kind::Disabled},
    Row{"INTERFACE-DISABLED", Kind::Disabled}, Row{"AP-STA-CONNECTED", Kind::Joined},
    Row{"AP-STA-DISCONNECTED", Kind::Left},    Row{"AP-CSA-FINISHED", Kind::Moved}};

QString stationOf(const QByteArray& word)
{
    constexpr int bytes = 6;
    const auto address = QByteArray::fromHex(word);
    const auto text = address.toHex(':');
    return address.size() == bytes && text == word.toLower() ? QString::fromLatin1(text)
                                                             : QString();
}

/// The value of a line or word "NAME=VALUE"; empty where there is none.
QByteArray valueOf(const QList<QByteArray>& parts, const QByteArray& name)
{
    for (const auto& part : parts) {
        if (part.startsWith(name + '='))
            return part.mid(name.size() + 1);
    }
    return {};
}

std::optional<AccessPointEvent> moveOf(const QList<QByteArray>& words)
{
    const int channel = supplicant::channelOf(valueOf(words, "freq").toInt());
    if (channel == 0)
        return std::nullopt;
    return AccessPointEvent{Kind::Moved, {}, channel};
}

std::optional<AccessPointEvent> eventOf(const QByteArray& text)
{
    const auto words = text.trimmed().split(' ');
    for (const auto& row : rows) {
        if (words.first() != row.name)
            continue;
        if (row.kind == Kind::Moved)
            return moveOf(words);
        const bool ofStation = row.kind == Kind::Joined || row.kind == Kind::Left;
        const auto station = ofStation ? stationOf(words.value(1)) : QString();
        if (ofStation && station.isEmpty())
            return std::nullopt;
        return AccessPointEvent{row.kind, station, 0};
    }
    return std::nullopt;
}

std::optional<AccessPointEvent> stateOf(const QList<QByteArray>& lines)
{
    if (lines.first() == "state=DFS")
        return AccessPointEvent{Kind::Listening, {}, 0};
    if (lines.first() == "state=ENABLED")
        return AccessPointEvent{Kind::Enabled, {}, valueOf(lines, "channel").toInt()};
    return std::nullopt;
}

} // namespace

std::optional<AccessPointEvent> parseAccessPointEvent(const QByteArray& datagram)
{
    const int end = datagram.startsWith('<') ? datagram.indexOf('>') : -1;
    if (end > 0)
        return eventOf(datagram.mid(end + 1));
    return stateOf(datagram.split('\n'));
}

bool tellsWhy(const QString& line)
{
    constexpr std::array beginnings = {
        "nl80211: deinit ",
        "nl80211 driver initialization failed",
        "hostapd_free_hapd_data: ",
        "Interface initialization failed",
        "Could not select hw_mode and channel",
        "Failed to initialize interface",
        "Failed to set up interface with ",
    };
    constexpr std::array ofInterface = {": AP-DISABLED", ": CTRL-EVENT-TERMINATING",
                                        ": interface state ", ": Unable to setup interface",
                                        ": Could not connect to kernel driver"};
    const int colon = line.indexOf(QLatin1Char(':'));
    const auto begins = [](const QString& text) {
        return [&text](const char* word) { return text.startsWith(QLatin1String(word)); };
    };
    const auto rest = line.mid(qMax(0, colon));
    return std::none_of(beginnings.begin(), beginnings.end(), begins(line)) &&
           std::none_of(ofInterface.begin(), ofInterface.end(), begins(rest));
}
