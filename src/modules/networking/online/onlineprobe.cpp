// SPDX-License-Identifier: Apache-2.0
#include "online/onlineprobe.h"

#include "online/namelookup.h"

#include <QNetworkProxy>

#include <utility>

namespace {

constexpr int probeDeadlineMs = 10000;
constexpr int maxAnswer = 16 << 10;

} // namespace

OnlineProbe::OnlineProbe(const QUrl& url, const QString& body, QObject* parent)
    : QObject(parent)
    , m_port(static_cast<quint16>(url.port(probePort)))
    , m_body(body)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] { end(false); });
    m_socket.setProxy(QNetworkProxy::NoProxy);
    m_socket.setReadBufferSize(maxAnswer);
    connect(&m_socket, &QTcpSocket::connected, this, [this, url] {
        m_addresses.clear();
        m_socket.write(probeRequest(url));
    });
    connect(&m_socket, &QTcpSocket::readyRead, this, &OnlineProbe::read);
    // Told after the end of the connection too; queued, as it may be told inside connectToHost().
    connect(&m_socket, &QTcpSocket::stateChanged, this, [this](QAbstractSocket::SocketState state) {
        if (state == QAbstractSocket::UnconnectedState)
            QMetaObject::invokeMethod(this, &OnlineProbe::tryNext, Qt::QueuedConnection);
    });
    m_deadline.start(probeDeadlineMs);
    const auto* lookup = new NameLookup(url.host(QUrl::FullyEncoded), this);
    connect(lookup, &NameLookup::found, this, [this](const QVector<QHostAddress>& addresses) {
        m_addresses = addresses;
        tryNext();
    });
}

void OnlineProbe::tryNext()
{
    if (m_finished)
        return;
    if (m_addresses.isEmpty())
        return end();
    m_socket.connectToHost(m_addresses.takeFirst(), m_port);
}

void OnlineProbe::read()
{
    m_answer += m_socket.read(maxAnswer - m_answer.size());
    if (m_answer.size() >= maxAnswer)
        end();
}

void OnlineProbe::end(bool inTime)
{
    if (std::exchange(m_finished, true))
        return;
    m_deadline.stop();
    m_answer += m_socket.read(maxAnswer - m_answer.size());
    m_socket.abort();
    Q_EMIT finished(judgeProbe(m_answer, m_body, inTime));
}
