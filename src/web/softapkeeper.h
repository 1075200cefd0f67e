// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostlink.h"

#include <QTimer>

/// Keeps the access point while somebody uses the page through it, or has asked for it. Its request
/// expires, so that a page or a program that goes leaves nothing behind.
class SoftApKeeper : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(SoftApKeeper)

public:
    explicit SoftApKeeper(HostLink& host);

    /// Somebody asks for the access point, under that name where it is not empty.
    void open(const QString& ssid, const HostLink::Done& done);
    /// Somebody is done with it.
    void close(const HostLink::Done& done);
    /// Tells how many pages are open, and how many of them through the access point.
    void setReaders(int all, int throughSoftAp);
    /// True if people have said that they are done.
    [[nodiscard]] bool isDone() const { return m_isDone; }

private:
    void renewOrRest();
    void request(const HostLink::Done& done);

    HostLink& m_host;
    QTimer m_renewTimer;
    QString m_ssid;
    int m_readers = 0;
    int m_readersThrough = 0;
    bool m_isAskedFor = false;
    bool m_isDone = false;
};
