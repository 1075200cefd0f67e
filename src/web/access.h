// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "http.h"

#include <QElapsedTimer>
#include <QString>

/// Who may have something done: the pages that know the token, which is given to pages of ours, and
/// where there is an access code to who knows that.
class Access
{
public:
    explicit Access(QString code);

    /// The answer to who asks for the token. Wrong codes make the next one wait.
    [[nodiscard]] HttpAnswer answer(const HttpRequest& request);
    [[nodiscard]] bool isGranted(const HttpRequest& request) const;

private:
    const QString m_code;
    const QByteArray m_token;
    QElapsedTimer m_sinceWrongCode;
    int m_wrongCodes = 0;
};
