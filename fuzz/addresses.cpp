// SPDX-License-Identifier: Apache-2.0
// The text of an interface's addresses.
#include "backend/lumo/lumodecoding.h"
#include "target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto addresses = parseAddresses({{QStringLiteral("Ips"), text}});
    for (const OrvaNetworkAddress& address : addresses)
        require(!address.ip().isEmpty() && address.ip() == address.ip().toLower());
    return 0;
}
