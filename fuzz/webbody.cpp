// SPDX-License-Identifier: Apache-2.0
// A browser's body: the first byte chooses the kind that it is taken for.
#include "admission.h"
#include "bodies.h"
#include "common/commentedjson.h"
#include "core/orvaplainvalue.h"
#include "target.h"
#include "websettings.h"

namespace {

/// What is true of each record that was read: to write it and read it again changes nothing.
template <class Body>
void readAgain(const QByteArray& text)
{
    if (const auto body = parseBody<Body>(text)) {
        const auto again = parseBody<Body>(OrvaPlain::toJson(body->__hash()));
        require(again && again->__hash() == body->__hash());
    }
}

void readSmallBodies(const QByteArray& text)
{
    readAgain<NetworkBody>(text);
    readAgain<SoftApBody>(text);
    readAgain<SwitchBody>(text);
    readAgain<PinBody>(text);
    readAgain<CodeBody>(text);
    readAgain<EmptyBody>(text);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray all(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QByteArray text = all.mid(1);
    const QStringList names = {QStringLiteral("speaker.local")};
    switch (all.isEmpty() ? 0 : quint8(all.at(0) - '0') % 5) {
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
    case 3:
        (void)parseWebSettings(withoutComments(text)).isOk();
        break;
    default:
        readSmallBodies(text);
    }
    return 0;
}
