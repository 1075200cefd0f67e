// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"
#include "core/orvaresult.h"

/// The border: what comes from D-Bus or JSON becomes plain values here and nowhere else.
///
/// Plain are `bool`, `int`, `qlonglong` (where 32 bits do not do), `double`, `QString`,
/// `QByteArray`, `QVariantList` and `QVariantHash`. Nested D-Bus maps are unpacked, integers
/// narrowed, nulls and invalid variants dropped: one of them inside a map aborts the process that
/// sends it on.
namespace OrvaPlain {

/// The bounds of a foreign value.
struct Limits
{
    /// Levels of nesting; a bus daemon throws off who sends 21.
    int depth = 12;
    /// Bytes of text and keys, and eight for each value, in all.
    qint64 bytes = 1 << 20;
};

/// `foreign` as a plain value. Fails when it is too deep, too large, or holds text with a NUL or a
/// lone surrogate (D-Bus would cut or change it). A null gives an invalid variant.
[[nodiscard]] ORVA_API OrvaResult<QVariant> fromForeign(const QVariant& foreign,
                                                        Limits limits = Limits());

/// The same for a map as D-Bus delivers it.
[[nodiscard]] ORVA_API OrvaResult<QVariantHash> hashFromBus(const QVariantMap& foreign,
                                                            Limits limits = Limits());

/// One JSON document, of any type.
[[nodiscard]] ORVA_API OrvaResult<QVariant> fromJson(const QByteArray& json,
                                                     Limits limits = Limits());

/// A plain value as compact JSON on one line, keys in alphabetical order. Bytes become hexadecimal
/// text; what `orvaLogText` escapes is escaped.
[[nodiscard]] ORVA_API QByteArray toJson(const QVariant& plain);

/// A plain hash as it goes to the bus: `a{sv}`, lists as `av`. An invalid variant, which would
/// abort the process, is left out.
[[nodiscard]] ORVA_API QVariantMap toBus(const QVariantHash& plain);

} // namespace OrvaPlain
