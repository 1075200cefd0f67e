// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QSet>
#include <QTimer>

/// The device's claim on the Wi-Fi radio, which the host's power manager switches.
///
/// The radio is asked for while some feature needs it, and let go 5 s after the last one has left.
/// The power manager's answers are not awaited.
class WifiResource : public QObject
{
    Q_OBJECT
public:
    /// The features that need the radio.
    enum ResourceRequestSubmodule {
        WirelessConnection = 1, ///< A wireless network is configured and no cable serves.
        SoftAp = 2,             ///< A soft access point runs.
        Scan = 3,               ///< A scan was asked for, and none has ended since.
        Wps = 4                 ///< A WPS session runs.
    };

    explicit WifiResource(QObject* parent);

    /// A feature needs the radio, or no longer does. The radio is asked for again where one still
    /// does, and its release begins anew where none does, also where nothing changed.
    void requestWifiResource(ResourceRequestSubmodule submodule, bool enable);
    /// True while the feature needs the radio.
    [[nodiscard]] bool isActive(ResourceRequestSubmodule submodule) const
    {
        return m_activeSubmodules.contains(submodule);
    }

public Q_SLOTS:
    void on_releaseWifiResource_timeout();

private:
    QSet<ResourceRequestSubmodule> m_activeSubmodules;
    QTimer m_releaseWifiResourceTimer{this};
};
