#include "commandline.h"
#include "secret.h"
#include "valuetext.h"

#include "core/orvaplainvalue.h"
#include "network/networkpaths.h"

#include <algorithm>

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

struct PathsOptions
{
    std::vector<std::string> paths;
};

struct WaitOptions
{
    std::string condition;
    std::optional<double> timeout;
};

QString text(const std::string& argument)
{
    return QString::fromStdString(argument);
}

CMPath pathOf(const std::string& argument)
{
    return CMPath(text(argument));
}

QString toJson(const QVariant& value)
{
    return QString::fromUtf8(OrvaPlain::toJson(value));
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
        table.append(options.paths
                         ? QStringList{node.path}
                         : QStringList{node.path, node.kind, access, printable(node.title)});
    }
    for (const QString& line : tableLines(table))
        context.out.line(line);
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
    for (const QString& line : tableLines(table))
        context.out.line(line);
    return {};
}

void showChange(const Output& out, const CMPath& path, const OrvaValue& value)
{
    out.document(
        {{QStringLiteral("path"), path.toString()}, {QStringLiteral("value"), value.__variant()}});
    out.line(QStringLiteral("%1 %2").arg(path.toString(), printable(toJson(value.__variant()))));
}

Result showRows(Context& context, const CMPath& path)
{
    const auto rows = context.host.rows(path);
    if (!rows)
        return rows.failure();
    QVariantList list;
    for (const OrvaRoles& row : *rows)
        list.append(row.__variant());
    context.out.document(
        {{QStringLiteral("path"), path.toString()}, {QStringLiteral("rows"), list}});
    context.out.line(QStringLiteral("%1 %2").arg(path.toString(), printable(toJson(list))));
    return {};
}

/// Shows what a node holds now, be it a value or rows.
Result showPresent(Context& context, const OrvaBusNode& node)
{
    const CMPath path(node.path);
    if (node.kind == QLatin1String("rows"))
        return showRows(context, path);
    const auto value = context.host.value(path);
    if (!value)
        return value.failure();
    showChange(context.out, path, *value);
    return {};
}

Result showPresent(Context& context, const QStringList& paths)
{
    const auto nodes = context.host.nodes();
    if (!nodes)
        return nodes.failure();
    for (const QString& path : paths) {
        const auto node = std::find_if(nodes->begin(), nodes->end(),
                                       [&path](const auto& known) { return known.path == path; });
        if (node == nodes->end())
            return {ExitStatus::NoSuchNode, QStringLiteral("No node %1.").arg(path)};
        const Result shown = showPresent(context, *node);
        if (!shown.ok())
            return shown;
    }
    return {};
}

Result watch(Context& context, const PathsOptions& options)
{
    QStringList paths;
    for (const std::string& path : options.paths)
        paths.append(text(path));
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
    return present.ok() ? context.host.follow() : present;
}

Result wait(Context& context, const WaitOptions& options)
{
    const QString condition = text(options.condition);
    const int split = condition.indexOf(QLatin1String("=="));
    if (split < 1)
        return {ExitStatus::Usage, QStringLiteral("A condition is written PATH==VALUE.")};
    const QString wantedText = condition.mid(split + 2);
    const auto verdict = [&wantedText](const OrvaValue& value) -> std::optional<Result> {
        if (value.isEmpty())
            return std::nullopt;
        const auto wanted = parseValue(wantedText, value.typeKey());
        if (!wanted)
            return wanted.failure();
        return holds(value.__variant(), wanted->__variant()) ? std::optional(Result())
                                                             : std::nullopt;
    };
    const QDeadlineTimer deadline = options.timeout ? secondsFromNow(*options.timeout)
                                                    : QDeadlineTimer(QDeadlineTimer::Forever);
    return context.host.waitFor(CMPath(condition.left(split)), verdict, deadline);
}

void addPath(CLI::App& command, std::string& path, const std::string& kind)
{
    command.add_option("PATH", path, "The node's path")->required()->type_name(kind);
}

} // namespace

void addGenericCommands(CommandLine& commands)
{
    CLI::App& app = commands.app();

    const auto list = commands.add(app, "nodes", "Lists the host's nodes", &nodes);
    setChoices(*list.app->add_option("--kind", list.options->kind, "Only nodes of this kind"),
               {"value", "activate", "rows"});
    list.app->add_flag("--paths", list.options->paths, "Only the paths");

    const auto getter = commands.add(app, "get", "Shows a node's value", &get);
    addPath(*getter.app, getter.options->path, "VALUE-NODE");

    const auto setter = commands.add(app, "set", "Writes a node's value", &set);
    addPath(*setter.app, setter.options->path, "VALUE-NODE");
    setter.app->add_option("VALUE", setter.options->value, "The value; - reads standard input")
        ->required();

    const auto action =
        commands.add(app, "invoke", "Activates a node and shows its answer", &invoke);
    addPath(*action.app, action.options->path, "ACTION-NODE");
    action.app->add_option("VALUE", action.options->value, "The value; - reads standard input");

    const auto lister = commands.add(app, "rows", "Shows the rows of a list node", &rows);
    addPath(*lister.app, lister.options->path, "ROWS-NODE");

    const auto watcher =
        commands.add(app, "watch", "Shows nodes' values, now and as they change", &watch);
    watcher.app
        ->add_option("PATH", watcher.options->paths, "The nodes; all changes where none is named")
        ->type_name("NODE");

    const auto waiter = commands.add(app, "wait", "Waits until a node has a value", &wait);
    waiter.app
        ->add_option("CONDITION", waiter.options->condition,
                     "PATH==VALUE; of a map, the fields that VALUE names")
        ->required()
        ->type_name("VALUE-NODE");
    setSeconds(*waiter.app->add_option("--timeout", waiter.options->timeout,
                                       "Give up after so many seconds"));
}

} // namespace ctl
