// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"
#include "core/orvaresult.h"
#include "network/networkrecords.h"

// The bodies that browsers send, as typed records, and the profile that follows from each. Plain
// values in, plain values out.

/// Joins a network. Without a key a known network keeps its own, and an unknown one is open.
/// `trial` is the page's id for the change, by which it knows it again where it goes on trial.
struct JoinBody : OrvaHash
{
    ORVA_RECORD(JoinBody)
    ORVA_FIELD(QString, ssid, Ssid);
    ORVA_FIELD(QString, key, Key);
    ORVA_FIELD(QString, trial, Trial);
};

/// A network by its name.
struct NetworkBody : OrvaHash
{
    ORVA_RECORD(NetworkBody)
    ORVA_FIELD(QString, ssid, Ssid);
};

/// The device's access point; what is absent or empty stays as it is.
struct SoftApBody : OrvaHash
{
    ORVA_RECORD(SoftApBody)
    ORVA_FIELD(QString, ssid, Ssid);
    ORVA_FIELD(QString, passphrase, Passphrase);
};

/// The addressing of an interface. `interface` is "wired" or "wireless"; `trial` as in JoinBody.
struct AddressBody : OrvaHash
{
    ORVA_RECORD(AddressBody)
    ORVA_FIELD(QString, interface, Interface);
    ORVA_FIELD(bool, dhcp, Dhcp);
    ORVA_FIELD(QString, ip, Ip);
    ORVA_FIELD(QString, netmask, Netmask);
    ORVA_FIELD(QString, gateway, Gateway);
    ORVA_FIELD(QStringList, dns, Dns);
    ORVA_FIELD(QString, trial, Trial);
};

/// Something that is on or off.
struct SwitchBody : OrvaHash
{
    ORVA_RECORD(SwitchBody)
    ORVA_FIELD(bool, on, On);
};

/// A PIN that the router is told.
struct PinBody : OrvaHash
{
    ORVA_RECORD(PinBody)
    ORVA_FIELD(QString, pin, Pin);
};

/// The access code that somebody typed in.
struct CodeBody : OrvaHash
{
    ORVA_RECORD(CodeBody)
    ORVA_FIELD(QString, code, Code);
};

/// No fields at all.
struct EmptyBody : OrvaHash
{
    ORVA_RECORD(EmptyBody)
};

/// "malformed": what a browser sent is not what it should be.
[[nodiscard]] CMError malformedBody(const QString& why);

/// One JSON object whose keys are all among `fields` and have their types.
[[nodiscard]] OrvaResult<QVariantHash> parseFields(const QByteArray& json,
                                                   const QVector<OrvaField>& fields);

/// `parseFields` with the fields of a record.
template <class Record>
[[nodiscard]] OrvaResult<Record> parseBody(const QByteArray& json)
{
    const auto hash = parseFields(json, Record::fields());
    if (!hash)
        return hash.error();
    return Record(*hash);
}

/// The profile to set so that the network is joined. The scan's rows tell the security of an
/// unknown one.
[[nodiscard]] OrvaNetworkProfile
profileToJoin(const OrvaNetworkProfile& profile, const JoinBody& body,
              const OrvaList<OrvaNetworkScanResult>& seen = OrvaList<OrvaNetworkScanResult>());

/// The profile with the address. Fails, with the offending field as the message, where the body has
/// a text that is no address, or asks for a wireless network that is not there.
[[nodiscard]] OrvaResult<OrvaNetworkProfile> profileWithAddress(const OrvaNetworkProfile& profile,
                                                                const AddressBody& body);
