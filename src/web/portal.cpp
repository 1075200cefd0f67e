// SPDX-License-Identifier: Apache-2.0
#include "portal.h"

#include "core/orvaplainvalue.h"

namespace {

struct Probe
{
    const char* path;
    int status;
    const char* type;
    const char* body;
};

constexpr const char* success =
    "<HTML><HEAD><TITLE>Success</TITLE></HEAD><BODY>Success</BODY></HTML>";

/// The probes of phones and computers, and the answers that tell them that nothing is in the way.
constexpr Probe probes[] = {
    {"/generate_204", 204, "text/plain", ""},
    {"/gen_204", 204, "text/plain", ""},
    {"/hotspot-detect.html", 200, "text/html", success},
    {"/library/test/success.html", 200, "text/html", success},
    {"/connecttest.txt", 200, "text/plain", "Microsoft Connect Test"},
    {"/ncsi.txt", 200, "text/plain", "Microsoft NCSI"},
    {"/success.txt", 200, "text/plain", "success\n"},
    {"/canonical.html", 200, "text/html",
     "<meta http-equiv=\"refresh\" "
     "content=\"0;url=https://support.mozilla.org/kb/captive-portal\"/>"},
    {"/check_network_status.txt", 200, "text/plain", "NetworkManager is online\n"},
    {"/nm", 200, "text/plain", "NetworkManager is online\n"},
    {"/static/hotspot.txt", 200, "text/plain", "OK\n"},
    {"/kindle-wifi/wifistub.html", 200, "text/html", "81ce4465-7167-4dcb-835b-dcc9e44c112a"},
    {"/nm-check.txt", 200, "text/plain", "NetworkManager is online\n"},
};

} // namespace

HttpAnswer captiveAnswer(const QByteArray& page, bool released)
{
    QVariantHash answer = {{QStringLiteral("captive"), !released}};
    if (!released)
        answer.insert(QStringLiteral("user-portal-url"), QString::fromLatin1(page));
    return {200, "application/captive+json", OrvaPlain::toJson(answer)};
}

std::optional<HttpAnswer> portalAnswer(const QByteArray& path, const QByteArray& page,
                                       bool released)
{
    if (!released)
        return HttpAnswer{302, "text/plain", QByteArray(), {{"Location", page}}};
    for (const Probe& probe : probes) {
        if (path == probe.path)
            return HttpAnswer{probe.status, probe.type, probe.body, {}};
    }
    return std::nullopt;
}
