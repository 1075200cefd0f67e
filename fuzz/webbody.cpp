// SPDX-License-Identifier: Apache-2.0
// A browser's body: the first byte chooses the kind that it is taken for.
#include "admission.h"
#include "bodies.h"
#include "common/commentedjson.h"
#include "target.h"
#include "websettings.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray all(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QByteArray text = all.mid(1);
    const QStringList names = {QStringLiteral("speaker.local")};
    switch (all.isEmpty() ? 0 : all.at(0) % 4) {
    case 0:
        if (const auto body = parseBody<JoinBody>(text)) {
            const OrvaNetworkProfile profile = profileToJoin(OrvaNetworkProfile(), *body);
            require(profile.wireless().ssid() == body->ssid());
        }
        break;
    case 1:
        if (const auto body = parseBody<AddressBody>(text)) {
            const auto profile = profileWithAddress(OrvaNetworkProfile(), *body);
            require(!profile || profile->wired().dhcp() || !profile->wired().ip().isEmpty());
        }
        break;
    case 2:
        // No name below somebody else's is ours, whatever it begins with.
        require(!isOwnHost("evil." + text, QHostAddress(QStringLiteral("192.0.2.1")), names));
        break;
    default:
        (void)parseWebSettings(withoutComments(text)).isOk();
    }
    return 0;
}
