// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "http.h"

#include <QElapsedTimer>
#include <QString>

/// The right to have something done: pages have it that know the token. Pages of ours are given it;
/// where there is an access code, only for that.
class Access
{
public:
    explicit Access(QString code);

    /// The answer to a page that asks for the token. Wrong codes make the next one wait.
    [[nodiscard]] HttpAnswer answer(const HttpRequest& request);
    [[nodiscard]] bool isGranted(const HttpRequest& request) const;

private:
    const QString m_code;
    const QByteArray m_token;
    QElapsedTimer m_sinceWrongCode;
    int m_wrongCodes = 0;
};
