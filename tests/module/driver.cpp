#include "driver.h"

#include "logcapture.h"

Driver::Driver(quint32 seed, const NodeValues& values)
    : fixture(values)
    , m_seed(seed)
    , m_rng(seed)
    , m_log(LogCapture::install())
{
}

int Driver::ask(const CMPath& path, const OrvaValue& value)
{
    m_open.insert(++m_sent, {path, fixture.send(path, value), "no answer"_s});
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

void Driver::send(const CMPath& path, const OrvaValue& value)
{
    m_open[ask(path, value)].expected.reset();
}

QString Driver::run(int steps)
{
    QString wrong;
    for (int i = 0; i < steps && wrong.isEmpty(); ++i) {
        Model& model = *m_models.at(m_rng.below(static_cast<int>(m_models.size())));
        m_steps << model.step(m_rng);
        wrong = check();
    }
    if (!wrong.isEmpty())
        return report(wrong);
    for (const auto& model : m_models)
        model->finish();
    fixture.settle();
    wrong = check();
    if (wrong.isEmpty() && !m_open.isEmpty())
        wrong = m_open.first().path.toString() + " is open"_s;
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
                sent->path.toString(), outcome, sent->expected.value_or("an answer"_s));
        sent = sent->reply.isFinished() ? m_open.erase(sent) : sent + 1;
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
    const QString steps = m_steps.join("\n  "_s);
    return "seed %1, step %2: %3\n  %4"_s.arg(m_seed).arg(m_steps.size()).arg(what, steps);
}

void addSeeds(quint32 count)
{
    QTest::addColumn<quint32>("seed");
    const quint32 only = qEnvironmentVariableIntValue("ORVA_SEED");
    for (quint32 seed = 1; seed <= count; ++seed)
        if (only == 0 || only == seed)
            QTest::addRow("seed %u", seed) << seed;
}
