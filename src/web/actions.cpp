// SPDX-License-Identifier: Apache-2.0
#include "actions.h"

#include "bodies.h"
#include "network/networkpaths.h"

#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto answerPatience = 40s;
/// A session lasts two minutes: the time to walk to the router.
constexpr auto sessionPatience = 130s;

/// The time in which a phone follows the device to where it is then, by hand where it must.
constexpr auto trialTime = 120s;

constexpr int maxSsidBytes = 32;
constexpr int maxTrialId = 32;

/// Passes on success, with these fields, or the error, and nothing of the answer, which may hold a
/// key.
HostLink::Done withoutAnswer(const Actions::Done& done, const QVariantHash& fields = {})
{
    return [done, fields](const OrvaResult<OrvaValue>& answer) {
        if (answer)
            done(fields);
        else
            done(answer.error());
    };
}

bool isSsid(const QString& ssid)
{
    return !ssid.isEmpty() && ssid.toUtf8().size() <= maxSsidBytes;
}

} // namespace

const Actions::Row Actions::rows[] = {
    {"scan", &Actions::scan},
    {"join", &Actions::join},
    {"forget", &Actions::forget},
    {"address", &Actions::setAddress},
    {"airplane", &Actions::setAirplane},
    {"wps-button", &Actions::pressWps},
    {"wps-new-pin", &Actions::makePin},
    {"wps-pin", &Actions::useWpsPin},
    {"softap", &Actions::openSoftAp},
    {"softap-auto", &Actions::setSoftApAuto},
    {"finish", &Actions::finish},
    {"confirm", &Actions::confirm},
    {"rollback", &Actions::rollBack},
};

Actions::Actions(HostLink& host, SoftApKeeper& softAp)
    : m_host(host)
    , m_softAp(softAp)
{
}

bool Actions::contains(const QByteArray& name)
{
    return std::any_of(std::begin(rows), std::end(rows),
                       [&name](const Row& row) { return name == row.name; });
}

void Actions::run(const QByteArray& name, const QByteArray& body, WayIn way, const Done& done)
{
    m_way = way;
    for (const Row& row : rows) {
        if (name == row.name)
            (this->*row.step)(body, done);
    }
}

template <class Body>
std::optional<Body> Actions::read(const QByteArray& json, const Done& done)
{
    const auto body = parseBody<Body>(json);
    if (body)
        return *body;
    done(body.error());
    return std::nullopt;
}

void Actions::invoke(const CMPath& path, const OrvaValue& value, const Done& done)
{
    m_host.invoke(path, value, answerPatience, withoutAnswer(done));
}

void Actions::setProfile(const OrvaNetworkProfile& profile, const Done& done)
{
    invoke(OrvaNetworkSetNetworkProfilePath(), OrvaValue::of(profile), done);
}

void Actions::tryProfile(const OrvaNetworkProfile& profile, const QString& id, const Done& done)
{
    if (id.size() > maxTrialId)
        return done(malformedBody(QStringLiteral("\"trial\" has at most 32 characters")));
    // Known before the host tells of the trial, whose end may take the answer's way along.
    const QString before = std::exchange(m_trial, id);
    const auto tried = [this, before, done](const OrvaResult<QVariantHash>& answer) {
        if (!answer)
            m_trial = before;
        done(answer);
    };
    OrvaNetworkProfileTrial trial;
    trial.setProfile(profile);
    trial.setConfirmWithinMs(static_cast<qint32>(std::chrono::milliseconds(trialTime).count()));
    m_host.invoke(OrvaNetworkTryNetworkProfilePath(), OrvaValue::of(trial), answerPatience,
                  withoutAnswer(tried, {{QStringLiteral("trial"), true}}));
}

void Actions::scan(const QByteArray& json, const Done& done)
{
    if (read<EmptyBody>(json, done))
        invoke(OrvaNetworkScanPath(), {}, done);
}

void Actions::join(const QByteArray& json, const Done& done)
{
    const auto body = read<JoinBody>(json, done);
    if (!body)
        return;
    if (!isSsid(body->ssid()))
        return done(malformedBody(QStringLiteral("\"ssid\" has 1 to 32 bytes")));
    // The network would replace the whole profile if the present one were not known.
    if (m_host.value(OrvaNetworkProfilePath()).isEmpty())
        return done(CMError(QStringLiteral("absent"), TrString("The host is not there yet")));
    const OrvaNetworkProfile profile = profileToJoin(
        m_host.value(OrvaNetworkProfilePath()).networkProfile(), *body, m_host.seen());
    if (m_way == WayIn::Wireless)
        tryProfile(profile, body->trial(), done);
    else
        setProfile(profile, done);
}

void Actions::forget(const QByteArray& json, const Done& done)
{
    if (const auto body = read<NetworkBody>(json, done))
        invoke(OrvaNetworkRemoveWirelessNetworkPath(), OrvaValue::of(body->ssid()), done);
}

void Actions::setAddress(const QByteArray& json, const Done& done)
{
    const auto body = read<AddressBody>(json, done);
    if (!body)
        return;
    const auto profile =
        profileWithAddress(m_host.value(OrvaNetworkProfilePath()).networkProfile(), *body);
    const WayIn endangered =
        body->interface() == QLatin1String("wired") ? WayIn::Wired : WayIn::Wireless;
    if (!profile)
        done(profile.error());
    else if (m_way == endangered)
        tryProfile(*profile, body->trial(), done);
    else
        setProfile(*profile, done);
}

void Actions::setAirplane(const QByteArray& json, const Done& done)
{
    if (const auto body = read<SwitchBody>(json, done))
        m_host.setValue(OrvaNetworkAirplaneModePath(), OrvaValue::of(body->on()),
                        withoutAnswer(done));
}

void Actions::runWps(const CMPath& path, const OrvaValue& value, const Done& done)
{
    m_host.invoke(path, value, sessionPatience, [this, done](const OrvaResult<OrvaValue>& network) {
        if (!network)
            return done(network.error());
        const QVariantHash name = {{NetworkBody::Ssid(), network->networkInterface().ssid()}};
        invoke(OrvaNetworkApplyWpsPath(), *network, [done, name](const auto& applied) {
            done(applied ? OrvaResult<QVariantHash>(name) : applied);
        });
    });
}

void Actions::pressWps(const QByteArray& json, const Done& done)
{
    if (read<EmptyBody>(json, done))
        runWps(OrvaNetworkPerformWpsPbcPath(), {}, done);
}

void Actions::makePin(const QByteArray& json, const Done& done)
{
    if (!read<EmptyBody>(json, done))
        return;
    m_host.invoke(OrvaNetworkGenerateWpsPinPath(), {}, answerPatience,
                  [done](const OrvaResult<OrvaValue>& pin) {
                      if (pin)
                          done(QVariantHash{{PinBody::Pin(), pin->string_()}});
                      else
                          done(pin.error());
                  });
}

void Actions::useWpsPin(const QByteArray& json, const Done& done)
{
    if (const auto body = read<PinBody>(json, done))
        runWps(OrvaNetworkPerformWpsPinPath(), OrvaValue::of(body->pin()), done);
}

void Actions::openSoftAp(const QByteArray& json, const Done& done)
{
    const auto body = read<SoftApBody>(json, done);
    if (!body)
        return;
    if (!body->ssid().isEmpty() && !isSsid(body->ssid()))
        return done(malformedBody(QStringLiteral("\"ssid\" has 1 to 32 bytes")));
    OrvaNetworkProfileSoftApSettings settings;
    if (!body->ssid().isEmpty())
        settings.setSsid(body->ssid());
    if (!body->passphrase().isEmpty())
        settings.setPassphrase(body->passphrase());
    m_softAp.open(settings, withoutAnswer(done));
}

void Actions::finish(const QByteArray& json, const Done& done)
{
    if (read<EmptyBody>(json, done))
        m_softAp.close(withoutAnswer(done));
}

void Actions::confirm(const QByteArray& json, const Done& done)
{
    if (read<EmptyBody>(json, done))
        invoke(OrvaNetworkConfirmProfilePath(), {}, done);
}

void Actions::rollBack(const QByteArray& json, const Done& done)
{
    if (read<EmptyBody>(json, done))
        invoke(OrvaNetworkRollbackProfilePath(), {}, done);
}

void Actions::setSoftApAuto(const QByteArray& json, const Done& done)
{
    if (const auto body = read<SwitchBody>(json, done))
        m_host.setValue(OrvaNetworkSoftApAutoEnabledSettingsPath(), OrvaValue::of(body->on()),
                        withoutAnswer(done));
}
