#pragma once

#include "workerfixture.h"

#include "network/networkpaths.h"

#include <memory>
#include <optional>
#include <random>

class LogCapture;

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

/// What clients and the network do in one theme, and what must hold of it.
class Model
{
public:
    virtual ~Model() = default;
    /// Does one random thing and says what it did. Need not settle.
    virtual QString step(Rng& rng) = 0;
    /// What does not hold, after a step of any model; empty when all is well.
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
    explicit Driver(quint32 seed, const NodeValues& values = {});

    WorkerFixture fixture;

    void add(std::unique_ptr<Model> model) { m_models.push_back(std::move(model)); }

    /// Sends a request that must stay open until `end()` tells how its returned number ended.
    int ask(const CMPath& path, const OrvaValue& value = {});
    /// The request, or each of them, has ended so, in the words of `WorkerFixture::request()`.
    void end(int ask, const QString& outcome = {});
    void end(QVector<int>& asks, const QString& outcome = {});
    /// Sends a request of which is known only that it is answered in the end.
    void send(const CMPath& path, const OrvaValue& value);

    /// Empty when all went well, else what went wrong, with its seed and the steps that led there.
    [[nodiscard]] QString run(int steps);

private:
    struct Sent
    {
        CMPath path;
        CMReply<QVariant> reply;
        std::optional<QString> expected;
    };

    [[nodiscard]] QString check();
    [[nodiscard]] QString checkAnswers();
    [[nodiscard]] QString checkSecrets() const;
    [[nodiscard]] QString report(const QString& what) const;

    quint32 m_seed;
    Rng m_rng;
    LogCapture& m_log;
    std::vector<std::unique_ptr<Model>> m_models;
    QMap<int, Sent> m_open;
    int m_sent = 0;
    QStringList m_steps;
};

/// The rows "seed" of a test: from 1 to `count`, or that which `ORVA_SEED` names alone.
void addSeeds(quint32 count);
