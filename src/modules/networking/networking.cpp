// SPDX-License-Identifier: Apache-2.0
#include "networking.h"

#include "backend/fake/networkinglowlevelfake.h"
#include "backend/lumo/networkinglowlevellumo.h"
#include "backend/mounttable.h"
#include "network/networkpaths.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "nodetable.h"
#include "power/powerrecords.h"
#include "watchdog/wifirestart.h"

#include <QFile>

namespace {

QString mountTableFile()
{
    const QString named = qEnvironmentVariable("ORVA_MOUNT_TABLE");
    return named.isEmpty() ? QStringLiteral("/proc/mounts") : named;
}

std::unique_ptr<Networking_LowLevel> chooseBackend(NetworkListener& listener)
{
    if (Networking::isNFS()) {
        LOG4CPLUS_INFO(networkingLogger(), "Using Fake lowlevel networking module (run from NFS)");
        return std::make_unique<Networking_LowLevel_Fake>(listener);
    }
    LOG4CPLUS_INFO(networkingLogger(), "Using LUMO lowlevel networking module");
    return std::make_unique<Networking_LowLevel_LUMO>(listener);
}

} // namespace

Networking::Networking(const QVariantHash& config)
    : Networking(config, chooseBackend)
{
}

Networking::Networking(const QVariantHash& config, const BackendFactory& createBackend)
    : CMNodesWorker(config, QStringLiteral("Networking"))
    , m_wiredInterfaceName(readValue(OrvaNetworkWiredInterfacePath()).string_())
    , m_wirelessInterfaceName(readValue(OrvaNetworkWirelessInterfacePath()).string_())
    , m_lowlevel(createBackend(*this))
    , m_picture(createNodes(*this), *m_lowlevel, m_wiredInterfaceName, m_wirelessInterfaceName)
    , m_profiles(nodes(), *m_lowlevel, m_picture, m_life)
    , m_wirelessLink(*m_lowlevel)
    , m_lastJoin(nodes(), m_picture, this)
    , m_airplaneMode(m_picture, m_radios)
    , m_scans(nodes(), *m_lowlevel, m_picture, this)
    , m_wpsSession(
          *m_lowlevel, m_picture,
          [this](const WpsSession::ProfileEdit& edit) { return m_profiles.requestChange(edit); })
    , m_softAps(nodes(), *m_lowlevel, m_life, name(), this)
    , m_localSoftAp(m_softAps, *m_lowlevel, m_picture, m_life, this)
    , m_onlineState(nodes(), this)
{
    configureShutdownTimer();
    connectBackend();
    connectRooms();
    m_localSoftAp.readSoftApAutoEnabled();
    m_softAps.readSoftApConfiguration(m_picture.currentMac());
    m_localSoftAp.startSoftApTimer();
    m_wifiRestart = new WifiRestart(this, m_wirelessInterfaceName, softapInterfaces());
    connect(m_wifiRestart, &WifiRestart::gatewayPinged, &m_onlineState, &OnlineState::noteEcho);
    bindActions();
    registerWithPowerManager();
    m_airplaneMode.follow(nodeAt<CMValueNode>(nodes(), OrvaNetworkAirplaneModePath()));
}

Networking::~Networking() = default;

bool Networking::isNFS()
{
    QFile mountTable(mountTableFile());
    // A system whose mount table cannot be read is taken for one in development.
    if (!mountTable.open(QIODevice::ReadOnly | QIODevice::Text))
        return true;
    return isRootOnNetwork(mountTable);
}

void Networking::connectRooms()
{
    const auto claimFor = [this](WifiResource::ResourceRequestSubmodule submodule) {
        return [this, submodule](bool needed) {
            m_wifiResource.requestWifiResource(submodule, needed);
        };
    };
    connect(&m_profiles, &Profiles::wifiNeeded, this, claimFor(WifiResource::WirelessConnection));
    connect(&m_profiles, &Profiles::applying, this, &Networking::beginJoin);
    connect(&m_localSoftAp, &LocalSoftAp::waitedInVain, &m_lastJoin, &LastJoin::fail);
    connect(&m_profiles, &Profiles::profileApplied, this, &Networking::restartSoftApTimer);
    connect(&m_profiles, &Profiles::wirelessNetworksDropped, &m_localSoftAp,
            &LocalSoftAp::setAuthFailureFallback);
    connect(&m_scans, &Scans::wifiNeeded, this, claimFor(WifiResource::Scan));
    connect(&m_wpsSession, &WpsSession::wifiNeeded, this, claimFor(WifiResource::Wps));
    connect(&m_softAps, &SoftAps::wifiNeeded, this, claimFor(WifiResource::SoftAp));
    connect(&m_scans, &Scans::drained, this, [this] {
        if (m_wifiResource.isActive(WifiResource::Scan))
            m_wifiResource.requestWifiResource(WifiResource::Scan, false);
    });
    connect(&m_softAps, &SoftAps::stateChanged, &m_picture, &Picture::setSoftApState);
    connect(&m_picture, &Picture::currentMacRecovered, &m_softAps,
            [this] { m_softAps.readSoftApConfiguration(m_picture.currentMac()); });
}

void Networking::bindActions()
{
    const auto bind = [this](const CMPath& path, auto* receiver, auto slot) {
        nodeAt<CMActivateNode>(nodes(), path)->setInvoke(receiver, slot, Qt::QueuedConnection);
    };
    bind(OrvaNetworkStartPath(), this, &Networking::on_start_req);
    bind(OrvaNetworkRestartPath(), this, &Networking::on_restart_req);
    bind(OrvaNetworkShutdownPath(), this, &Networking::on_shutdown_req);
    bind(OrvaNetworkStopPath(), this, &Networking::on_stop_req);
    bind(OrvaNetworkForceWifiReconnectPath(), &m_wirelessLink,
         &WirelessLink::on_forceWifiReconnect_req);
    bind(OrvaNetworkSetNetworkProfilePath(), &m_profiles, &Profiles::on_setNetworkProfile_req);
    bind(OrvaNetworkTryNetworkProfilePath(), &m_profiles, &Profiles::on_setNetworkProfile_req);
    bind(OrvaNetworkConfirmProfilePath(), &m_profiles, &Profiles::on_endTrial_req);
    bind(OrvaNetworkRollbackProfilePath(), &m_profiles, &Profiles::on_endTrial_req);
    bind(OrvaNetworkRestoreBackupPath(), &m_profiles, &Profiles::on_restoreBackup_req);
    bind(OrvaNetworkRemoveWirelessNetworkPath(), &m_profiles,
         &Profiles::on_removeWirelessNetwork_req);
    bind(OrvaNetworkScanPath(), &m_scans, &Scans::on_scanNetworks_req);
    bind(OrvaNetworkPerformWpsPbcPath(), &m_wpsSession, &WpsSession::on_performWpsPbc_req);
    bind(OrvaNetworkPerformWpsPinPath(), &m_wpsSession, &WpsSession::on_performWpsPin_req);
    bind(OrvaNetworkGenerateWpsPinPath(), &m_wpsSession, &WpsSession::on_generateWpsPin_req);
    bind(OrvaNetworkApplyWpsPath(), &m_wpsSession, &WpsSession::on_applyWps_req);
    bind(OrvaNetworkCancelWpsPath(), &m_wpsSession, &WpsSession::on_cancelWps_req);
    bind(OrvaNetworkWirelessRssiPath(), &m_wirelessLink,
         &WirelessLink::on_wirelessRssiNode_activated);
    bind(OrvaNetworkRequestSoftApPath(), &m_softAps, &SoftAps::on_requestSoftAp_req);
    bind(OrvaNetworkRevokeSoftApPath(), &m_softAps, &SoftAps::on_revokeSoftAp_req);
    bind(OrvaNetworkWakeOnLanSetEnabledPath(), &m_wakeOnLan, &WakeOnLan::on_setEnabled);
    bind(OrvaNetworkRequestWifiRestartPath(), m_wifiRestart, &WifiRestart::on_restart_requested);
}

void Networking::connectBackend()
{
    using Backend = Networking_LowLevel;
    const Backend* backend = m_lowlevel.get();
    connect(backend, &Backend::AddressesChanged, &m_picture,
            &Picture::on_lowlevel_AddressesChanged);
    connect(backend, &Backend::AuthError, this, &Networking::on_lowlevel_AuthError);
    connect(backend, &Backend::Error, this, &Networking::on_lowlevel_Error);
    connect(backend, &Backend::InterfaceStatusChanged, this,
            &Networking::on_lowlevel_InterfaceStatusChanged);
}

void Networking::registerWithPowerManager()
{
    OrvaPowerManagerModuleRegister registration;
    registration.setModuleName(OrvaNetworkName());
    CMRoot()->invoke(OrvaPowerManagerModuleRegisterPath(), registration,
                     CMReply<QVariant>::create());
}

void Networking::setDataRequest(const CMSetDataRequest& request)
{
    const auto write = [this, request] { CMNodesWorker::setDataRequest(request); };
    if (AirplaneMode::isSwitch(request))
        m_airplaneMode.store(request, write);
    else
        write();
}
