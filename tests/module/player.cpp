// SPDX-License-Identifier: Apache-2.0
#include "player.h"

#include "logcapture.h"
#include "network/networkpaths.h"

#include <QTranslator>

namespace {

/// A language in which each text is its context and itself, "context/text".
class Contexts : public QTranslator
{
public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        return QLatin1String(context) + "/"_s + QLatin1String(text);
    }
};

QString first(const QString& text)
{
    return text.section(" "_s, 0, 0);
}

QString rest(const QString& text)
{
    return text.section(" "_s, 1);
}

/// JSON, or a text.
OrvaValue valueOf(const QString& what)
{
    if (what.startsWith("{"_s))
        return json(what.toUtf8());
    return what.isEmpty() ? OrvaValue() : OrvaValue::of(what);
}

/// A text with "n*3" in the place of "nnn".
QString expanded(QString text)
{
    static const QRegularExpression repeated("(\\w)\\*(\\d+)"_s,
                                             QRegularExpression::UseUnicodePropertiesOption);
    for (auto found = repeated.match(text); found.hasMatch(); found = repeated.match(text))
        text.replace(found.capturedStart(), found.capturedLength(),
                     found.captured(1).repeated(found.captured(2).toInt()));
    return text;
}

/// A text as it is, a list of texts parted by ",", all else as JSON.
QString textOf(const QVariant& value)
{
    if (value.userType() == QMetaType::QString)
        return value.toString();
    if (value.userType() == QMetaType::QStringList)
        return value.toStringList().join(","_s);
    return QString::fromUtf8(OrvaPlain::toJson(value));
}

/// A node as its path below "network", "()" of an activate node, "rows", "r" of a read-only one,
/// its permission and its title.
QString textOf(const CMNodeInfo& node)
{
    QString text = node.path.toString().mid(8);
    if (node.kind != QLatin1String("value"))
        text += node.kind == QLatin1String("rows") ? " rows"_s : "()"_s;
    else if (node.readOnly)
        text += " r"_s;
    if (node.permission != OrvaPermission::Default)
        text += " %1"_s.arg(static_cast<qint32>(node.permission));
    return node.title.isEmpty() ? text : text + " \"%1\""_s.arg(node.title);
}

/// The profile that sets a network with a key of its own, as a client does that knows no list.
/// `what` is its SSID, and the number of the profile's type if it has one.
OrvaValue setting(const QString& what)
{
    OrvaNetworkInterface network = wpaNetwork(first(what));
    network.setKey("secret-new"_s);
    OrvaNetworkProfile profile;
    profile.setWireless(network);
    profile.setType(static_cast<OrvaNetworkProfileType::Value>(rest(what).toInt()));
    return OrvaValue::of(profile);
}

QVariantList rowsOf(WorkerFixture& fixture, const CMPath& path)
{
    const auto reply = CMReply<QVariant>::create();
    fixture.root.request(CMGetRowsRequest{path, reply});
    return reply.value().toList();
}

/// The requests to the power manager, in order: "+" for a request, "-" for a release, "?" for
/// nothing.
QString powerRequests(WorkerFixture& fixture)
{
    QString actions;
    const QVariantList rows = rowsOf(fixture, CMPath("power/requests"_s));
    for (const QVariant& row : rows)
        actions += "?+-"_s.at(OrvaRoles(row.toHash()).value().__hash()["action"_s].toInt());
    return actions;
}

/// Those who ask for a soft AP, and in how many ms that ends.
QString live(WorkerFixture& fixture, qint64 now)
{
    QStringList names;
    const auto rows = fixture.value(OrvaNetworkSoftApRequestsPath()).softApRequests();
    for (const auto& row : rows)
        names << row.name() + (row.expiresAtMs() == 0 ? QString()
                                                      : QString::number(row.expiresAtMs() - now));
    return names.join(" "_s);
}

QVector<OrvaNetworkScanResult> networks(int count)
{
    constexpr int differentSsids = 5000;
    QVector<OrvaNetworkScanResult> results(count);
    for (int i = 0; i < count; ++i)
        results[i].setSsid("net%1"_s.arg(i % differentSsids));
    return results;
}

} // namespace

/// A client on the bus.
class Player::Client : public CMCaller
{
public:
    void whenGone(QObject* context, const std::function<void()>& gone) override
    {
        m_followers.append({context, gone});
    }
    void go()
    {
        for (const auto& [context, gone] : std::exchange(m_followers, {}))
            if (context)
                gone();
    }

private:
    QVector<QPair<QPointer<QObject>, std::function<void()>>> m_followers;
};

Player::Player()
    : m_log(LogCapture::install())
{
    addEvents();
    addRequests();
    addFacts();
    addPictureFacts();
}

Player::Player(const QStringList& steps)
    : Player()
{
    give(steps);
    m_fixture = std::make_unique<WorkerFixture>(m_values, [&](ScriptedBackend& backend) {
        m_backend = &backend;
        for (const QString& what : std::as_const(m_ofBackend))
            m_events[first(what)](rest(what));
    });
    QObject::connect(m_fixture->worker, &CMAbstractWorker::valueChanged,
                     [this](const CMPath& path) { m_changed << path.toString(); });
}

Player::~Player() = default;

void Player::give(const QStringList& steps)
{
    for (const QString& step : steps) {
        const QString what = rest(step);
        if (first(step) != "given"_s)
            continue;
        if (first(what) == "networks"_s)
            m_values.insert(OrvaNetworkCurrentProfileSettingsPath(),
                            OrvaValue::of(profileWith(rest(what).split(","_s))));
        else if (what.contains("/"_s))
            m_values.insert(CMPath(first(what)), valueOf(rest(what)));
        else
            m_ofBackend << what;
    }
}

void Player::start(const Networking::BackendFactory& createBackend)
{
    m_patience = 20000;
    m_fixture.reset();
    m_fixture = std::make_unique<WorkerFixture>(m_values, createBackend);
}

QStringList Player::row(const QString& section, QStringList cells)
{
    cells.first() = section + "; "_s + cells.first();
    return cells;
}

QString Player::playRow(const QStringList& cells)
{
    for (int i = 0; i < cells.size(); ++i) {
        const bool isFacts = i % 2 == 1;
        for (const QString& part : cells.at(i).split("; "_s)) {
            const QString wrong = isFacts ? check(part) : play(part);
            if (!wrong.isEmpty())
                return wrong;
        }
    }
    return m_log.count("secret-"_s) == 0 ? QString() : "a key is in the log"_s;
}

bool Player::await(const std::function<bool()>& condition) const
{
    return m_patience == 0 ? condition() : QTest::qWaitFor(condition, m_patience);
}

QString Player::play(const QString& step)
{
    const QString what = step.section(" => "_s, 0, 0);
    if (what.isEmpty() || first(what) == "given"_s)
        return QString();
    if (first(what) == "send"_s) {
        begin(rest(what));
        return QString();
    }
    const auto reply = begin(what);
    HeldClock::settle();
    const QString expected = step.section(" => "_s, 1);
    if (!reply || await([&] { return WorkerFixture::outcome(reply) == expected; }))
        return QString();
    return "%1 ended with \"%2\""_s.arg(step, WorkerFixture::outcome(reply));
}

CMReply<QVariant> Player::begin(const QString& step)
{
    const QString verb = first(step);
    const QString what = expanded(rest(step));
    CMReply<QVariant> reply;
    if (m_events.contains(verb))
        m_events[verb](what);
    else if (m_requests.contains(verb))
        reply = m_requests[verb](what);
    else
        reply = m_fixture->send(CMPath("network/"_s + verb), valueOf(what));
    if (reply) {
        m_replies << reply;
        reply.addWatcher(
            [this, number = m_replies.size()](const auto&) { m_ended << QString::number(number); });
    }
    return reply;
}

QString Player::check(const QString& fact) const
{
    QString name = fact;
    while (!m_facts.contains(name) && name.contains(" "_s))
        name = name.section(" "_s, 0, -2);
    const bool isNode = !m_facts.contains(name);
    name = isNode ? first(fact) : name;
    const QString expected = fact.mid(name.size() + 1);
    QString found;
    const auto isTrue = [&] {
        found = isNode ? textOf(m_fixture->value(CMPath(name)).__variant())
                       : textOf(m_facts.value(name)());
        return found == expected;
    };
    return await(isTrue) ? QString()
                         : "%1 is \"%2\" instead of \"%3\""_s.arg(name, found, expected);
}

void Player::refresh(const QString& what)
{
    if (what.startsWith("{"_s)) {
        m_backend->state = OrvaNetworkInfo(OrvaPlain::fromJson(what.toUtf8())->toHash());
    } else if (!what.isEmpty()) {
        OrvaNetworkWirelessInterface wireless;
        wireless.setSsid(what);
        m_backend->state.setWireless(wireless);
    }
    Q_EMIT m_backend->AddressesChanged();
}

void Player::addEvents()
{
    using Status = Networking_LowLevel::InterfaceStatus;
    using What = const QString&;
    m_events = {
        {"pass"_s, [](What ms) { HeldClock::instance().pass(ms.toInt()); }},
        {"lag"_s, [](What ms) { HeldClock::lag(ms.toInt()); }},
        {"up"_s, [this](What name) { m_fixture->worker->setLinkStatus(name, true); }},
        {"down"_s, [this](What name) { m_fixture->worker->setLinkStatus(name, false); }},
        {"leave"_s, [this](What name) { m_fixture->worker->setDisconnecting(name); }},
        {"refuse"_s, [this](What command) { m_backend->refused << command; }},
        {"allow"_s, [this](What command) { m_backend->refused.removeAll(command); }},
        {"rssi"_s, [this](What dbm) { m_backend->rssi = dbm.toDouble(); }},
        {"refresh"_s, [this](What what) { refresh(what); }},
        {"wrong"_s, [this](What ssid) { Q_EMIT m_backend->AuthError(ssid, "wrong key"_s); }},
        {"found"_s, [this](What count) { Q_EMIT m_backend->ScanResults(networks(count.toInt())); }},
        {"barred"_s,
         [this](What count) { Q_EMIT m_backend->UnsupportedNetworks(networks(count.toInt())); }},
        {"fails"_s, [this](What why) { Q_EMIT m_backend->SoftApError("uap0"_s, why); }},
        {"joins"_s, [this](What mac) { Q_EMIT m_backend->StationConnected(mac); }},
        {"leaves"_s, [this](What mac) { Q_EMIT m_backend->StationDisconnected(mac); }},
        {"paired"_s, [this](What ssid) { m_backend->wpsReply.finish(wpaNetwork(ssid)); }},
        {"unpaired"_s,
         [this](What why) { m_backend->wpsReply.setError(CMError("WpsError"_s, why)); }},
        {"forgotten"_s, [this](What) { m_backend->wpsReply = {}; }},
    };
    m_events["cable"_s] = [this](What where) {
        m_backend->cable = where == "in"_s;
        if (m_fixture)
            m_fixture->worker->setCurrentCableStatus(m_backend->cable);
    };
    m_events["disk"_s] = [this](What how) {
        m_fixture->store->full = how == "full"_s;
        m_fixture->store->mute = how == "mute"_s;
    };
    m_events["translate"_s] = [this](What) {
        m_language = std::make_unique<Contexts>();
        QCoreApplication::installTranslator(m_language.get());
    };
    // "deaf wired" hears of the wireless interface alone.
    m_events["deaf"_s] = [this](What how) {
        m_backend->ethernetMac = how == "off"_s ? "00:11:22:aa:bb:cc"_s : QString();
        m_backend->wirelessMac = how != "on"_s ? "00:11:22:dd:ee:ff"_s : QString();
    };
    m_events["radio"_s] = [this](What there) {
        m_backend->wireless = there == "there"_s;
        if (m_fixture)
            Q_EMIT m_backend->InterfaceStatusChanged("wlan0"_s, Status::Idle);
    };
    m_events["busy"_s] = [this](What on) {
        m_backend->status = on == "on"_s ? Status::Unknown : Status::Idle;
        Q_EMIT m_backend->InterfaceStatusChanged("wlan0"_s, m_backend->status);
    };
    m_events["status"_s] = [this](What code) {
        Q_EMIT m_backend->InterfaceStatusChanged("wlan0"_s, static_cast<Status>(code.toInt()));
    };
    m_events["client"_s] = [this](What how) {
        if (how == "goes"_s)
            m_client->go();
        else
            m_client = std::make_shared<Client>();
    };
    m_events["airplane"_s] = [this](What on) {
        m_fixture->root.setValue(OrvaNetworkAirplaneModePath(), OrvaValue::of(on == "on"_s), {});
    };
    // "when COMMAND STEP": the step runs inside the backend's command, as in a backend that reports
    // at once.
    m_events["when"_s] = [this](What what) {
        m_backend->onCommand = [this, what](What command) {
            if (command == first(what))
                begin(rest(what));
        };
    };
    m_events["flood"_s] = [this](What count) {
        for (int i = 0; i < count.toInt(); ++i)
            refresh({});
    };
    m_events["crowd"_s] = [this](What count) {
        for (int i = 0; i < count.toInt(); ++i)
            begin(R"(ask n%1 {"ssid":"A%1"})"_s.arg(i));
    };
    m_events["listen"_s] = [this](What) { // from now on
        m_changed.clear();
        m_backend->readouts = 0;
    };
}

CMReply<QVariant> Player::softAp(const CMPath& path, const QString& what)
{
    const QString hold = " hold"_s;
    const QString bound = " bound"_s;
    const int end = what.lastIndexOf("}"_s) + 1;
    const QString tail = what.mid(qMax(end, first(what).size()));
    OrvaNetworkProfileSoftApRequest request;
    request.setName(first(what));
    request.setSettings(OrvaNetworkProfileSoftApSettings(
        end > 0 ? OrvaPlain::fromJson(what.mid(0, end).section(" "_s, 1).toUtf8())->toHash()
                : QVariantHash()));
    request.setTimeout(QString(tail).remove(hold).remove(bound).trimmed().toInt());
    request.setHoldSoftAp(tail.contains(hold));
    request.setBound(tail.contains(bound));
    const auto reply = m_fixture->send(path, OrvaValue::of(request));
    reply.data()->setCaller(m_client);
    return reply;
}

void Player::addRequests()
{
    using What = const QString&;
    m_requests["remove"_s] = [this](What ssid) {
        return m_fixture->send(OrvaNetworkRemoveWirelessNetworkPath(), OrvaValue::of(ssid));
    };
    m_requests["set"_s] = [this](What what) {
        return m_fixture->send(OrvaNetworkSetNetworkProfilePath(), setting(what));
    };
    m_requests["try"_s] = [this](What what) { // "SSID" and the ms in which it is to be confirmed
        OrvaNetworkProfileTrial trial;
        trial.setProfile(setting(first(what)).networkProfile());
        trial.setConfirmWithinMs(rest(what).toInt());
        return m_fixture->send(OrvaNetworkTryNetworkProfilePath(), OrvaValue::of(trial));
    };
    m_requests["edit"_s] = [this](What) { // what is published, to use the last network
        auto profile = m_fixture->value(OrvaNetworkProfilePath()).networkProfile();
        profile.setWireless(profile.wirelessNetworks().last());
        return m_fixture->send(OrvaNetworkSetNetworkProfilePath(), OrvaValue::of(profile));
    };
    m_requests["apply"_s] = [this](What ssid) {
        return m_fixture->send(OrvaNetworkApplyWpsPath(), OrvaValue::of(wpaNetwork(ssid)));
    };
    m_requests["ask"_s] = [this](What what) {
        return softAp(OrvaNetworkRequestSoftApPath(), what);
    };
    m_requests["revoke"_s] = [this](What what) {
        return softAp(OrvaNetworkRevokeSoftApPath(), what);
    };
    m_requests["silently"_s] = [this](What path) { // wants no answer
        m_fixture->root.invoke(CMPath("network/"_s + path), OrvaValue(), {});
        return CMReply<QVariant>();
    };
    m_requests["write"_s] = [this](What what) {
        const auto reply = CMReply<QVariant>::create();
        m_fixture->root.setValue(CMPath(first(what)), valueOf(rest(what)), reply);
        return reply;
    };
}

void Player::addFacts()
{
    m_facts = {
        {"asked"_s, [this] { return m_backend->commands; }},
        {"ended"_s, [this] { return m_ended.join(" "_s); }},
        {"answer"_s, [this] { return m_replies.last().value(); }},
        {"results"_s,
         [this] {
             const OrvaValue answer(m_replies.last().value().toHash());
             return answer.networkScanResults().size();
         }},
        {"barred"_s,
         [this] { return rowsOf(*m_fixture, OrvaNetworkUnsupportedNetworksPath()).size(); }},
        {"rows"_s, [this] { return rowsOf(*m_fixture, OrvaNetworkScanResultsPath()).size(); }},
        {"used"_s,
         [this] { return ssidsOf(m_backend->profiles.value(m_backend->profiles.size() - 1)); }},
        {"last used"_s, [this] { return m_backend->profiles.last().__variant(); }},
        {"writes"_s, [this] { return m_fixture->store->writes.size(); }},
        {"started"_s, [this] { return m_backend->startedSoftAps.size(); }},
        {"last started"_s, [this] { return m_backend->startedSoftAps.last().__variant(); }},
        {"stopped"_s, [this] { return m_backend->stoppedSoftAps.size(); }},
        {"live"_s, [this] { return live(*m_fixture, HeldClock::now()); }},
        {"counted"_s, [this] { return m_log.count("Failed connection attempts"_s); }},
        {"power"_s, [this] { return powerRequests(*m_fixture); }},
        {"modules"_s, [this] { return rowsOf(*m_fixture, CMPath("power/modules"_s)).size(); }},
        {"rfkill"_s, [this] { return m_fixture->rfkillCalls(); }},
        {"pin"_s, [this] { return m_backend->wpsPin; }},
        {"readouts"_s, [this] { return m_backend->readouts; }},
        {"changed"_s, [this] { return m_changed.join(" "_s); }},
    };
    m_facts["answers"_s] = [this] {
        QStringList ends;
        for (const auto& reply : std::as_const(m_replies)) {
            const QString end = WorkerFixture::outcome(reply);
            ends << (end.isEmpty() ? "ok"_s : end);
        }
        return ends.join(" / "_s);
    };
    m_facts["due"_s] = [this] {
        QStringList all;
        for (const int ms : HeldClock::instance().due(m_fixture->worker))
            all << QString::number(ms);
        return all;
    };
    m_facts["ssid"_s] = [this] {
        const auto& softAps = m_backend->startedSoftAps;
        return softAps.isEmpty() ? QString() : softAps.last().ssid();
    };
    m_facts["nodes"_s] = [this] {
        QStringList nodes;
        for (const CMNodeInfo& node : m_fixture->worker->nodeInfos())
            nodes << textOf(node);
        return nodes.join(", "_s);
    };
}

void Player::addPictureFacts()
{
    const QMap<QString, QString> fields = {{"wired"_s, "wired.state"_s},
                                           {"wireless"_s, "wireless.state"_s},
                                           {"softap"_s, "softAp.state"_s},
                                           {"overall"_s, "state"_s},
                                           {"wired mac"_s, "wired.mac"_s},
                                           {"wired cable"_s, "wired.cableConnected"_s},
                                           {"wired name"_s, "wired.name"_s},
                                           {"wireless name"_s, "wireless.name"_s},
                                           {"softap name"_s, "softAp.name"_s},
                                           {"airplane"_s, "airplaneMode"_s},
                                           {"wired status"_s, "wired.connectingStatus"_s},
                                           {"wireless status"_s, "wireless.connectingStatus"_s},
                                           {"wps"_s, "wireless.wps"_s},
                                           {"frequency"_s, "wireless.frequency"_s},
                                           {"channel"_s, "wireless.channel"_s},
                                           {"signal"_s, "wireless.signalLevel"_s}};
    for (auto field = fields.begin(); field != fields.end(); ++field)
        m_facts[field.key()] = [this, path = *field] {
            QVariant value = m_fixture->info().__variant();
            for (const QString& key : path.split("."_s))
                value = value.toHash().value(key);
            return value;
        };
    const auto stored = [this] {
        return m_fixture->value(OrvaNetworkCurrentProfileSettingsPath()).networkProfile();
    };
    m_facts["stored"_s] = [stored] { return ssidsOf(stored()); };
    m_facts["coming back"_s] = [this] {
        const auto kept = m_fixture->value(OrvaNetworkRollbackProfileSettingsPath());
        const auto pending =
            m_fixture->value(OrvaNetworkPendingProfilePath()).networkPendingProfile();
        return QStringList{
            ssidsOf(kept.networkProfile()).join("+"_s), ssidsOf(pending.before()).join("+"_s),
            QString::number(qMax(Q_INT64_C(0), pending.untilMs() - HeldClock::now()))}
            .join(" "_s);
    };
    m_facts["join"_s] = [this] {
        const auto join = m_fixture->value(OrvaNetworkLastJoinPath()).networkLastJoin();
        return QStringList{join.ssid(), OrvaNetworkJoinResult::toString(join.result()),
                           OrvaNetworkJoinReason::toString(join.reason()),
                           QString::number(HeldClock::now() - join.whenMs())}
            .join(" "_s);
    };
    m_facts["backups"_s] = [this] {
        return m_fixture->writes(OrvaNetworkBackupProfileSettingsPath()).size();
    };
    m_facts["requesters"_s] = [this] {
        return m_fixture->value(OrvaNetworkSoftApRequestsPath()).softApRequests().size();
    };
    m_facts["known"_s] = [this] {
        const OrvaNetworkInfo info = m_fixture->info();
        const bool isKnown = info.__contains(OrvaNetworkInfo::WirelessNetworks());
        return isKnown ? ssidsOf(info) : QStringList("-"_s);
    };
    m_facts["suspects"_s] = [this] {
        QStringList suspects;
        for (const auto& network : m_fixture->info().wirelessNetworks())
            if (network.__hash().value("credentialsSuspect"_s).toBool())
                suspects << network.ssid();
        return suspects;
    };
    m_facts["link"_s] = [this] { return m_fixture->worker->linkStatus() ? 1 : 0; };
    m_facts["mac"_s] = [this] {
        return m_fixture->value(OrvaNetworkStateCurrentMAC()).string_().right(2);
    };
    m_facts["message"_s] = [this] {
        return m_fixture->value(OrvaNetworkConnectingMessage()).string_();
    };
}
