// SPDX-License-Identifier: Apache-2.0
// JSON from a client: what passes is a plain value that reads back as itself, in any record.
#include "core/orvalogtext.h"
#include "core/orvaplainvalue.h"
#include "network/networkrecords.h"
#include "target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray json(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto plain = OrvaPlain::fromJson(json);
    if (!plain)
        return 0;
    const QByteArray again = OrvaPlain::toJson(*plain);
    const auto back = OrvaPlain::fromJson(again);
    require(back && OrvaPlain::toJson(*back) == again);
    (void)orvaMalformedField(OrvaValue::fields(), plain->toHash());
    (void)orvaToLog(*plain);
    return 0;
}
