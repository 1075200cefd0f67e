// SPDX-License-Identifier: Apache-2.0
// The cost of a change among the requesters of the soft access point: one fold of their settings,
// and a whole request with it, from call to answer.

#include "network/networkpaths.h"
#include "softap/softapsettings.h"
#include "workerfixture.h"

#include <cstdio>

namespace {

OrvaNetworkProfileSoftApRequest request(int number, int channel)
{
    OrvaNetworkProfileSoftApSettings settings;
    settings.setApInterface(QStringLiteral("uap0"));
    settings.setSsid(QStringLiteral("network%1").arg(number));
    settings.setChannel(channel);
    OrvaNetworkProfileSoftApRequest request;
    request.setName(QStringLiteral("requester%1").arg(number));
    request.setSettings(settings);
    return request;
}

void report(const char* what, int requesters, int rounds, const QElapsedTimer& timer)
{
    std::printf("{\"what\": \"%s\", \"requesters\": %d, \"us_each\": %.1f}\n", what, requesters,
                double(timer.nsecsElapsed()) / 1000 / rounds);
}

void measureFold(int requesters)
{
    constexpr int rounds = 200;
    SoftApTable requests;
    for (int i = 0; i < requesters; ++i)
        requests.set({request(i, 1), std::nullopt});
    OrvaNetworkProfileSoftApSettings running;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < rounds; ++i)
        running = foldSoftApRequests(running, {}, requests).settings;
    report("fold", requesters, rounds, timer);
}

void measureRequest(int requesters)
{
    constexpr int rounds = 50;
    OrvaNetworkProfileSoftApSettings interface;
    interface.setApInterface(QStringLiteral("uap0"));
    OrvaNetworkProfile configuration;
    configuration.setSoftApSettings({interface});
    WorkerFixture fixture({{OrvaNetworkSoftApConfigSettingsPath(), OrvaValue::of(configuration)}});
    fixture.send(OrvaNetworkStartPath());
    for (int i = 0; i < requesters; ++i)
        fixture.send(OrvaNetworkRequestSoftApPath(), OrvaValue::of(request(i, 1)));
    QCoreApplication::sendPostedEvents();
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < rounds; ++i) {
        fixture.send(OrvaNetworkRequestSoftApPath(), OrvaValue::of(request(0, 1 + i % 11)));
        QCoreApplication::sendPostedEvents();
    }
    report("request that changes its settings", requesters, rounds, timer);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    for (const int requesters : {1, 10, 64}) {
        measureFold(requesters);
        measureRequest(requesters);
    }
    return 0;
}
