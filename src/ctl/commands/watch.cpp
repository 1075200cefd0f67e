// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "context.h"
#include "output/valuetext.h"

#include "core/orvawords.h"

namespace ctl {

namespace {

void showChange(const Output& out, const CMPath& path, const OrvaValue& value)
{
    out.document(
        {{QStringLiteral("path"), path.toString()}, {QStringLiteral("value"), value.__variant()}});
    out.line(
        QStringLiteral("%1 %2").arg(printable(path.toString()), printable(toJson(inWords(value)))));
}

Result showRows(Context& context, const CMPath& path)
{
    const auto rows = context.host.rows(path);
    if (!rows)
        return rows.error();
    QVariantList list;
    QVariantList readable;
    for (const OrvaRoles& row : *rows) {
        list.append(row.__variant());
        readable.append(orvaWithWords(OrvaRoles::fields(), row.__hash()));
    }
    context.out.document(
        {{QStringLiteral("path"), path.toString()}, {QStringLiteral("rows"), list}});
    context.out.line(
        QStringLiteral("%1 %2").arg(printable(path.toString()), printable(toJson(readable))));
    return {};
}

/// Shows what a node holds now, be it a value or rows.
Result showPresent(Context& context, const CMPath& path)
{
    const auto node = context.host.node(path);
    if (!node)
        return node.error();
    if (node->kind == QLatin1String("rows"))
        return showRows(context, path);
    const auto value = context.host.value(path);
    if (!value)
        return value.error();
    showChange(context.out, path, *value);
    return {};
}

Result showPresent(Context& context, const QStringList& paths)
{
    for (const QString& path : paths) {
        Result shown = showPresent(context, CMPath(path));
        if (!shown)
            return shown;
    }
    return {};
}

Result watch(Context& context, const Arguments& given)
{
    const QStringList paths = given.texts("PATH");
    const auto wanted = [&paths](const CMPath& path) {
        return paths.isEmpty() || paths.contains(path.toString());
    };
    const QObject guard;
    QObject::connect(&context.host, &Host::valueChanged, &guard,
                     [&context, wanted](const CMPath& path, const OrvaValue& value) {
                         if (wanted(path))
                             showChange(context.out, path, value);
                     });
    QObject::connect(&context.host, &Host::rowsChanged, &guard,
                     [&context, wanted](const CMPath& path) {
                         // Rows that cannot be read any more are not worth ending for.
                         if (wanted(path))
                             static_cast<void>(showRows(context, path));
                     });
    const Result present = showPresent(context, paths);
    return present ? context.host.follow() : present;
}

/// The value that a node of the type `type` is waited to have; an error where it can never have it.
Outcome<OrvaValue> wantedValue(const QString& text, const QString& type)
{
    auto wanted = parseValue(text, type);
    if (!wanted || type.isEmpty())
        return wanted;
    const QString malformed = orvaMalformedField(OrvaValue::fields(), wanted->__hash());
    if (!malformed.isEmpty())
        return Failure{ExitStatus::Usage,
                       QStringLiteral("The condition never holds: its \"%1\" is, or holds, "
                                      "something of the wrong type or out of range.")
                           .arg(malformed)};
    if (!type.split(QLatin1Char('|')).contains(wanted->typeKey()))
        return Failure{
            ExitStatus::Usage,
            QStringLiteral("The condition never holds: it is written {\"%1\": ...}.").arg(type)};
    return wanted;
}

Result wait(Context& context, const Arguments& given)
{
    const QString condition = given.text("CONDITION");
    const int split = condition.indexOf(QLatin1String("=="));
    if (split < 1)
        return Failure{ExitStatus::Usage, QStringLiteral("A condition is written PATH==VALUE.")};
    const QString wantedText = condition.mid(split + 2);
    const CMPath path(condition.left(split));
    const auto node = context.host.node(path);
    if (!node)
        return node.error();
    const auto verdict = [&](const OrvaValue& value) -> std::optional<Result> {
        const QString type = value.isEmpty() ? node->type : value.typeKey();
        if (type.isEmpty() && value.isEmpty())
            return std::nullopt;
        const auto wanted = wantedValue(wantedText, type);
        if (!wanted)
            return wanted.error();
        return holds(value.__variant(), wanted->__variant()) ? std::optional(Result())
                                                             : std::nullopt;
    };
    return context.host.waitFor(path, verdict, context.bus.deadline());
}

} // namespace

Commands watchCommands()
{
    using Kind = Parameter::Kind;
    const Parameter paths = {"PATH", "The nodes; all changes where none is named", Kind::Texts};
    const Parameter condition = {"CONDITION", "PATH==VALUE; of a map, the fields that VALUE names"};
    const Parameter timeout = {"--timeout", "Give up after so many seconds", Kind::Time};
    return {
        {"watch", "Shows nodes' values, now and as they change", {paths.of("NODE")}, &watch},
        {"wait",
         "Waits until a node has a value, for the host and the bus too",
         {condition.required().of("VALUE-NODE"), timeout},
         &wait,
         true},
    };
}

} // namespace ctl
