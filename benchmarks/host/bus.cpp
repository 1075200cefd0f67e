// SPDX-License-Identifier: Apache-2.0
// A round trip to the host that runs on the system bus, against a ping of it in the same run:
//   bench_host_bus [PATH...]

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int rounds = 4000;
constexpr int warmUp = 200;

QDBusMessage callTo(const char* interface, const char* method, const QStringList& arguments = {})
{
    auto call = QDBusMessage::createMethodCall(QStringLiteral("org.orva.Host1"),
                                               QStringLiteral("/org/orva/Host1"),
                                               QLatin1String(interface), QLatin1String(method));
    for (const QString& argument : arguments)
        call << argument;
    return call;
}

double timed(const QDBusMessage& call)
{
    QElapsedTimer timer;
    timer.start();
    const QDBusMessage answer = QDBusConnection::systemBus().call(call);
    const double microseconds = double(timer.nsecsElapsed()) / 1000;
    if (answer.type() != QDBusMessage::ReplyMessage)
        qFatal("%s", qPrintable(answer.errorMessage()));
    return microseconds;
}

double at(std::vector<double>& samples, double share)
{
    const auto place = samples.begin() + std::ptrdiff_t(share * double(samples.size()));
    std::nth_element(samples.begin(), place, samples.end());
    return *place;
}

void report(const QString& what, std::vector<double>& samples, double pingMedian)
{
    const double median = at(samples, 0.5);
    std::printf("{\"what\": \"%s\", \"p50_us\": %.1f, \"p99_us\": %.1f, \"p50_to_ping\": %.2f}\n",
                qPrintable(what), median, at(samples, 0.99), median / pingMedian);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QStringList paths = QCoreApplication::arguments().mid(1);
    if (paths.isEmpty())
        paths << QStringLiteral("power/resource/wifi");
    const QDBusMessage ping = callTo("org.freedesktop.DBus.Peer", "Ping");
    QVector<QDBusMessage> reads;
    for (const QString& path : paths)
        reads << callTo("org.orva.Host1", "GetValue", {path});

    std::vector<double> pings;
    std::vector<std::vector<double>> values(size_t(reads.size()));
    // In turn, so that whatever else the machine does meets them alike.
    for (int round = -warmUp; round < rounds; ++round) {
        const double pinged = timed(ping);
        if (round >= 0)
            pings.push_back(pinged);
        for (int i = 0; i < reads.size(); ++i) {
            const double read = timed(reads.at(i));
            if (round >= 0)
                values[size_t(i)].push_back(read);
        }
    }
    const double pingMedian = at(pings, 0.5);
    report(QStringLiteral("Ping"), pings, pingMedian);
    for (int i = 0; i < reads.size(); ++i)
        report(QStringLiteral("GetValue ") + paths.at(i), values[size_t(i)], pingMedian);
    return 0;
}
