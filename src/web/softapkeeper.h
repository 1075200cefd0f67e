// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostlink.h"

#include <QDeadlineTimer>
#include <QTimer>

/// Keeps the access point while somebody uses the page through it, or has asked for it. Its request
/// expires and is bound to this program, so that a page or a program that goes leaves nothing
/// behind. While somebody is there by it the request holds it: whoever else asks for other settings
/// waits.
class SoftApKeeper : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(SoftApKeeper)

public:
    explicit SoftApKeeper(HostLink& host);

    /// Somebody asks for the access point with these settings; the others stay.
    void open(const OrvaNetworkProfileSoftApSettings& settings, const HostLink::Done& done);
    /// Somebody is done with it.
    void close(const HostLink::Done& done);
    /// Tells how many pages are open, and how many of them through the access point.
    void setReaders(int all, int throughSoftAp);
    /// True if people have said that they are done.
    [[nodiscard]] bool isDone() const { return m_isDone; }

private:
    void renewOrRest();
    void request(const OrvaNetworkProfileSoftApSettings& settings, bool hold,
                 const HostLink::Done& done);
    void renew();

    HostLink& m_host;
    QTimer m_renewTimer;
    /// The settings that people asked for, while the request lasts.
    OrvaNetworkProfileSoftApSettings m_settings;
    QDeadlineTimer m_expiry;
    int m_readers = 0;
    int m_readersThrough = 0;
    bool m_isAskedFor = false;
    bool m_isDone = false;
};
