// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringList>

namespace ctl {

/// The candidate that a person most likely meant by the mistyped `word`; empty where none is near.
[[nodiscard]] QString nearest(const QString& word, const QStringList& candidates);

/// " Did you mean "X"?" for the end of a sentence; empty where nothing is near.
[[nodiscard]] QString didYouMean(const QString& word, const QStringList& candidates);

} // namespace ctl
