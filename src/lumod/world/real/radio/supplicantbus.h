// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariantMap>

#include <functional>

/// The wire to wpa_supplicant on the system bus: calls that nobody waits for, and its signals.
/// Nothing of it starts a service by itself.
class SupplicantBus : public QObject
{
    Q_OBJECT

public:
    /// Takes an answer, or an error; never called once the asker has gone.
    using Then = std::function<void(const QDBusMessage& answer)>;

    /// The interfaces of its objects; `WPS` and others are named below `Interface`.
    static constexpr auto root = "fi.w1.wpa_supplicant1";
    static constexpr auto interface = "fi.w1.wpa_supplicant1.Interface";
    static constexpr auto wps = "fi.w1.wpa_supplicant1.Interface.WPS";
    static constexpr auto bss = "fi.w1.wpa_supplicant1.BSS";
    static constexpr auto network = "fi.w1.wpa_supplicant1.Network";

    explicit SupplicantBus(QObject* parent = nullptr);

    /// Finds out whether somebody is wpa_supplicant now; `then` is told.
    void findOwner(const std::function<void(bool owned)>& then);

    void call(const QString& path, const char* interface, const char* method,
              const QVariantList& arguments, const Then& then = {});
    void set(const QString& path, const char* interface, const char* property,
             const QVariant& value);

    /// The object that stands for all of it, where interfaces are made.
    [[nodiscard]] static QString rootPath() { return QStringLiteral("/fi/w1/wpa_supplicant1"); }

Q_SIGNALS:
    void appeared();
    void vanished();
    /// A signal of one of the objects other than a change of properties.
    void told(const QString& path, const QString& name, const QVariantList& arguments);
    void propertiesChanged(const QString& path, const QString& interface,
                           const QVariantMap& properties);

private Q_SLOTS:
    void on_signal(const QDBusMessage& message);
    void on_propertiesChanged(const QDBusMessage& message);

private:
    void send(const QDBusMessage& message, const Then& then);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
};
