// SPDX-License-Identifier: Apache-2.0
#include "parser/suggestion.h"

#include <QVector>

#include <algorithm>
#include <numeric>

namespace ctl {

namespace {

/// The number of letters that must be put in, taken out, replaced or swapped with their neighbour
/// to make `to` of `from`.
int distance(const QString& from, const QString& to)
{
    QVector<int> beforeLast;
    QVector<int> last(to.size() + 1);
    std::iota(last.begin(), last.end(), 0);
    for (int i = 1; i <= from.size(); ++i) {
        QVector<int> row(to.size() + 1, i);
        for (int j = 1; j <= to.size(); ++j) {
            const int replaced = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            const bool swapped =
                i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
            if (swapped)
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast = std::exchange(last, row);
    }
    return last.last();
}

} // namespace

QString nearest(const QString& word, const QStringList& candidates)
{
    constexpr int longest = 100; // what is longer was not mistyped
    if (word.size() > longest)
        return {};
    QString best;
    int fewest = 1 + qMin(3, word.size() / 3);
    for (const QString& candidate : candidates) {
        const int changes = distance(word, candidate);
        if (changes < fewest) {
            best = candidate;
            fewest = changes;
        }
    }
    return best;
}

QString didYouMean(const QString& word, const QStringList& candidates)
{
    const QString meant = nearest(word, candidates);
    return meant.isEmpty() ? QString() : QStringLiteral(" Did you mean \"%1\"?").arg(meant);
}

} // namespace ctl
