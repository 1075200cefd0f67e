// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "output/outcome.h"

#include "core/orvavalue.h"

namespace ctl {

/// The value that a person wrote for a node of the type `type`, as the list of nodes has it: a JSON
/// object, else the JSON value or plain word that suits the type. An empty type is an unknown one.
/// In either an enumeration's value may be its word or its number.
Outcome<OrvaValue> parseValue(const QString& text, const QString& type);

/// The value for a person, with the words of enumerations.
[[nodiscard]] QVariantHash inWords(const OrvaValue& value);

/// One JSON object.
Outcome<QVariantHash> parseObject(const QByteArray& text);

/// True if `text` is meant as a JSON object.
[[nodiscard]] bool looksLikeObject(const QString& text);

/// Fails where the bus would cut or change the text.
Result checkText(const QString& text);

/// JSON in one line, harmless for a terminal.
[[nodiscard]] QString toJson(const QVariant& value);

/// JSON over several indented lines, keys in alphabetical order, harmless for a terminal.
[[nodiscard]] QString toIndentedJson(const QVariantHash& value);

/// True if `actual` holds everything that `wanted` names: maps field by field, all else as a whole.
[[nodiscard]] bool holds(const QVariant& actual, const QVariant& wanted);

} // namespace ctl
