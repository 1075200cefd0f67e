// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"
#include "core/orvaresult.h"

// Enumerations stand in values as numbers. Here they become words for a reader, and words that a
// person writes become numbers.

/// The words for an enumeration's values, in their order.
[[nodiscard]] ORVA_API QStringList orvaEnumWords(const QMetaEnum& values);

/// The number of the value that `text` names, by its word in any case or by its number; nothing
/// where it names none.
[[nodiscard]] ORVA_API std::optional<qint32> orvaEnumNumber(const QMetaEnum& values,
                                                            const QString& text);

/// `plain`, in which a word stands for each value of an enumeration that `fields` and the records
/// in them have. All else, numbers that name no value included, stays as it is.
[[nodiscard]] ORVA_API QVariantHash orvaWithWords(const QVector<OrvaField>& fields,
                                                  const QVariantHash& plain);

/// The opposite: `written`, with the number in the place of each text that stands for a value of an
/// enumeration. Fails with "UnknownWord" for a text that names none; the message has the words.
[[nodiscard]] ORVA_API OrvaResult<QVariantHash> orvaWithNumbers(const QVector<OrvaField>& fields,
                                                                const QVariantHash& written);
