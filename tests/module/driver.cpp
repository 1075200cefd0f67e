// SPDX-License-Identifier: Apache-2.0
#include "driver.h"

#include "logcapture.h"

Driver::Driver(quint32 seed, const QString& given)
    : player(given.split("; "_s))
    , fixture(player.fixture())
    , m_seed(seed)
    , m_rng(seed)
    , m_log(player.log())
    , m_steps(given)
{
}

void Driver::play(const QString& step)
{
    m_steps << step;
    player.begin(step);
}

int Driver::ask(const QString& request)
{
    m_steps << "send "_s + request;
    m_open.insert(++m_sent, {request, player.begin(request), "no answer"_s});
    return m_sent;
}

void Driver::end(int ask, const QString& outcome)
{
    m_open[ask].expected = outcome;
}

void Driver::end(QVector<int>& asks, const QString& outcome)
{
    for (const int ask : std::exchange(asks, {}))
        end(ask, outcome);
}

void Driver::send(const QString& request)
{
    m_open[ask(request)].expected.reset();
}

void Driver::plan(const QString& event, int ms, const std::function<void()>& then)
{
    m_plan[event] = {HeldClock::now() + ms, then};
}

void Driver::pass(Rng& rng)
{
    constexpr int longest = 3000;
    if (m_plan.empty() || rng.chance(50))
        return pass(rng.below(longest));
    const auto& until =
        std::next(m_plan.begin(), rng.below(static_cast<int>(m_plan.size())))->second;
    pass(until.at - HeldClock::now());
}

void Driver::pass(qint64 ms)
{
    const qint64 end = HeldClock::now() + ms;
    m_steps << "pass %1"_s.arg(ms);
    for (;;) {
        const auto next =
            std::min_element(m_plan.begin(), m_plan.end(), [](const auto& a, const auto& b) {
                return a.second.at < b.second.at;
            });
        if (next == m_plan.end() || next->second.at > end)
            break;
        HeldClock::instance().pass(next->second.at - HeldClock::now());
        const auto then = next->second.then;
        m_plan.erase(next);
        then();
    }
    HeldClock::instance().pass(end - HeldClock::now());
}

QString Driver::checkPlan() const
{
    QVector<int> expected;
    for (const auto& [event, planned] : m_plan)
        expected << static_cast<int>(planned.at - HeldClock::now());
    std::sort(expected.begin(), expected.end());
    const QVector<int> due = HeldClock::instance().due(fixture.worker);
    const auto differs = [](int a, int b) { return qAbs(a - b) > 1; };
    if (due.size() == expected.size() &&
        std::equal(due.begin(), due.end(), expected.begin(), std::not_fn(differs)))
        return QString();
    QStringList planned;
    for (const auto& [event, plan] : m_plan)
        planned << "%1 in %2 ms"_s.arg(event).arg(plan.at - HeldClock::now());
    return player.check("due "_s + planned.join(", "_s));
}

void Driver::claim(int submodule, bool enable)
{
    if (enable)
        claims.insert(submodule);
    else
        claims.erase(submodule);
    if (!claims.empty()) {
        callOff("release"_s);
        ++powerRequests;
    } else {
        plan("release"_s, 5000, [this] { ++powerRequests; });
    }
}

QString Driver::run(int steps)
{
    QString wrong;
    for (int i = 0; i < steps && wrong.isEmpty(); ++i) {
        m_models.at(m_rng.below(static_cast<int>(m_models.size())))->step(m_rng);
        wrong = check();
    }
    if (!wrong.isEmpty())
        return report(wrong);
    for (const auto& model : m_models)
        model->finish();
    HeldClock::settle();
    wrong = check();
    if (wrong.isEmpty() && !m_open.isEmpty())
        wrong = m_open.first().request + " is open"_s;
    return wrong.isEmpty() ? QString() : report(wrong);
}

QString Driver::check()
{
    QString wrong;
    for (const auto& model : m_models)
        wrong += model->check();
    wrong += checkAnswers() + checkSecrets();
    m_log.clear();
    return wrong;
}

QString Driver::checkAnswers()
{
    for (auto sent = m_open.begin(); sent != m_open.end();) {
        const QString outcome = WorkerFixture::outcome(sent->reply);
        const bool dropped = sent->reply.error() == CMError::dropped();
        if (sent->expected ? outcome != *sent->expected : dropped)
            return "%1 ended with \"%2\" instead of \"%3\""_s.arg(
                sent->request, outcome, sent->expected.value_or("an answer"_s));
        sent = sent->reply.isFinished() ? m_open.erase(sent) : std::next(sent);
    }
    return m_log.count("was finished twice"_s) == 0 ? QString() : "a request was answered twice"_s;
}

QString Driver::checkSecrets() const
{
    for (const CMUINode* node : fixture.worker->nodes().all()) {
        const auto* valueNode = qobject_cast<const CMValueNode*>(node);
        const QVariant value = valueNode ? valueNode->value().__variant() : QVariant();
        if (OrvaPlain::toJson(value).contains("secret-"))
            return "a key is published at "_s + node->path().toString();
    }
    return m_log.count("secret-"_s) == 0 ? QString() : "a key is in the log"_s;
}

QString Driver::report(const QString& what) const
{
    return "seed %1: %2\n%3"_s.arg(m_seed).arg(what, m_steps.join("; "_s));
}
