// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"
#include "core/orvaresult.h"

#include <QStringList>

/// The settings in `/etc/orva/web.json`; see `examples/web.json`.
struct WebSettings
{
    /// TCP port; 0: the one that the host publishes, 80 where it publishes none.
    quint16 port = 0;
    /// The addresses that are listened on.
    QStringList listen = {QStringLiteral("0.0.0.0"), QStringLiteral("::")};
    /// Names under which browsers may ask for the page, beside addresses.
    QStringList names;
    /// The code that people type in before they may do anything; empty: nothing is asked.
    QString accessCode;
    /// True if the page is there for the wired and wireless networks too.
    bool homeNetwork = false;
};

/// Reads JSON in which lines that begin with "//" are comments. Fails where a key is unknown or its
/// value does not suit.
[[nodiscard]] OrvaResult<WebSettings> readWebSettings(const QString& file);
/// The same for a text without comments.
[[nodiscard]] OrvaResult<WebSettings> parseWebSettings(const QByteArray& text);
