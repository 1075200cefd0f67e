// SPDX-License-Identifier: Apache-2.0
#include "hostcontrol.h"

#include "common/busnames.h"
#include "host1adaptor.h"

#include <QCoreApplication>
#include <QDBusError>

namespace {

constexpr qint64 maxValue = 1 << 20;   // bytes of what a node announces
constexpr qint64 maxAnswer = 16 << 20; // bytes; the bus throws off who sends it twice as much

ORVA_LOGGER(controlLogger, "HostControl")

QString objectPath()
{
    return QStringLiteral("/org/orva/Host1");
}

/// A value as an answer's arguments; nothing where it has more bytes than `limit`.
std::optional<QVariantList> toBusWithin(qint64 limit, const QVariant& value)
{
    if (orvaBusSize(value) > limit)
        return std::nullopt;
    return QVariantList{OrvaPlain::toBus(value.toHash())};
}

std::optional<QVariantList> valueToBus(const QVariant& value)
{
    return toBusWithin(maxValue, value);
}

std::optional<QVariantList> resultToBus(const QVariant& value)
{
    return toBusWithin(maxAnswer, value);
}

std::optional<QVariantList> nothingToBus(const QVariant&)
{
    return QVariantList();
}

std::optional<QVariantList> rowsToBus(const QVariant& rows)
{
    if (orvaBusSize(rows) > maxAnswer)
        return std::nullopt;
    OrvaBusRows onBus;
    const QVariantList plain = rows.toList();
    for (const QVariant& row : plain)
        onBus << OrvaPlain::toBus(row.toHash());
    return QVariantList{QVariant::fromValue(onBus)};
}

/// A value from the bus as a plain one, each known field of it of the right type.
OrvaResult<OrvaValue> valueFromBus(const OrvaBusValue& foreign)
{
    if (!foreign.plain)
        return foreign.plain.error();
    const QString malformed = orvaMalformedField(OrvaValue::fields(), *foreign.plain);
    if (malformed.isEmpty())
        return OrvaValue(*foreign.plain);
    return CMError::failed(
        QStringLiteral("its \"%1\" is, or holds, something of the wrong type or out of range")
            .arg(malformed));
}

CMError accessDenied(const CMPath& path)
{
    return {QStringLiteral("AccessDenied"),
            TrString(trExtractContext("CMError {anonymous}::accessDenied(const CMPath&)"),
                     "The node at \"%1\" is for root and the host's own user alone.",
                     {path.toString()})};
}

} // namespace

HostControl::HostControl(CMAbstractWorker& root, const QDBusConnection& connection)
    : m_root(root)
    , m_connection(connection)
    , m_callers(connection)
{
    registerBusTypes();
    new Host1Adaptor(this);
}

OrvaResult<void> HostControl::start()
{
    if (!m_connection.isConnected())
        return CMError::failed(QStringLiteral("there is no bus: ") +
                               m_connection.lastError().message());
    auto* sieve = BusSieve::install(m_connection);
    connect(sieve, &BusSieve::heard, this, [this, sieve] {
        sieve->listen();
        Q_EMIT heard();
    });
    m_connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                         QStringLiteral("org.freedesktop.DBus.Local"),
                         QStringLiteral("Disconnected"), this, SLOT(on_disconnected()));
    if (m_connection.registerObject(objectPath(), this) &&
        m_connection.registerService(serviceName())) {
        settleBusNames(m_connection, this);
        return {};
    }
    return CMError::failed(m_connection.lastError().isValid()
                               ? m_connection.lastError().message()
                               : QStringLiteral("another host has the name ") + serviceName());
}

void HostControl::announceChanges()
{
    connect(&m_root, &CMAbstractWorker::valueChanged, this, &HostControl::announce);
    connect(&m_root, &CMAbstractWorker::rowsChanged, this,
            [this](const CMPath& path) { Q_EMIT RowsChanged(path.toString()); });
}

QString HostControl::serviceName()
{
    return QStringLiteral("org.orva.Host1");
}

QString HostControl::version() const
{
    return QCoreApplication::applicationVersion();
}

QVariantMap HostControl::GetValue(const QString& path)
{
    const CMPath node(path);
    admit(node, CallerTurns::Work::AtOnce, [this, node](const BusCall& call) {
        m_root.request(CMGetDataRequest{node, call.reply(valueToBus)});
    });
    return {};
}

void HostControl::SetValue(const QString& path, const OrvaBusValue& value)
{
    const CMPath node(path);
    const auto set = [this, node](const BusCall& call, const OrvaValue& plain) {
        if (plain.typeKey().isEmpty())
            return call.fail(CMError::malformedValue(
                node, QStringLiteral("it does not have one key that names its type")));
        m_root.setValue(node, plain, call.reply(nothingToBus));
    };
    admitValue(node, CallerTurns::Work::AtOnce, value, set);
}

QVariantMap HostControl::Invoke(const QString& path, const OrvaBusValue& value)
{
    const CMPath node(path);
    const auto invoke = [this, node](const BusCall& call, const OrvaValue& plain) {
        const auto reply = call.reply(resultToBus);
        reply.data()->setCaller(m_callers.caller(call.caller()));
        m_root.invoke(node, plain, reply);
    };
    // An activate node's slot runs from the event loop.
    admitValue(node, CallerTurns::Work::Later, value, invoke);
    return {};
}

OrvaBusRows HostControl::GetRows(const QString& path)
{
    const CMPath node(path);
    admit(node, CallerTurns::Work::AtOnce, [this, node](const BusCall& call) {
        m_root.request(CMGetRowsRequest{node, call.reply(rowsToBus)});
    });
    return {};
}

OrvaBusNodes HostControl::ListNodes()
{
    OrvaBusNodes nodes;
    const auto infos = m_root.nodeInfos();
    for (const CMNodeInfo& info : infos)
        nodes.append({info.path.toString(), info.kind, info.title,
                      OrvaPermission::toString(info.permission), info.readOnly, info.type});
    return nodes;
}

void HostControl::announce(const CMPath& path, const OrvaValue& value)
{
    QVariantMap shown;
    if (orvaBusSize(value.__hash()) > maxValue)
        LOG4CPLUS_WARN(controlLogger(), "The value at " << path << " is too large for the bus");
    else if (!m_root.isSecret(path))
        shown = OrvaPlain::toBus(value.__hash());
    Q_EMIT ValueChanged(path.toString(), shown);
}

void HostControl::on_disconnected()
{
    Q_EMIT busLost();
}

void HostControl::admit(const CMPath& path, CallerTurns::Work work, const Action& action)
{
    setDelayedReply(true);
    const BusCall call(m_connection, message());
    m_turns.add(call.caller(), work, [this, path, action, call] {
        if (!m_root.isSecret(path))
            return action(call);
        m_callers.askTrusted(call.caller(), [path, action, call](bool trusted) {
            if (trusted)
                action(call);
            else
                call.fail(accessDenied(path));
        });
    });
}

void HostControl::admitValue(
    const CMPath& path, CallerTurns::Work work, const OrvaBusValue& foreign,
    const std::function<void(const BusCall& call, const OrvaValue& value)>& action)
{
    admit(path, work, [path, foreign, action](const BusCall& call) {
        const auto value = valueFromBus(foreign);
        if (value)
            action(call, *value);
        else
            call.fail(CMError::malformedValue(path, value.why()));
    });
}
