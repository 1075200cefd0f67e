// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/realwps.h"

namespace {

constexpr int walkMilliseconds = 125000; // wpa_supplicant gives up after 120 s
constexpr int finishMilliseconds = 3000;

} // namespace

RealWps::RealWps(World& world, Supplicant& supplicant)
    : m_world(world)
    , m_supplicant(supplicant)
{
    m_limit.setSingleShot(true);
    connect(&m_limit, &QTimer::timeout, this, [this] {
        if (m_step == Step::Finishing)
            finish();
        else
            fail(QStringLiteral("WPS timed out"));
    });
    connect(&supplicant, &Supplicant::wpsBrought, this, &RealWps::take);
    connect(&supplicant, &Supplicant::wpsSucceeded, this, [this] {
        if (m_step == Step::Finishing)
            finish();
    });
    connect(&supplicant, &Supplicant::wpsFailed, this, [this](const QString& why) {
        if (m_step == Step::Running)
            fail(why);
    });
    connect(&supplicant, &Supplicant::lost, this, [this] {
        if (isRunning())
            fail(QStringLiteral("wpa_supplicant has ended"));
    });
}

void RealWps::start(const QString& pin)
{
    if (m_step == Step::Running || m_step == Step::Finishing)
        m_supplicant.cancelWps();
    m_step = Step::Waiting;
    m_pin = pin;
    m_limit.start(walkMilliseconds);
    Q_EMIT changed();
}

void RealWps::begin()
{
    m_step = Step::Running;
    m_limit.start(walkMilliseconds);
    m_supplicant.startWps(m_pin);
}

void RealWps::take(const std::optional<WpsCredentials>& credentials)
{
    if (m_step != Step::Running)
        return;
    if (!credentials)
        return fail(QStringLiteral("The access point offers no network that can be joined"));
    m_credentials = *credentials;
    m_step = Step::Finishing;
    m_limit.start(finishMilliseconds);
}

void RealWps::finish()
{
    const auto credentials = std::exchange(m_credentials, {});
    Q_EMIT m_world.wpsSucceeded(credentials);
    end();
}

void RealWps::fail(const QString& why)
{
    if (m_step != Step::Waiting)
        m_supplicant.cancelWps();
    Q_EMIT m_world.wpsFailed(why);
    end();
}

void RealWps::end()
{
    m_limit.stop();
    m_step = Step::None;
    Q_EMIT changed();
}
