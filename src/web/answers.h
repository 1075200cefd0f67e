// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "http.h"

#include <QVariantHash>

/// An answer in JSON.
[[nodiscard]] HttpAnswer jsonAnswer(const QVariantHash& fields);
/// A refusal in JSON: a word for the page, and a text for people where there is one.
[[nodiscard]] HttpAnswer refusal(int status, const QString& error,
                                 const QString& message = QString());
/// The file of the page that is asked for; 404 where there is none.
[[nodiscard]] HttpAnswer pageFile(const HttpRequest& request);
