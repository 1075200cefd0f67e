// SPDX-License-Identifier: Apache-2.0
// The cost of the tree in process: copies, nested writes, merges, requests and rows.

#include "rootworker.h"
#include "settingsfile.h"

#include "network/networkrecords.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <cstdio>

namespace {

/// Prints what one of `count` runs of `step` takes on average.
template <class Step>
void measure(const char* what, int count, const Step& step)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i)
        step(i);
    std::printf("{\"what\": \"%s\", \"count\": %d, \"ns_each\": %.0f}\n", what, count,
                double(timer.nsecsElapsed()) / count);
}

OrvaNetworkInfo fullInfo()
{
    OrvaNetworkAddress address;
    address.setIp(QStringLiteral("192.0.2.7"));
    address.setPrefix(24);
    OrvaNetworkWiredInterface wired;
    wired.setName(QStringLiteral("eth0"));
    wired.setMac(QStringLiteral("02:00:00:00:00:01"));
    wired.setAddresses({address, address});
    OrvaNetworkInfo info;
    info.setState(OrvaNetworkState::Connected);
    info.setWired(wired);
    info.setGateways({address});
    info.setDns({address, address});
    return info;
}

/// Answers every request on its one node, from the event loop.
class Echo : public CMNodesWorker
{
public:
    Echo()
        : CMNodesWorker(QVariantHash(), QStringLiteral("Echo"))
    {
        CMActivateNode::create(nodes(), path())
            ->setInvoke(this, &Echo::on_request, Qt::QueuedConnection);
    }
    static CMPath path() { return CMPath(QStringLiteral("echo")); }

private:
    void on_request(const CMSetDataRequest& request) { request.answer(request.value()); }
};

void measureRecords()
{
    const OrvaNetworkInfo info = fullInfo();
    QVector<OrvaNetworkInfo> copies(1000);
    measure("copy of an info", 1000000, [&](int i) { copies[i % copies.size()] = info; });
    measure("nested write into an info", 100000, [&](int i) {
        OrvaNetworkInfo changed = info;
        OrvaNetworkWiredInterface wired = changed.wired();
        wired.setCableConnected(i % 2 == 0);
        changed.setWired(wired);
    });
    const OrvaNetworkInfo other = fullInfo();
    measure("merge of two infos", 100000, [&](int) {
        OrvaNetworkInfo merged = info;
        merged.__mergeWith(other);
    });
}

void measureRequests()
{
    RootWorker root;
    root.addWorker(std::make_unique<Echo>());
    const OrvaValue value = OrvaValue::of(fullInfo());
    measure("queued request and its answer", 100000, [&](int) {
        const auto reply = CMReply<QVariant>::create();
        root.invoke(Echo::path(), value, reply);
        while (!reply.isFinished())
            QCoreApplication::processEvents();
    });
}

void measureRows()
{
    for (int rows = 1; rows <= 10000; rows *= 10) {
        CMNodes nodes;
        auto* node = CMListRowsNode::create(nodes, CMPath(QStringLiteral("rows")));
        measure("a row set by its id", rows, [&](int i) {
            OrvaRoles row;
            row.setId(QString::number(i));
            node->rowsSetById(row);
        });
    }
}

/// In the current directory, whose disk is the one to be measured.
void measureSettings()
{
    const QTemporaryDir directory(QStringLiteral("settings-XXXXXX"));
    SettingsFile file(directory.path());
    measure("a setting stored and synced", 500, [&](int i) {
        if (!file.put(CMPath(QStringLiteral("setting")), OrvaValue::of(i)) || !file.commit())
            qFatal("The setting could not be stored");
    });
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    measureRecords();
    measureRequests();
    measureRows();
    measureSettings();
    return 0;
}
