#include "driver.h"

#include <logcapture.h>
#include <network/networkpaths.h>

Driver::Driver(quint32 seed, const NodeValues& values)
    : fixture(values)
    , m_seed(seed)
    , m_rng(seed)
    , m_log(LogCapture::install())
{
}

void Driver::send(const CMPath& path, const OrvaValue& value,
                  const std::optional<QString>& expected)
{
    m_open.append({path, fixture.send(path, value), expected});
}

QString Driver::run(int steps)
{
    for (int i = 0; i < steps; ++i) {
        Model& model =
            *m_models.at(static_cast<std::size_t>(m_rng.below(static_cast<int>(m_models.size()))));
        m_steps << model.step(*this, m_rng);
        const QString wrong = check();
        if (!wrong.isEmpty())
            return report(wrong);
    }
    for (const auto& model : m_models)
        model->finish(*this);
    fixture.settle();
    const QString wrong = check();
    if (!wrong.isEmpty())
        return report(wrong);
    return m_open.isEmpty() ? QString()
                            : report(m_open.first().path.toString() + QStringLiteral(" is open"));
}

QString Driver::check()
{
    for (const auto& model : m_models) {
        const QString wrong = model->check(*this);
        if (!wrong.isEmpty())
            return wrong;
    }
    const QString wrong = checkAnswers() + checkSecrets();
    m_log.clear();
    return wrong;
}

QString Driver::checkAnswers()
{
    for (const Sent& sent : qAsConst(m_open)) {
        const QString outcome = WorkerFixture::outcome(sent.reply);
        const bool asExpected = !sent.expected || outcome == *sent.expected;
        const bool dropped = sent.reply.error() == CMError::dropped();
        if (sent.reply.isFinished() && (dropped || !asExpected))
            return sent.path.toString() + QStringLiteral(" ended with: ") + outcome;
    }
    const auto isFinished = [](const Sent& sent) { return sent.reply.isFinished(); };
    m_open.erase(std::remove_if(m_open.begin(), m_open.end(), isFinished), m_open.end());
    return m_log.count(QStringLiteral("was finished twice")) == 0
               ? QString()
               : QStringLiteral("a request was answered twice");
}

QString Driver::checkSecrets() const
{
    const QString secret = QStringLiteral("secret-");
    for (const CMUINode* node : fixture.worker->nodes().all()) {
        const auto* valueNode = qobject_cast<const CMValueNode*>(node);
        const QVariant value = valueNode ? valueNode->value().__variant() : QVariant();
        if (OrvaPlain::toJson(value).contains(secret.toUtf8()))
            return QStringLiteral("a key is published at ") + node->path().toString();
    }
    return m_log.count(secret) == 0 ? QString() : QStringLiteral("a key is in the log");
}

QString Driver::report(const QString& what) const
{
    return QStringLiteral("seed %1, step %2: %3\n  %4")
        .arg(m_seed)
        .arg(m_steps.size())
        .arg(what, m_steps.join(QStringLiteral("\n  ")));
}
