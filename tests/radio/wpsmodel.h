#pragma once

#include "radioworld.h"

/// WPS sessions: one at a time, refused, successful, failed.
class WpsModel : public RadioModel
{
public:
    using RadioModel::RadioModel;

    QString check() override { return world.check(); }

    void finish() override
    {
        fixture.backend->wpsReply.finish({});
        end(QString());
        fixture.settle();
    }

private:
    QString act(Rng& rng) override
    {
        switch (rng.below(6)) {
        case 0:
            fixture.backend->wpsReply.finish({});
            end(QString());
            return "WPS succeeds"_s;
        case 1:
            fixture.backend->wpsReply.setError(CMError("WpsError"_s, "no router"_s));
            end("WpsError: no router"_s);
            return "WPS fails"_s;
        case 2:
            m_refused = !m_refused;
            refuse({"performWpsPbc"_s, "performWpsPin"_s}, m_refused);
            return "WPS is refused: %1"_s.arg(m_refused);
        case 3:
            start(driver.ask(OrvaNetworkPerformWpsPbcPath()), true);
            return "WPS by button"_s;
        }
        const bool valid = rng.chance(50);
        const QString pin = valid ? "12345670"_s : QString(8, QChar(0x0661));
        start(driver.ask(OrvaNetworkPerformWpsPinPath(), OrvaValue::of(pin)), valid);
        return "WPS by PIN "_s + pin;
    }

    void start(int ask, bool valid)
    {
        if (m_running)
            return driver.end(ask, "error: WPS in progress, ignoring request."_s);
        if (!valid)
            return driver.end(ask, "error: WPS PIN needs to be exactly 8 digits"_s);
        world.claim(4, true);
        if (!m_refused) {
            m_running = ask;
            return;
        }
        world.claim(4, false);
        driver.end(ask, "error: WPS request failed."_s);
    }

    void end(const QString& outcome)
    {
        fixture.backend->wpsReply = {};
        if (!m_running)
            return;
        world.claim(4, false);
        driver.end(*std::exchange(m_running, std::nullopt), outcome);
    }

    std::optional<int> m_running; ///< the session's request
    bool m_refused = false;
};
