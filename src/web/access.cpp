// SPDX-License-Identifier: Apache-2.0
#include "access.h"

#include "admission.h"
#include "answers.h"
#include "bodies.h"
#include "log.h"

#include <QRandomGenerator>

#include <utility>

namespace {

/// So many wrong codes are forgiven; each further one doubles the wait, from a second on.
constexpr int freeGuesses = 3;
constexpr int mostDoublings = 6;

QByteArray freshToken()
{
    QByteArray bytes(16, '\0');
    QRandomGenerator::system()->generate(bytes.begin(), bytes.end());
    return bytes.toHex();
}

} // namespace

Access::Access(QString code)
    : m_code(std::move(code))
    , m_token(freshToken())
{
}

bool Access::isGranted(const HttpRequest& request) const
{
    return isSameSecret(request.token, m_token);
}

HttpAnswer Access::answer(const HttpRequest& request)
{
    const HttpAnswer granted =
        jsonAnswer({{QStringLiteral("token"), QString::fromLatin1(m_token)}});
    if (m_code.isEmpty())
        return granted;
    const int doublings = qMin(m_wrongCodes - freeGuesses, mostDoublings);
    if (doublings >= 0 && m_sinceWrongCode.elapsed() < (1000 << doublings))
        return refusal(429, QStringLiteral("wait"));
    const auto body = parseBody<CodeBody>(request.body);
    if (request.method == "GET" || !body)
        return refusal(403, QStringLiteral("code"));
    if (isSameSecret(body->code().toUtf8(), m_code.toUtf8())) {
        m_wrongCodes = 0;
        return granted;
    }
    ++m_wrongCodes;
    m_sinceWrongCode.start();
    qCWarning(lcWeb) << "A wrong access code, number" << m_wrongCodes;
    return refusal(403, QStringLiteral("code"));
}
