// SPDX-License-Identifier: Apache-2.0
#include "core/orvahash.h"

#include "core/orvalogtext.h"

#include <algorithm>
#include <ostream>

namespace {

bool equalHashes(const QVariantHash& left, const QVariantHash& right)
{
    if (left.isSharedWith(right))
        return true;
    if (left.size() != right.size())
        return false;
    return std::all_of(left.keyValueBegin(), left.keyValueEnd(), [&right](const auto& entry) {
        const auto other = right.constFind(entry.first);
        return other != right.constEnd() && orvaStrictlyEqual(entry.second, *other);
    });
}

} // namespace

void OrvaHash::__mergeWith(const OrvaHash& other)
{
    for (auto entry = other.m_hash.begin(); entry != other.m_hash.end(); ++entry)
        m_hash.insert(entry.key(), entry.value());
}

bool operator==(const OrvaHash& left, const OrvaHash& right)
{
    return equalHashes(left.m_hash, right.m_hash);
}

bool orvaStrictlyEqual(const QVariant& left, const QVariant& right)
{
    if (left.userType() != right.userType())
        return false;
    if (left.userType() == QMetaType::QVariantHash)
        return equalHashes(left.toHash(), right.toHash());
    if (left.userType() != QMetaType::QVariantList)
        return left == right;
    const QVariantList leftItems = left.toList();
    const QVariantList rightItems = right.toList();
    return leftItems.isSharedWith(rightItems) ||
           std::equal(leftItems.begin(), leftItems.end(), rightItems.begin(), rightItems.end(),
                      orvaStrictlyEqual);
}

std::ostream& operator<<(std::ostream& stream, const OrvaHash& hash)
{
    return stream << orvaLogLine(orvaToLog(hash.__variant())).toUtf8().constData();
}
