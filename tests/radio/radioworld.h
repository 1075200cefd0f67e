#pragma once

#include "radiosupport.h"

#include "driver.h"

#include <set>

/// What the models of the radio share: the clock, and who claims the radio.
struct RadioWorld
{
    RadioWorld(Driver& played, qint64 start)
        : driver(played)
        , fixture(played.fixture)
        , now(start)
    {
        fixture.worker->setClock([this] { return now; });
    }

    Driver& driver;
    WorkerFixture& fixture;
    qint64 now;
    std::set<int> claims;
    int powerRequests = 0;
    bool releaseDue = false;

    void claim(int submodule, bool enable)
    {
        if (enable)
            claims.insert(submodule);
        else
            claims.erase(submodule);
        releaseDue = claims.empty();
        powerRequests += claims.empty() ? 0 : 1;
    }

    void release()
    {
        powerRequests += fixture.fire(releaseTimer) ? 1 : 0;
        releaseDue = false;
    }

    /// What is wrong with the claims; empty when the worker agrees.
    [[nodiscard]] QString check() const
    {
        if (fixture.timer(releaseTimer)->isActive() != releaseDue)
            return "the release is due: %1"_s.arg(releaseDue);
        const bool all = has(powerRequests) || powerRequests == 0;
        return all && !has(powerRequests + 1) ? QString()
                                              : "not %1 power requests"_s.arg(powerRequests);
    }

private:
    [[nodiscard]] bool has(int request) const
    {
        const auto row = CMReply<QVariant>::create();
        fixture.root.request(
            CMMatchRowRequest{CMPath("power/requests"_s), QString::number(request), row});
        return !row.value().toHash().isEmpty();
    }
};

/// A model that shares the radio with others and settles after each of its steps.
class RadioModel : public Model
{
public:
    explicit RadioModel(RadioWorld& radioWorld)
        : world(radioWorld)
        , driver(radioWorld.driver)
        , fixture(radioWorld.fixture)
    {
    }

    QString step(Rng& rng) final
    {
        const QString did = act(rng);
        fixture.settle();
        return did;
    }

protected:
    virtual QString act(Rng& rng) = 0;

    /// Lets the backend refuse all of `commands`, or none of them.
    void refuse(const QStringList& commands, bool refused)
    {
        for (const QString& command : commands) {
            fixture.backend->refused.removeAll(command);
            if (refused)
                fixture.backend->refused << command;
        }
    }

    RadioWorld& world;
    Driver& driver;
    WorkerFixture& fixture;
};
