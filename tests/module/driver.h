// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "player.h"

#include "network/networkpaths.h"

#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>

/// Random numbers that are the same for the same seed, on every machine.
class Rng
{
public:
    explicit Rng(quint32 seed)
        : m_generator(seed)
    {
    }
    /// From 0 to `limit` - 1.
    int below(int limit) { return static_cast<int>(m_generator() % static_cast<quint32>(limit)); }
    bool chance(int percent) { return below(100) < percent; }
    template <class Container>
    auto pick(const Container& items)
    {
        return items[below(static_cast<int>(items.size()))];
    }

private:
    std::mt19937 m_generator;
};

/// The deeds of clients and network in one theme, and the laws that must hold of them.
class Model
{
public:
    virtual ~Model() = default;
    /// Does one random thing, through the driver. Need not settle.
    virtual void step(Rng& rng) = 0;
    /// The law that does not hold after a step of any model; empty when all is well.
    virtual QString check() = 0;
    /// Brings what is still open to its end, after the last step.
    virtual void finish() {}
};

/// Plays random sequences of all its models' steps against one worker. The same seed plays the same
/// sequence. Checks after every step, besides what the models check, that the requests ended as the
/// models say and that no key is published or logged, and at the end that every request was
/// answered exactly once.
class Driver
{
public:
    Driver(quint32 seed, const QString& given);

    Player player;
    WorkerFixture& fixture;

    template <class AModel>
    void add()
    {
        m_models.push_back(std::make_unique<AModel>(*this));
    }

    /// Does a step of the player's, which is noted.
    void play(const QString& step);
    /// Sends a request that must stay open until `end()` tells how its returned number ended.
    int ask(const QString& request);
    /// The request, or each of them, has ended so, in the words of `WorkerFixture::request()`.
    void end(int ask, const QString& outcome = {});
    void end(QVector<int>& asks, const QString& outcome = {});
    /// Sends a request of which is known only that it is answered in the end.
    void send(const QString& request);

    /// Plans an event in so many ms, unless it is called off or put off; no other timer may run.
    void plan(const QString& event, int ms, const std::function<void()>& then);
    void callOff(const QString& event) { m_plan.erase(event); }
    [[nodiscard]] bool isPlanned(const QString& event) const { return m_plan.count(event) > 0; }
    /// Lets time pass: some, or until something that is planned.
    void pass(Rng& rng);
    void pass(qint64 ms);
    /// The fault of the timers that run; empty when they are those of the plan.
    [[nodiscard]] QString checkPlan() const;

    /// The claims of the radio, by submodule, and what they make of the power manager's requests.
    void claim(int submodule, bool enable);
    std::set<int> claims;
    int powerRequests = 0;

    /// Empty when all went well, else what went wrong, with its seed and the steps that led there,
    /// which are a row of a table.
    [[nodiscard]] QString run(int steps);

private:
    struct Sent
    {
        QString request;
        CMReply<QVariant> reply;
        std::optional<QString> expected;
    };
    struct Planned
    {
        qint64 at;
        std::function<void()> then;
    };

    [[nodiscard]] QString check();
    [[nodiscard]] QString checkAnswers();
    [[nodiscard]] QString checkSecrets() const;
    [[nodiscard]] QString report(const QString& what) const;

    quint32 m_seed;
    Rng m_rng;
    LogCapture& m_log;
    std::vector<std::unique_ptr<Model>> m_models;
    std::map<QString, Planned> m_plan;
    QMap<int, Sent> m_open;
    int m_sent = 0;
    QStringList m_steps;
};
