#pragma once

#include "driver.h"

/// Starts and stops, profiles, links, cables and failures: the life cycle and the published state.
class LifecycleModel : public Model
{
public:
    explicit LifecycleModel(Driver& driver);
    QString step(Driver& driver, Rng& rng) override;
    QString check(Driver& driver) override;
    void finish(Driver& driver) override;

private:
    QString sendLifecycle(Driver& driver, Rng& rng);
    QString sendProfile(Driver& driver, Rng& rng);
    QString signalLink(Driver& driver, Rng& rng);
    QString signalTrouble(Driver& driver, Rng& rng);
    QString refresh(Driver& driver, Rng& rng);

    void comeBack();
    QString start();
    QString stop(const WorkerFixture& fixture);
    QString shutDown();
    void setLink(WorkerFixture& fixture, const QString& interface, bool up);

    bool m_started = false;
    bool m_shuttingDown = false;
    QStringList m_linksUp;           ///< those of other than soft APs
    QHash<QString, qint32> m_states; ///< of the wired and the wireless interface
    QString m_refreshFault;          ///< what a refresh did that it must not
};
