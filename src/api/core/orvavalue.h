// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvarecord.h"

#include <QMetaType>

class OrvaNetworkInfo;
class OrvaNetworkInterface;
class OrvaNetworkLastJoin;
class OrvaNetworkOnline;
class OrvaNetworkPendingProfile;
class OrvaNetworkProfile;
class OrvaNetworkProfileSoftApRequest;
class OrvaNetworkProfileTrial;
class OrvaNetworkScanResult;
class OrvaNetworkSoftApRequestStatus;
class OrvaNetworkState;
class OrvaNetworkWifiRestartCriteria;
class OrvaAirplaneModeType;

// clang-format off

/// The plain types that a value can carry: type, accessor, key function.
#define ORVA_PLAIN_VALUES(ROW)                                                                     \
    ROW(bool, bool_, Bool)                                                                         \
    ROW(qint32, i32_, I32)                                                                         \
    ROW(double, double_, Double)                                                                   \
    ROW(QString, string_, String)                                                                  \
    ROW(QStringList, stringList, StringList)

/// The network records that a value can carry. The core knows their names alone: a user of one of
/// these accessors includes the record's header.
#define ORVA_NETWORK_VALUES(ROW)                                                                   \
    ROW(OrvaNetworkProfile, networkProfile, NetworkProfile)                                        \
    ROW(OrvaNetworkProfileTrial, networkProfileTrial, NetworkProfileTrial)                         \
    ROW(OrvaNetworkPendingProfile, networkPendingProfile, NetworkPendingProfile)                   \
    ROW(OrvaNetworkLastJoin, networkLastJoin, NetworkLastJoin)                                     \
    ROW(OrvaNetworkInfo, networkInfo, NetworkInfo)                                                 \
    ROW(OrvaNetworkInterface, networkInterface, NetworkInterface)                                  \
    ROW(OrvaNetworkState, networkState, NetworkState)                                              \
    ROW(OrvaNetworkOnline, networkOnline, NetworkOnline)                                           \
    ROW(OrvaNetworkScanResult, networkScanResult, NetworkScanResult)                               \
    ROW(OrvaList<OrvaNetworkScanResult>, networkScanResults, NetworkScanResults)                   \
    ROW(OrvaNetworkProfileSoftApRequest, networkSoftApRequest, NetworkSoftApRequest)               \
    ROW(OrvaList<OrvaNetworkSoftApRequestStatus>, softApRequests, SoftApRequests)                  \
    ROW(OrvaAirplaneModeType, airplaneModeType, AirplaneModeType)                                  \
    ROW(OrvaNetworkWifiRestartCriteria, wifiRestartCriteria, WifiRestartCriteria)

// clang-format on

/// The value that a node holds and a request carries: a hash with one key that names the type, so
/// that it reads as plain JSON: `{"bool": true}`, `{"networkProfile": {…}}`. The key is the
/// accessor's name without a trailing underscore. Records of the power manager travel as bare
/// hashes, without such a key.
///
/// A getter answers its type's default when the value carries another type; a setter replaces
/// whatever the value carried.
class ORVA_API OrvaValue : public OrvaHash
{
    ORVA_RECORD(OrvaValue)

/// Declares what a row stands for: the static key, the getter, the setter and the maker.
#define ORVA_VALUE_ROW(Type, name, Name) \
    static const QString& Name();        \
    [[nodiscard]] Type name() const;     \
    void set##Name(const Type& value);   \
    [[nodiscard]] static OrvaValue of(const Type& value);

    ORVA_PLAIN_VALUES(ORVA_VALUE_ROW)
    ORVA_NETWORK_VALUES(ORVA_VALUE_ROW)
#undef ORVA_VALUE_ROW

    /// `OrvaValue::of(content)` is the value that carries `content`. The content's type must be
    /// exactly one of the rows': an enumerator would sooner become a number, a literal a bool.
    template <class Other>
    static OrvaValue of(const Other& content) = delete;

    /// `setBool`. The name, like those of the next three, keeps the trailing underscore of its
    /// getter.
    void setBool_(bool value)
    {
        setBool(value);
    }
    /// `setI32`.
    void setI32_(qint32 value)
    {
        setI32(value);
    }
    /// `setDouble`.
    void setDouble_(double value)
    {
        setDouble(value);
    }
    /// `setString`.
    void setString_(const QString& value)
    {
        setString(value);
    }

    /// The key that names the type; empty for an empty value and for a bare hash.
    [[nodiscard]] QString typeKey() const;
};

Q_DECLARE_METATYPE(OrvaValue)

/// Defines the accessors that a row declares.
#define ORVA_VALUE_DEFINITION(Type, name, Name)              \
    const QString& OrvaValue::Name()                         \
    {                                                        \
        static const QString key = orvaFieldKey(#name);      \
        return key;                                          \
    }                                                        \
    Type OrvaValue::name() const                             \
    {                                                        \
        return orvaField<Type>(m_hash, Name());              \
    }                                                        \
    void OrvaValue::set##Name(const Type& value)             \
    {                                                        \
        m_hash = {{Name(), OrvaCodec<Type>::encode(value)}}; \
    }                                                        \
    OrvaValue OrvaValue::of(const Type& value)               \
    {                                                        \
        OrvaValue result;                                    \
        result.set##Name(value);                             \
        return result;                                       \
    }                                                        \
    static const bool name##Listed = OrvaFieldTable<OrvaValue>::add<Type>(orvaFieldKey(#name));
