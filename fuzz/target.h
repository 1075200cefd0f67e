// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QVariantMap>

#include <cstddef>
#include <cstdint>

/// The function that libFuzzer, or the replay of its corpus, calls with each input. Always answers
/// 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the program as a crash does: what has to hold does not.
inline void require(bool holds)
{
    if (!holds)
        __builtin_trap();
}

/// Makes variants as D-Bus delivers them, of every type and to any depth, from an input's bytes:
/// few of them would be JSON, but all of them are some map.
class ForeignValues
{
public:
    ForeignValues(const std::uint8_t* data, std::size_t size, const QStringList& keys)
        : m_input(reinterpret_cast<const char*>(data), static_cast<int>(size))
        , m_keys(keys)
    {
    }

    /// A map whose keys are often among those that the reader knows.
    QVariantMap takeMap(int depth = 0)
    {
        QVariantMap map;
        for (int count = take() % 16; count > 0 && !m_input.isEmpty(); --count) {
            const QString key = takeKey();
            map.insert(key, takeValue(depth + 1));
        }
        return map;
    }

private:
    std::uint8_t take()
    {
        const auto byte = m_input.isEmpty() ? '\0' : m_input.at(0);
        m_input.remove(0, 1);
        return static_cast<std::uint8_t>(byte);
    }
    QByteArray takeBytes()
    {
        const QByteArray bytes = m_input.left(take());
        m_input.remove(0, bytes.size());
        return bytes;
    }
    QString takeKey()
    {
        const int choice = take();
        return choice < m_keys.size() ? m_keys.at(choice) : QString::fromUtf8(takeBytes());
    }
    qulonglong takeNumber()
    {
        qulonglong number = 0;
        for (int i = take() % 9; i > 0; --i)
            number = number << 8 | take();
        return number;
    }
    QVariantList takeList(int depth)
    {
        QVariantList list;
        for (int count = take() % 8; count > 0 && !m_input.isEmpty(); --count)
            list.append(takeValue(depth + 1));
        return list;
    }
    QVariant takeValue(int depth)
    {
        switch (take() % 14) {
        case 0:
            return (take() & 1) != 0;
        case 1:
            return QVariant::fromValue(static_cast<uchar>(takeNumber()));
        case 2:
            return QVariant::fromValue(static_cast<short>(takeNumber()));
        case 3:
            return QVariant::fromValue(static_cast<ushort>(takeNumber()));
        case 4:
            return static_cast<int>(takeNumber());
        case 5:
            return static_cast<uint>(takeNumber());
        case 6:
            return static_cast<qlonglong>(takeNumber());
        case 7:
            return takeNumber();
        case 8:
            return static_cast<double>(takeNumber()) / 3;
        case 9:
            return takeBytes();
        case 10:
            return depth < 30 ? QVariant(takeMap(depth)) : QVariant();
        case 11:
            return depth < 30 ? QVariant(takeList(depth)) : QVariant();
        case 12:
            return QString::fromUtf16(u"\xd800x");
        default:
            return QString::fromUtf8(takeBytes());
        }
    }

    QByteArray m_input;
    const QStringList m_keys;
};
