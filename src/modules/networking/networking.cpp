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
#include "softap/softapsettings.h"
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
    createActivateNodes();

    connectTimers();
    connectBackend();
    readSoftApAutoEnabled();
    readSoftApConfiguration();
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
    m_connectedStationsNode = createValueNode(OrvaNetworkConnectedSoftApStationsPath(), OrvaValue(),
                                              QStringLiteral("Connected SoftAp stations"));
    m_connectedStationsNode->setReadOnly(true);
    m_connectedStationsNode->setPermission(OrvaPermission::Service);
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

void Networking::createActivateNodes()
{
    struct Activation
    {
        CMPath path;
        void (Networking::*slot)(const CMSetDataRequest&);
        QStringList accepts = {};
    };
    const Activation activations[] = {
        {OrvaNetworkStartPath(), &Networking::on_start_req},
        {OrvaNetworkRestartPath(), &Networking::on_restart_req},
        {OrvaNetworkShutdownPath(), &Networking::on_shutdown_req},
        {OrvaNetworkStopPath(), &Networking::on_stop_req},
        {OrvaNetworkForceWifiReconnectPath(), &Networking::on_forceWifiReconnect_req},
        {OrvaNetworkSetNetworkProfilePath(),
         &Networking::on_setNetworkProfile_req,
         {OrvaValue::NetworkProfile()}},
        {OrvaNetworkRemoveWirelessNetworkPath(),
         &Networking::on_removeWirelessNetwork_req,
         {OrvaValue::String()}},
        {OrvaNetworkScanPath(), &Networking::on_scanNetworks_req},
        {OrvaNetworkPerformWpsPbcPath(), &Networking::on_performWpsPbc_req},
        {OrvaNetworkPerformWpsPinPath(), &Networking::on_performWpsPin_req, {OrvaValue::String()}},
        {OrvaNetworkGenerateWpsPinPath(), &Networking::on_generateWpsPin_req},
        {OrvaNetworkApplyWpsPath(), &Networking::on_applyWps_req, {OrvaValue::NetworkInterface()}},
        {OrvaNetworkWirelessRssiPath(), &Networking::on_wirelessRssiNode_activated},
        {OrvaNetworkRequestSoftApPath(),
         &Networking::on_requestSoftAp_req,
         {OrvaValue::NetworkSoftApRequest()}},
        {OrvaNetworkRevokeSoftApPath(),
         &Networking::on_revokeSoftAp_req,
         {OrvaValue::NetworkSoftApRequest(), OrvaValue::String()}},
    };
    for (const Activation& activation : activations) {
        CMActivateNode* node = CMActivateNode::create(nodes(), activation.path);
        node->setAccepts(activation.accepts);
        node->setInvoke(this, activation.slot, Qt::QueuedConnection);
    }
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
    connectTimer(m_softApTimeoutTimer, QStringLiteral("m_softApTimeoutTimer"),
                 &Networking::on_softApTimeoutTimer_timeout);
    m_softApTimeoutTimer.setTimerType(Qt::PreciseTimer);
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
    connect(backend, &Backend::StationConnected, this, &Networking::on_lowlevel_StationConnected);
    connect(backend, &Backend::StationDisconnected, this,
            &Networking::on_lowlevel_StationDisconnected);
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

void Networking::readSoftApConfiguration()
{
    const QString defaultSsid = readValue(OrvaNetworkSoftApDefaultSsidSettingsPath()).string_();
    const QString ownSsid = ownSoftApSsid(defaultSsid, m_currentMacNode->value().string_());
    if (!ownSsid.startsWith(defaultSsid + QLatin1Char('_')))
        LOG4CPLUS_WARN(networkingLogger(),
                       "The default SSID of the soft AP is too long, cut to: " << ownSsid);
    const auto configuration =
        readValue(OrvaNetworkSoftApConfigSettingsPath()).networkProfile().softApSettings();
    for (OrvaNetworkProfileSoftApSettings settings : configuration) {
        if (settings.ssid() == defaultSsid)
            settings.setSsid(ownSsid);
        m_softApSettings.insert(settings.apInterface(), settings);
        if (!m_softApInterfaces.contains(settings.apInterface()))
            m_softApInterfaces.append(settings.apInterface());
    }
}

void Networking::createCompanions()
{
    m_wakeOnLan = new WakeOnLan(this);
    m_wifiRestart = new WifiRestart(this, m_wirelessInterfaceName, m_softApInterfaces);
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
    OrvaValue none;
    none.setSoftApRequests({});
    m_softApRequestsNode = createValueNode(OrvaNetworkSoftApRequestsPath(), none);
    m_softApRequestsNode->setReadOnly(true);
}
