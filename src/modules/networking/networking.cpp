#include "networking.h"

#include "backend/fake/networkinglowlevelfake.h"
#include "backend/lumo/networkinglowlevellumo.h"
#include "backend/mounttable.h"
#include "core/model/nodes/cmactivatenode.h"
#include "network/networkpaths.h"
#include "networkinglog.h"
#include "nodevalues.h"
#include "picture/networkinforules.h"
#include "power/powerrecords.h"
#include "profile/networkprofilerules.h"
#include "wake/wakeonlan.h"
#include "watchdog/wifirestart.h"

#include <QFile>

namespace {

constexpr int shutdownDelayMs = 2000;

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
{
    readSettings();
    m_lowlevel = createBackend(*this);
    m_stateConnectedNode = CMValueNode::create(nodes(), OrvaNetworkStateConnected());
    m_stateConnectedNode->setValue(toValue(false));

    const QString ethernetMac = m_lowlevel->getEthernetMAC().toUpper();
    const QString wirelessMac = m_lowlevel->getWirelessMAC().toUpper();
    m_airplaneModeType = readValue(OrvaNetworkAirplaneModeTypeSettingPath()).airplaneModeType();
    const bool airplaneMode = readValue(OrvaNetworkAirplaneModeSettingPath()).bool_();
    createInfoNode(ethernetMac, wirelessMac, airplaneMode);
    createValueNodes(ethernetMac, wirelessMac);
    createSoftAps();
    createActivateNodes();

    connectTimers();
    connectBackend();
    readSoftApAutoEnabled();
    m_softAps->readSoftApConfiguration(m_currentMacNode->value().string_());
    startSoftApTimer();
    createCompanions();
    registerWithPowerManager();
    createAirplaneModeNode(TrString(trExtractContext(Q_FUNC_INFO), "Airplane Mode"), airplaneMode);
    createSoftApRequestsNode();
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

void Networking::readSettings()
{
    m_maxAuthFailures = readValue(OrvaNetworkMaxAuthFailuresSettingsPath()).i32_();
    m_wiredInterfaceName = readValue(OrvaNetworkWiredInterfacePath()).string_();
    m_wirelessInterfaceName = readValue(OrvaNetworkWirelessInterfacePath()).string_();
}

void Networking::createInfoNode(const QString& ethernetMac, const QString& wirelessMac,
                                bool airplaneMode)
{
    OrvaNetworkWiredInterface wired;
    wired.setName(m_wiredInterfaceName);
    wired.setState(OrvaNetworkState::Disconnected);
    wired.setCableConnected(m_lowlevel->cableStatus());
    wired.setMac(ethernetMac);

    OrvaNetworkWps wps;
    wps.setStatus(OrvaNetworkWpsStatus::None);
    OrvaNetworkWirelessInterface wireless;
    wireless.setName(m_wirelessInterfaceName);
    wireless.setState(OrvaNetworkState::Disconnected);
    wireless.setMac(wirelessMac);
    wireless.setWps(wps);

    OrvaNetworkSoftApInterface softAp;
    softAp.setName(QStringLiteral("softap"));
    softAp.setState(OrvaNetworkState::Disconnected);

    OrvaNetworkInfo info;
    info.setState(OrvaNetworkState::Disconnected);
    info.setWired(wired);
    info.setWireless(wireless);
    info.setSoftAp(softAp);
    info.setAirplaneMode(airplaneMode);
    m_infoNode = CMValueNode::create(nodes(), OrvaNetworkInfoPath());
    m_infoNode->setReadOnly(true);
    publishInfo(info);
}

CMValueNode* Networking::createValueNode(const CMPath& path, const OrvaValue& value,
                                         const QString& title)
{
    CMValueNode* node = CMValueNode::create(nodes(), path);
    if (!title.isEmpty())
        node->setTitle(title);
    if (!value.isEmpty())
        node->setValue(value);
    return node;
}

void Networking::createValueNodes(const QString& ethernetMac, const QString& wirelessMac)
{
    m_stateNode = createValueNode(OrvaNetworkStatePath(), toValue(OrvaNetworkState::Disconnected));
    m_connectingMessageNode = createValueNode(OrvaNetworkConnectingMessage(), toValue(QString()));
    m_scanResultsNode = CMListRowsNode::create(nodes(), OrvaNetworkScanResultsPath());
    m_currentStateNode = createValueNode(OrvaNetworkCurrentStatePath());
    LOG4CPLUS_INFO(networkingLogger(), "Ethernet MAC address: " << ethernetMac);
    m_ethernetMacNode = createValueNode(OrvaNetworkStateEthernetMAC(), toValue(ethernetMac));
    LOG4CPLUS_INFO(networkingLogger(), "Wireless MAC address: " << wirelessMac);
    m_wirelessMacNode = createValueNode(OrvaNetworkStateWirelessMAC(), toValue(wirelessMac));
    m_currentMacNode = createValueNode(OrvaNetworkStateCurrentMAC(),
                                       toValue(ethernetMac.isEmpty() ? wirelessMac : ethernetMac));
    m_macMissed = m_currentMacNode->value().string_().isEmpty();
    m_cableStatusNode =
        createValueNode(OrvaNetworkStateCurrentCableStatus(), toValue(m_lowlevel->cableStatus()),
                        QStringLiteral("Current cable status"));
    const OrvaNetworkProfile stored =
        readValue(OrvaNetworkCurrentProfileSettingsPath()).networkProfile();
    m_profileNode = createValueNode(OrvaNetworkProfilePath(), toValue(hidePassword(stored)),
                                    QStringLiteral("Network profile"));
    m_profileNode->setReadOnly(true);
    createWebserverNodes();
}

void Networking::createSoftAps()
{
    CMValueNode* const stations =
        createValueNode(OrvaNetworkConnectedSoftApStationsPath(), OrvaValue(),
                        QStringLiteral("Connected SoftAp stations"));
    stations->setReadOnly(true);
    stations->setPermission(OrvaPermission::Service);
    m_softAps = std::make_unique<SoftAps>(
        *m_lowlevel,
        SoftAps::Worker{name(), [this] { return m_started; }, [this] { return m_clock(); }},
        stations, this);
    connect(m_softAps.get(), &SoftAps::wifiNeeded, this, [this](bool needed) {
        m_wifiResource.requestWifiResource(WifiResource::SoftAp, needed);
    });
    connect(m_softAps.get(), &SoftAps::stateChanged, this,
            [this](const OrvaNetworkState& state) { publishInfo(withSoftApState(info(), state)); });
}

void Networking::createWebserverNodes()
{
    m_webserverPortSuffix = webserverPortSuffix(readValue(OrvaWebserverPortPath()).i32_());
    m_webserverUrlNode = createValueNode(OrvaNetworkLocalWebserverUrlPath(), OrvaValue(),
                                         QStringLiteral("Local Webserver URL"));
    const QString localhost =
        QStringLiteral("http://localhost") + m_webserverPortSuffix + QLatin1Char('/');
    m_localhostUrlNode =
        createValueNode(OrvaNetworkLocalWebserverLocalhostUrlPath(), toValue(localhost),
                        QStringLiteral("Local Webserver URL (localhost)"));
}

template <class Room>
void Networking::bind(const CMPath& path, Room* room, void (Room::*slot)(const CMSetDataRequest&),
                      const QStringList& accepts)
{
    CMActivateNode* node = CMActivateNode::create(nodes(), path);
    node->setAccepts(accepts);
    node->setInvoke(room, slot, Qt::QueuedConnection);
}

void Networking::createActivateNodes()
{
    bind(OrvaNetworkStartPath(), this, &Networking::on_start_req);
    bind(OrvaNetworkRestartPath(), this, &Networking::on_restart_req);
    bind(OrvaNetworkShutdownPath(), this, &Networking::on_shutdown_req);
    bind(OrvaNetworkStopPath(), this, &Networking::on_stop_req);
    bind(OrvaNetworkForceWifiReconnectPath(), this, &Networking::on_forceWifiReconnect_req);
    bind(OrvaNetworkSetNetworkProfilePath(), this, &Networking::on_setNetworkProfile_req,
         {OrvaValue::NetworkProfile()});
    bind(OrvaNetworkRemoveWirelessNetworkPath(), this, &Networking::on_removeWirelessNetwork_req,
         {OrvaValue::String()});
    bind(OrvaNetworkScanPath(), this, &Networking::on_scanNetworks_req);
    bind(OrvaNetworkPerformWpsPbcPath(), this, &Networking::on_performWpsPbc_req);
    bind(OrvaNetworkPerformWpsPinPath(), this, &Networking::on_performWpsPin_req,
         {OrvaValue::String()});
    bind(OrvaNetworkGenerateWpsPinPath(), this, &Networking::on_generateWpsPin_req);
    bind(OrvaNetworkApplyWpsPath(), this, &Networking::on_applyWps_req,
         {OrvaValue::NetworkInterface()});
    bind(OrvaNetworkWirelessRssiPath(), this, &Networking::on_wirelessRssiNode_activated);
    bind(OrvaNetworkRequestSoftApPath(), m_softAps.get(), &SoftAps::on_requestSoftAp_req,
         {OrvaValue::NetworkSoftApRequest()});
    bind(OrvaNetworkRevokeSoftApPath(), m_softAps.get(), &SoftAps::on_revokeSoftAp_req,
         {OrvaValue::NetworkSoftApRequest(), OrvaValue::String()});
}

void Networking::connectTimers()
{
    const auto connectTimer = [this](QTimer& timer, const QString& name, auto slot) {
        timer.setParent(this);
        timer.setObjectName(name);
        timer.setSingleShot(true);
        connect(&timer, &QTimer::timeout, this, slot);
    };
    connectTimer(m_shutdownTimer, QStringLiteral("m_shutdownTimer"),
                 &Networking::on_shutdownTimer_timeout);
    m_shutdownTimer.setInterval(shutdownDelayMs);
    connectTimer(m_softApTimer, QStringLiteral("m_softApTimer"),
                 &Networking::on_softApTimer_timeout);
    connectTimer(m_scanTimer, QStringLiteral("m_scanTimer"), &Networking::on_scanTimer_timeout);
}

void Networking::connectBackend()
{
    using Backend = Networking_LowLevel;
    const Backend* backend = m_lowlevel.get();
    connect(backend, &Backend::ScanResults, this, &Networking::on_lowlevel_ScanResults);
    connect(backend, &Backend::AddressesChanged, this, &Networking::on_lowlevel_AddressesChanged);
    connect(backend, &Backend::AuthError, this, &Networking::on_lowlevel_AuthError);
    connect(backend, &Backend::Error, this, &Networking::on_lowlevel_Error);
    connect(backend, &Backend::InterfaceStatusChanged, this,
            &Networking::on_lowlevel_InterfaceStatusChanged);
}

void Networking::readSoftApAutoEnabled()
{
    if (!m_lowlevel->hasWireless()) {
        LOG4CPLUS_WARN(networkingLogger(),
                       "No wireless interface on the system, disabling softap mode");
        return;
    }
    LOG4CPLUS_DEBUG(networkingLogger(), "There is a wireless interface on the system");
    m_softApAutoEnabled = readValue(OrvaNetworkSoftApAutoEnabledSettingsPath()).bool_();
}

void Networking::createCompanions()
{
    m_wakeOnLan = new WakeOnLan(this);
    m_wifiRestart = new WifiRestart(this, m_wirelessInterfaceName, softapInterfaces());
    CMActivateNode::create(nodes(), OrvaNetworkRequestWifiRestartPath())
        ->setInvoke(m_wifiRestart, &WifiRestart::on_restart_requested, Qt::QueuedConnection);
}

void Networking::registerWithPowerManager()
{
    OrvaPowerManagerModuleRegister registration;
    registration.setModuleName(OrvaNetworkName());
    CMRoot()->invoke(OrvaPowerManagerModuleRegisterPath(), registration,
                     CMReply<QVariant>::create());
}

void Networking::createAirplaneModeNode(const TrString& title, bool airplaneMode)
{
    m_airplaneModeNode = CMValueNode::create(nodes(), OrvaNetworkAirplaneModePath());
    m_airplaneModeNode->setTitle(title);
    // Connected first, so that the stored airplane mode is applied.
    connect(m_airplaneModeNode, &CMValueNode::valueChanged, this,
            &Networking::on_airplaneMode_changed);
    m_airplaneModeNode->setValue(toValue(airplaneMode));
}

void Networking::createSoftApRequestsNode()
{
    CMValueNode* const requests = createValueNode(
        OrvaNetworkSoftApRequestsPath(), OrvaValue::of(OrvaList<OrvaNetworkSoftApRequestStatus>()));
    requests->setReadOnly(true);
    m_softAps->setRequestsNode(requests);
}
