// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "admission.h"
#include "softapkeeper.h"

/// The actions of the page: one row each. The body is checked before anything happens.
class Actions
{
public:
    /// Takes the outcome of an action: the fields of its answer, or the error. Errors of ours are
    /// "malformed"; the others are the host's.
    using Done = std::function<void(const OrvaResult<QVariantHash>& result)>;

    Actions(HostLink& host, SoftApKeeper& softAp);

    [[nodiscard]] static bool contains(const QByteArray& name);
    /// Does it for a page that came by that way; `done` is called once, now or later. What may take
    /// that way from the page is set on trial, and the answer says so: `"trial": true`.
    void run(const QByteArray& name, const QByteArray& body, WayIn way, const Done& done);
    /// The id that a page gave to the change that is on trial; empty where it is not one of ours.
    [[nodiscard]] QString trial() const { return m_trial; }
    /// The host has nothing on trial any more.
    void endTrial() { m_trial.clear(); }

private:
    using Step = void (Actions::*)(const QByteArray& body, const Done& done);
    struct Row
    {
        const char* name;
        Step step;
    };
    static const Row rows[];

    template <class Body>
    [[nodiscard]] static std::optional<Body> read(const QByteArray& body, const Done& done);
    void invoke(const CMPath& path, const OrvaValue& value, const Done& done);
    void setProfile(const OrvaNetworkProfile& profile, const Done& done);
    void tryProfile(const OrvaNetworkProfile& profile, const QString& id, const Done& done);
    void runWps(const CMPath& path, const OrvaValue& value, const Done& done);

    void scan(const QByteArray& body, const Done& done);
    void join(const QByteArray& body, const Done& done);
    void forget(const QByteArray& body, const Done& done);
    void setAddress(const QByteArray& body, const Done& done);
    void setAirplane(const QByteArray& body, const Done& done);
    void pressWps(const QByteArray& body, const Done& done);
    void makePin(const QByteArray& body, const Done& done);
    void useWpsPin(const QByteArray& body, const Done& done);
    void openSoftAp(const QByteArray& body, const Done& done);
    void finish(const QByteArray& body, const Done& done);
    void confirm(const QByteArray& body, const Done& done);
    void rollBack(const QByteArray& body, const Done& done);
    void setSoftApAuto(const QByteArray& body, const Done& done);

    HostLink& m_host;
    SoftApKeeper& m_softAp;
    /// The way of the page that is served at the moment.
    WayIn m_way = WayIn::Refused;
    QString m_trial;
};
