// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "heldclock.h"
#include "workerfixture.h"

#include <memory>

class LogCapture;
class QTranslator;

/// Plays a device in words, in which tables and random sequences are written.
///
/// Steps are parted by "; ". A first word "given" tells what holds before the device starts. A step
/// is a deed of the world ("up wlan0", "cable out", "pass 5000" ms), or else a request: a word of
/// its own ("set Home", "ask a") or a path below "network", and its value as JSON or a text. A
/// request ends with success, or as it says behind " => "; the end of one that begins with "send"
/// is not waited for. A fact is its name and its value, or the path of a node and its value as
/// JSON.
class Player
{
public:
    /// Makes the device that the steps say is given; the others are left.
    explicit Player(const QStringList& steps);
    virtual ~Player();
    Q_DISABLE_COPY(Player)

    /// Does a step, and everything that follows from it. Gives the fault of its end; empty for
    /// none.
    QString play(const QString& step);
    /// Begins a step; its reply where it is a request.
    CMReply<QVariant> begin(const QString& step);
    /// The fault of a fact; empty for none.
    QString check(const QString& fact) const;
    /// Plays a row of steps and facts in turn. Gives the first fault; empty for none.
    QString playRow(const QStringList& cells);

    /// The steps of a row that begins with the steps of its section.
    static QStringList row(const QString& section, QStringList cells);

    [[nodiscard]] WorkerFixture& fixture() { return *m_fixture; }
    [[nodiscard]] LogCapture& log() { return m_log; }

protected:
    using Event = std::function<void(const QString& what)>;
    using Request = std::function<CMReply<QVariant>(const QString& what)>;
    using Fact = std::function<QVariant()>;

    /// Without a device yet.
    Player();
    /// Applies the steps to the devices that start from now on.
    void give(const QStringList& steps);
    /// Starts a device over another backend, which takes its time: an end or a fact may come within
    /// 20 s.
    void start(const Networking::BackendFactory& createBackend);

    QStringList m_ended; ///< the numbers of the requests, in the order in which they were answered
    QHash<QString, Event> m_events;
    QHash<QString, Fact> m_facts;
    QVector<CMReply<QVariant>> m_replies;
    std::unique_ptr<WorkerFixture> m_fixture;

private:
    bool await(const std::function<bool()>& condition) const;
    void addEvents();
    void addRequests();
    void addFacts();
    void addPictureFacts();
    class Client;
    CMReply<QVariant> softAp(const CMPath& path, const QString& what);
    void refresh(const QString& what);

    LogCapture& m_log;
    std::unique_ptr<QTranslator> m_language;
    NodeValues m_values;
    QStringList m_ofBackend;
    int m_patience = 0; ///< ms
    ScriptedBackend* m_backend = nullptr;
    QHash<QString, Request> m_requests;
    QStringList m_changed;
    std::shared_ptr<Client> m_client; ///< who asks for what is bound
};
