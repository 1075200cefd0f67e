// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QDBusVariant>

class QMetaProperty;

/// The properties of its parent on the bus: what it keeps under the same names.
///
/// QtDBus by itself answers every write, also one that wants no answer, and the bus refuses and
/// logs an answer that nobody asked for. This one answers only where an answer is wanted.
class BusProperties : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.DBus.Properties")
public:
    /// `interface` has the properties.
    BusProperties(const QString& interface, QObject* parent);

public Q_SLOTS:
    /// The value of a property.
    void Get(const QString& interface, const QString& property, const QDBusMessage& call);
    /// The values of all properties, by name.
    void GetAll(const QString& interface, const QDBusMessage& call);
    /// Writes a property; an error says that there is none of that name, that it is read-only or
    /// that the value is of another type.
    void Set(const QString& interface, const QString& property, const QDBusVariant& value,
             const QDBusMessage& call);

private:
    /// The property of that name; not valid, with the caller told, where there is none.
    [[nodiscard]] QMetaProperty find(const QString& interface, const QString& property,
                                     const QDBusMessage& call) const;

    const QString m_interface;
};
