// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "parser/command.h"

#include <QStringList>
#include <QVector>

namespace ctl {

/// A word and what it means.
struct Candidate
{
    QString word;
    QString meaning;
};
using Candidates = QVector<Candidate>;

/// The words of that source that the running host knows; none where there is no host, and after two
/// seconds. `given` are the arguments that are there already.
Candidates liveWords(TypeRow::Source source, const QStringList& given);

} // namespace ctl
