#pragma once

#include <network/networkpaths.h>
#include <networking_lowlevel_lumo.h>
#include <privatebus.h>
#include <workerfixture.h>

#include <QtDBus>

/// A network manager over the client of the connection daemon, with the soft-AP interface "uap0"
/// and the networks "Home" and "Café" in its stored profile; and a second look at that daemon.
class LumoFixture
{
public:
    explicit LumoFixture(PrivateBus& bus)
        : m_connection(bus.connection(QStringLiteral("test")))
        , device(settings(), [this](Networking* worker) {
            auto own = std::make_unique<Networking_LowLevel_LUMO>(worker);
            backend = own.get();
            return own;
        })
    {
    }
    ~LumoFixture() { QDBusConnection::disconnectFromBus(QStringLiteral("test")); }
    Q_DISABLE_COPY(LumoFixture)

private:
    QDBusConnection m_connection;

public:
    Networking_LowLevel* backend = nullptr;
    WorkerFixture device;

    /// Calls the daemon behind the client's back, and starts none.
    QDBusMessage call(const QString& interface, const QString& method,
                      const QVariantList& arguments = {})
    {
        auto call = QDBusMessage::createMethodCall(
            QStringLiteral("org.orva.lumod"), QStringLiteral("/org/orva/lumod"), interface, method);
        call.setArguments(arguments);
        call.setAutoStartService(false);
        return m_connection.call(call);
    }
    /// The process id of the daemon; 0 when there is none.
    int daemonPid() const
    {
        return static_cast<int>(
            m_connection.interface()->servicePid(QStringLiteral("org.orva.lumod")).value());
    }
    QDBusConnection& connection() { return m_connection; }
    [[nodiscard]] QTimer* wpsTimer() const
    {
        return backend->findChild<QTimer*>(QStringLiteral("wpsTimer"));
    }

    static OrvaValue softApRequest()
    {
        OrvaNetworkProfileSoftApSettings settings;
        settings.setSsid(QStringLiteral("Setup"));
        settings.setChannel(6);
        OrvaNetworkProfileSoftApRequest request;
        request.setName(QStringLiteral("test"));
        request.setSettings(settings);
        OrvaValue value;
        value.setNetworkSoftApRequest(request);
        return value;
    }

private:
    static NodeValues settings()
    {
        OrvaNetworkProfile stored = profileWith({QStringLiteral("Home"), QStringLiteral("Café")});
        OrvaNetworkInterface wired;
        wired.setIp(QStringLiteral("10.0.0.2"));
        wired.setNetmask(QStringLiteral("255.0.0.0"));
        wired.setDns({QStringLiteral("1.1.1.1"), QStringLiteral("9.9.9.9")});
        stored.setWired(wired);
        OrvaNetworkProfileSoftApSettings ap;
        ap.setApInterface(QStringLiteral("uap0"));
        OrvaNetworkProfile softAps;
        softAps.setSoftApSettings({ap});
        OrvaValue profile;
        profile.setNetworkProfile(stored);
        OrvaValue config;
        config.setNetworkProfile(softAps);
        return {{OrvaNetworkCurrentProfileSettingsPath(), profile},
                {OrvaNetworkSoftApConfigSettingsPath(), config}};
    }
};
