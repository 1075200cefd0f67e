// SPDX-License-Identifier: Apache-2.0
#include "world/real/accesspointevent.h"

#include <array>

namespace {

using Kind = AccessPointEvent::Kind;

struct Row
{
    const char* name; ///< the whole first word
    Kind kind;
};

constexpr std::array rows = {Row{"AP-ENABLED", Kind::Enabled}, Row{"AP-DISABLED", Kind::Disabled},
                             Row{"INTERFACE-DISABLED", Kind::Disabled},
                             Row{"AP-STA-CONNECTED", Kind::Joined},
                             Row{"AP-STA-DISCONNECTED", Kind::Left}};

QString stationOf(const QByteArray& word)
{
    constexpr int bytes = 6;
    const auto address = QByteArray::fromHex(word);
    const auto text = address.toHex(':');
    return address.size() == bytes && text == word.toLower() ? QString::fromLatin1(text)
                                                             : QString();
}

std::optional<AccessPointEvent> eventOf(const QByteArray& text)
{
    const auto words = text.trimmed().split(' ');
    for (const auto& row : rows) {
        if (words.first() != row.name)
            continue;
        const bool ofStation = row.kind == Kind::Joined || row.kind == Kind::Left;
        const auto station = ofStation ? stationOf(words.value(1)) : QString();
        if (ofStation && station.isEmpty())
            return std::nullopt;
        return AccessPointEvent{row.kind, station};
    }
    return std::nullopt;
}

} // namespace

std::optional<AccessPointEvent> parseAccessPointEvent(const QByteArray& datagram)
{
    const int end = datagram.startsWith('<') ? datagram.indexOf('>') : -1;
    if (end > 0)
        return eventOf(datagram.mid(end + 1));
    if (datagram.startsWith("state=ENABLED\n"))
        return AccessPointEvent{Kind::Enabled, {}};
    return std::nullopt;
}
