#include "commandline.h"
#include "secret.h"
#include "valuetext.h"

#include "network/networkpaths.h"

namespace ctl {

namespace {

struct NodesOptions
{
    std::string kind;
    bool paths = false;
};

struct PathOptions
{
    std::string path;
};

struct ValueOptions
{
    std::string path;
    std::string value;
};

CMPath pathOf(const std::string& argument)
{
    return CMPath(text(argument));
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

Result nodes(Context& context, const NodesOptions& options)
{
    const auto nodes = context.host.nodes();
    if (!nodes)
        return nodes.failure();
    QVector<QStringList> table;
    for (const OrvaBusNode& node : *nodes) {
        if (!options.kind.empty() && node.kind != text(options.kind))
            continue;
        context.out.document({{QStringLiteral("path"), node.path},
                              {QStringLiteral("kind"), node.kind},
                              {QStringLiteral("title"), node.title},
                              {QStringLiteral("permission"), node.permission},
                              {QStringLiteral("readOnly"), node.readOnly}});
        const QString access = node.readOnly ? QStringLiteral("read-only") : QString();
        table.append(options.paths ? QStringList{printable(node.path)}
                                   : QStringList{printable(node.path), node.kind, access,
                                                 printable(node.title)});
    }
    context.out.table(table);
    return {};
}

Result get(Context& context, const PathOptions& options)
{
    const auto value = context.host.value(pathOf(options.path));
    if (!value)
        return value.failure();
    showValue(context.out, *value);
    return {};
}

Outcome<QString> valueText(const std::string& argument)
{
    return argument == "-" ? readText(QStringLiteral("-")) : Outcome<QString>(text(argument));
}

/// A bare word is of the type that the node has now; an object names its type itself.
Result set(Context& context, const ValueOptions& options)
{
    const auto given = valueText(options.value);
    if (!given)
        return given.failure();
    QString type;
    if (!looksLikeObject(*given)) {
        const auto current = context.host.value(pathOf(options.path));
        if (!current)
            return current.failure();
        type = current->typeKey();
    }
    const auto value = parseValue(*given, type);
    return value ? context.host.setValue(pathOf(options.path), *value) : value.failure();
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

Outcome<OrvaValue> actionValue(const CMPath& path, const std::string& argument)
{
    if (argument.empty())
        return OrvaValue();
    const auto given = valueText(argument);
    return given ? parseValue(*given, actionType(path)) : given.failure();
}

Result invoke(Context& context, const ValueOptions& options)
{
    const CMPath path = pathOf(options.path);
    const auto value = actionValue(path, options.value);
    if (!value)
        return value.failure();
    const auto answer = context.host.invoke(path, *value);
    if (!answer)
        return answer.failure();
    if (context.out.json() || !answer->isEmpty())
        showValue(context.out, *answer);
    return {};
}

Result rows(Context& context, const PathOptions& options)
{
    const auto rows = context.host.rows(pathOf(options.path));
    if (!rows)
        return rows.failure();
    QVector<QStringList> table;
    for (const OrvaRoles& row : *rows) {
        context.out.document(row.__hash());
        table.append({printable(row.id()), printable(row.title().toString()),
                      printable(toJson(row.value().__variant()))});
    }
    context.out.table(table);
    return {};
}

void addPath(CLI::App& command, std::string& path, const std::string& kind)
{
    command.add_option("PATH", path, "The node's path")->required()->type_name(kind);
}

} // namespace

void addGenericCommands(CommandLine& commands)
{
    CLI::App& app = commands.app();
    const char* answerTime = "Wait at most SECONDS for the answer";

    const auto list = commands.add(app, "nodes", "Lists the host's nodes", &nodes);
    setChoices(*list.app->add_option("--kind", list.options->kind, "Only nodes of this kind"),
               {"value", "activate", "rows"});
    list.app->add_flag("--paths", list.options->paths, "Only the paths");
    commands.addTime(*list.app, "--wait", answerTime);

    const auto getter = commands.add(app, "get", "Shows a node's value", &get);
    commands.addTime(*getter.app, "--wait", answerTime);
    addPath(*getter.app, getter.options->path, "VALUE-NODE");

    const auto setter = commands.add(app, "set", "Writes a node's value", &set);
    commands.addTime(*setter.app, "--wait", answerTime);
    addPath(*setter.app, setter.options->path, "VALUE-NODE");
    setter.app->add_option("VALUE", setter.options->value, "The value; - reads standard input")
        ->required();

    const auto action =
        commands.add(app, "invoke", "Activates a node and shows its answer", &invoke);
    commands.addTime(*action.app, "--wait", answerTime);
    addPath(*action.app, action.options->path, "ACTION-NODE");
    action.app->add_option("VALUE", action.options->value, "The value; - reads standard input");

    const auto lister = commands.add(app, "rows", "Shows the rows of a list node", &rows);
    commands.addTime(*lister.app, "--wait", answerTime);
    addPath(*lister.app, lister.options->path, "ROWS-NODE");
}

} // namespace ctl
