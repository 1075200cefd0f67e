// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "context.h"
#include "core/orvamask.h"
#include "output/valueleaves.h"

#include <QDateTime>

namespace ctl {

namespace {

/// Remembers what every node held and says what a change changed.
class Monitor
{
public:
    Monitor(Context& context, const QStringList& prefixes)
        : m_context(context)
        , m_prefixes(prefixes)
    {
    }

    Result begin()
    {
        const auto nodes = m_context.host.nodes();
        if (!nodes)
            return nodes.error();
        for (const OrvaBusNode& node : *nodes) {
            const CMPath path(node.path);
            if (wanted(path) && node.kind == QLatin1String("value"))
                remember(path);
            else if (wanted(path) && node.kind == QLatin1String("rows"))
                m_rowCounts.insert(path, rowCount(path));
        }
        return {};
    }

    void onValueChanged(const CMPath& path, const OrvaValue& value)
    {
        if (!wanted(path))
            return;
        if (value.isEmpty()) {
            const Leaf masked = {orvaMask(), {}, {}};
            show(path, {}, masked, masked);
            return;
        }
        const Leaves before = m_leaves.value(path);
        const Leaves now = leavesOf(value);
        m_leaves.insert(path, now);
        Leaves places = before;
        for (auto it = now.cbegin(); it != now.cend(); ++it)
            places.insert(it.key(), it.value());
        const auto cameOrWent = [&before, &now](const QString& place) {
            return before.contains(place) != now.contains(place);
        };
        for (auto it = places.cbegin(); it != places.cend(); ++it) {
            const Leaf from = before.value(it.key());
            const Leaf to = now.value(it.key());
            const bool changed = it->isRecord ? cameOrWent(it.key()) : from.text != to.text;
            // The line of a record that came or went as a whole says it all.
            if (changed && (it->parent.isEmpty() || !cameOrWent(it->parent)))
                show(path, it.key(), from, to);
        }
    }

    void onRowsChanged(const CMPath& path)
    {
        if (!wanted(path))
            return;
        const int before = m_rowCounts.value(path);
        m_rowCounts.insert(path, rowCount(path));
        const auto count = [](int rows) { return Leaf{QString::number(rows), rows, {}}; };
        show(path, QStringLiteral("rows"), count(before), count(m_rowCounts.value(path)));
    }

private:
    [[nodiscard]] bool wanted(const CMPath& path) const
    {
        return m_prefixes.isEmpty() ||
               std::any_of(m_prefixes.cbegin(), m_prefixes.cend(), [&path](const QString& prefix) {
                   return path.toString().startsWith(prefix);
               });
    }

    /// A node that holds a secret is not shown to everybody; its changes still are noticed.
    void remember(const CMPath& path)
    {
        const auto value = m_context.host.value(path);
        if (value)
            m_leaves.insert(path, leavesOf(*value));
    }

    [[nodiscard]] int rowCount(const CMPath& path) const
    {
        const auto rows = m_context.host.rows(path);
        return rows ? rows->size() : 0;
    }

    void show(const CMPath& path, const QString& place, const Leaf& from, const Leaf& to) const
    {
        const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz"));
        m_context.out.document(
            {{QStringLiteral("time"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
             {QStringLiteral("path"), path.toString()},
             {QStringLiteral("field"), place},
             {QStringLiteral("from"), from.value},
             {QStringLiteral("to"), to.value}});
        const QString none = QStringLiteral("(none)");
        m_context.out.line(
            QStringLiteral("%1  %2%3  %4 → %5")
                .arg(Output::styled(time, Output::Style::Dim), printable(path.toString()),
                     place.isEmpty() ? QString() : QLatin1Char(' ') + printable(place),
                     from.text.isEmpty() ? none : printable(from.text),
                     Output::styled(to.text.isEmpty() ? none : printable(to.text),
                                    Output::Style::Bold)));
    }

    Context& m_context;
    QStringList m_prefixes;
    QHash<CMPath, Leaves> m_leaves;
    QHash<CMPath, int> m_rowCounts;
};

Result monitor(Context& context, const Arguments& given)
{
    Monitor watcher(context, given.texts("PREFIX"));
    Result begun = watcher.begin();
    if (!begun)
        return begun;
    const QObject guard;
    QObject::connect(&context.host, &Host::valueChanged, &guard,
                     [&watcher](const CMPath& path, const OrvaValue& value) {
                         watcher.onValueChanged(path, value);
                     });
    QObject::connect(&context.host, &Host::rowsChanged, &guard,
                     [&watcher](const CMPath& path) { watcher.onRowsChanged(path); });
    context.out.note(QStringLiteral("Showing changes; Ctrl-C ends."));
    return context.host.follow();
}

} // namespace

Commands monitorCommands()
{
    const Parameter prefix = {"PREFIX", "Only nodes whose path begins so; all where none is named",
                              Parameter::Kind::Texts};
    return {{"monitor",
             "Shows each change as a line: time, what, from, to",
             {prefix.of("NODE")},
             &monitor}};
}

} // namespace ctl
