#include "context.h"
#include "families.h"
#include "secret.h"
#include "valuetext.h"

#include "network/networkpaths.h"

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
    const QVariant content = value.__hash().value(value.typeKey());
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
        out.line(toIndentedJson(value.__hash()));
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
                              {QStringLiteral("readOnly"), node.readOnly}});
        const QString access = node.readOnly ? QStringLiteral("read-only") : QString();
        table.append(pathsOnly ? QStringList{printable(node.path)}
                               : QStringList{printable(node.path), node.kind, access,
                                             printable(node.title)});
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

Outcome<QString> valueText(const QString& argument)
{
    return argument == QLatin1String("-") ? readText(argument) : Outcome<QString>(argument);
}

/// A bare word is of the type that the node has now; an object names its type itself.
Result set(Context& context, const Arguments& given)
{
    const auto written = valueText(given.text("VALUE"));
    if (!written)
        return written.error();
    QString type;
    if (!looksLikeObject(*written)) {
        const auto current = context.host.value(pathOf(given));
        if (!current)
            return current.error();
        type = current->typeKey();
    }
    const auto value = parseValue(*written, type);
    return value ? context.host.setValue(pathOf(given), *value) : value.error();
}

/// The type of the value that an action of the network takes, where it is a plain one.
QString actionType(const CMPath& path)
{
    static const QHash<CMPath, QString> types = {
        {OrvaNetworkRemoveWirelessNetworkPath(), OrvaValue::String()},
        {OrvaNetworkPerformWpsPinPath(), OrvaValue::String()},
        {OrvaNetworkRevokeSoftApPath(), OrvaValue::String()},
        {OrvaNetworkWakeOnLanSetEnabledPath(), OrvaValue::Bool()},
    };
    return types.value(path);
}

Outcome<OrvaValue> actionValue(const CMPath& path, const QString& argument)
{
    if (argument.isEmpty())
        return OrvaValue();
    const auto written = valueText(argument);
    return written ? parseValue(*written, actionType(path)) : written.error();
}

Result invoke(Context& context, const Arguments& given)
{
    const CMPath path = pathOf(given);
    const auto value = actionValue(path, given.text("VALUE"));
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
                      printable(toJson(row.value().__variant()))});
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
         {pathOf("VALUE-NODE"), value.required(), answerTime()},
         &set},
        {"invoke",
         "Activates a node and shows its answer",
         {pathOf("ACTION-NODE"), value, answerTime()},
         &invoke},
        {"rows", "Shows the rows of a list node", {pathOf("ROWS-NODE"), answerTime()}, &rows},
    };
}

} // namespace ctl
