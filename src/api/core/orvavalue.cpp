// SPDX-License-Identifier: Apache-2.0
#include "core/orvavalue.h"

ORVA_PLAIN_VALUES(ORVA_VALUE_DEFINITION)

QString OrvaValue::typeKey() const
{
    if (m_hash.size() != 1)
        return QString();
    const QString key = m_hash.keyBegin().operator*();
    const auto& known = fields();
    const bool isKnown = std::any_of(known.begin(), known.end(),
                                     [&key](const OrvaField& field) { return field.key == key; });
    return isKnown ? key : QString();
}
