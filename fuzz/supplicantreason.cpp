// SPDX-License-Identifier: Apache-2.0
// The datagrams of wpa_supplicant's control socket, with names from the air in them.
#include "target.h"

#include "world/real/radio/supplicantreason.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Kind = SupplicantReason::Kind;
    const QByteArray datagram(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto reason = parseSupplicantReason(datagram);
    if (!reason)
        return 0;
    require((reason->kind == Kind::KeyRejected) == (reason->bssid.size() == 6));
    require((reason->kind == Kind::WrongKey || reason->kind == Kind::Paused) ==
            (reason->network >= 0));
    require((reason->kind == Kind::ScanFailed) == (reason->error > 0));
    require(reason->kind != Kind::WrongKey || datagram.endsWith(" reason=WRONG_KEY"));
    return 0;
}
