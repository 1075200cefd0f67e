// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "context.h"
#include "output/valuetext.h"
#include "secret.h"

namespace ctl {

namespace {

CMPath pathOf(const Arguments& given)
{
    return CMPath(given.text("PATH"));
}

/// A scalar as its bare text, anything else as indented JSON.
void showValue(const Output& out, const OrvaValue& value)
{
    out.document(value.__hash());
    const QVariantHash readable = inWords(value);
    const QVariant content = readable.value(value.typeKey());
    switch (content.userType()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Double:
        out.line(toJson(content));
        break;
    case QMetaType::QString:
        out.line(printable(content.toString()));
        break;
    default:
        out.line(toIndentedJson(readable));
        break;
    }
}

Result nodes(Context& context, const Arguments& given)
{
    const QString kind = given.text("--kind");
    const bool pathsOnly = given.flag("--paths");
    const auto nodes = context.host.nodes();
    if (!nodes)
        return nodes.error();
    QVector<QStringList> table;
    for (const OrvaBusNode& node : *nodes) {
        if (!kind.isEmpty() && node.kind != kind)
            continue;
        context.out.document({{QStringLiteral("path"), node.path},
                              {QStringLiteral("kind"), node.kind},
                              {QStringLiteral("title"), node.title},
                              {QStringLiteral("permission"), node.permission},
                              {QStringLiteral("readOnly"), node.readOnly},
                              {QStringLiteral("type"), node.type}});
        const QString access = node.readOnly ? QStringLiteral("read-only") : QString();
        table.append(pathsOnly ? QStringList{printable(node.path)}
                               : QStringList{printable(node.path), node.kind, printable(node.type),
                                             access, printable(node.title)});
    }
    context.out.table(table);
    return {};
}

Result get(Context& context, const Arguments& given)
{
    const auto value = context.host.value(pathOf(given));
    if (!value)
        return value.error();
    showValue(context.out, *value);
    return {};
}

/// The value that a person wrote for a node. An object names its type itself; the type of a word is
/// asked of the host.
Outcome<OrvaValue> valueFor(Host& host, const CMPath& path, const QString& argument)
{
    const auto written =
        argument == QLatin1String("-") ? readText(argument) : Outcome<QString>(argument);
    if (!written)
        return written.error();
    if (looksLikeObject(*written))
        return parseValue(*written, {});
    const auto node = host.node(path);
    return node ? parseValue(*written, node->type) : node.error();
}

Result set(Context& context, const Arguments& given)
{
    const auto value = valueFor(context.host, pathOf(given), given.text("VALUE"));
    return value ? context.host.setValue(pathOf(given), *value) : value.error();
}

Result invoke(Context& context, const Arguments& given)
{
    const CMPath path = pathOf(given);
    const QString argument = given.text("VALUE");
    const auto value = argument.isEmpty() ? Outcome<OrvaValue>(OrvaValue())
                                          : valueFor(context.host, path, argument);
    if (!value)
        return value.error();
    const auto answer = context.host.invoke(path, *value);
    if (!answer)
        return answer.error();
    if (context.out.json() || !answer->isEmpty())
        showValue(context.out, *answer);
    return {};
}

Result rows(Context& context, const Arguments& given)
{
    const auto rows = context.host.rows(pathOf(given));
    if (!rows)
        return rows.error();
    QVector<QStringList> table;
    for (const OrvaRoles& row : *rows) {
        context.out.document(row.__hash());
        table.append({printable(row.id()), printable(row.title().toString()),
                      printable(toJson(inWords(row.value())))});
    }
    context.out.table(table);
    return {};
}

Parameter pathOf(const std::string& kind)
{
    return Parameter{"PATH", "The node's path"}.required().of(kind);
}

} // namespace

Commands genericCommands()
{
    const Parameter value = {"VALUE", "The value; - reads standard input"};
    return {
        {"nodes",
         "Lists the host's nodes",
         {Parameter{"--kind", "Only nodes of this kind"}.oneOf({"value", "activate", "rows"}),
          {"--paths", "Only the paths", Parameter::Kind::Flag},
          answerTime()},
         &nodes},
        {"get", "Shows a node's value", {pathOf("VALUE-NODE"), answerTime()}, &get},
        {"set",
         "Writes a node's value",
         {pathOf("VALUE-NODE"), value.required().of("NODE-VALUE"), answerTime()},
         &set},
        {"invoke",
         "Activates a node and shows its answer",
         {pathOf("ACTION-NODE"), value, answerTime()},
         &invoke},
        {"rows", "Shows the rows of a list node", {pathOf("ROWS-NODE"), answerTime()}, &rows},
    };
}

} // namespace ctl
