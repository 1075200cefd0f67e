// SPDX-License-Identifier: Apache-2.0
#include "parser/command.h"

#include "core/orvawords.h"

#include <algorithm>

namespace ctl {

namespace {

Arguments::Value emptyValue(Parameter::Kind kind)
{
    using Kind = Parameter::Kind;
    switch (kind) {
    case Kind::Flag:
    case Kind::Version:
        return false;
    case Kind::Text:
    case Kind::Address:
        return std::string();
    case Kind::Texts:
    case Kind::Addresses:
    case Kind::Names:
        return std::vector<std::string>();
    case Kind::Integer:
        return std::optional<int>();
    case Kind::Natural:
        return std::optional<unsigned>();
    case Kind::Truth:
        return std::optional<bool>();
    case Kind::Seconds:
    case Kind::Time:
    case Kind::Wait:
        return std::optional<double>();
    }
    return {};
}

std::string typeOfKind(Parameter::Kind kind)
{
    using Kind = Parameter::Kind;
    switch (kind) {
    case Kind::Flag:
    case Kind::Version:
        return {};
    case Kind::Text:
    case Kind::Texts:
    case Kind::Names:
        return "TEXT";
    case Kind::Integer:
        return "INT";
    case Kind::Natural:
        return "UINT";
    case Kind::Truth:
        return "{true,false}";
    case Kind::Seconds:
    case Kind::Time:
    case Kind::Wait:
        return "SECONDS";
    case Kind::Address:
    case Kind::Addresses:
        return "ADDRESS";
    }
    return {};
}

const TypeRow* rowOf(const std::string& type)
{
    const auto& rows = typeRows();
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [&type](const TypeRow& row) { return row.type == type; });
    return found == rows.end() ? nullptr : &*found;
}

} // namespace

Parameter Parameter::valueOf(const QMetaEnum& values) const
{
    Parameter changed = *this;
    for (const QString& word : orvaEnumWords(values))
        changed.choices.push_back(word.toStdString());
    for (int i = 0; i < values.keyCount(); ++i)
        changed.synonyms.push_back(std::to_string(values.value(i)));
    return changed;
}

QString Arguments::text(const std::string& name) const
{
    return QString::fromStdString(get<std::string>(name));
}

QStringList Arguments::texts(const std::string& name) const
{
    QStringList texts;
    for (const std::string& text : get<std::vector<std::string>>(name))
        texts.append(QString::fromStdString(text));
    return texts;
}

std::optional<int> Arguments::integer(const std::string& name) const
{
    return get<std::optional<int>>(name);
}

std::optional<unsigned> Arguments::natural(const std::string& name) const
{
    return get<std::optional<unsigned>>(name);
}

std::optional<bool> Arguments::truth(const std::string& name) const
{
    return get<std::optional<bool>>(name);
}

std::optional<double> Arguments::seconds(const std::string& name) const
{
    return get<std::optional<double>>(name);
}

Arguments::Value& Arguments::place(const Parameter& parameter)
{
    return m_values.emplace(parameter.name, emptyValue(parameter.kind)).first->second;
}

std::string Command::parent() const
{
    const size_t last = words.rfind(' ');
    return last == std::string::npos ? std::string() : words.substr(0, last);
}

std::string Command::name() const
{
    return words.substr(words.rfind(' ') + 1);
}

std::vector<const Command*> below(const Commands& commands, const std::string& parent)
{
    std::vector<const Command*> children;
    for (const Command& command : commands) {
        if (command.parent() == parent)
            children.push_back(&command);
    }
    return children;
}

std::string typeOf(const Parameter& parameter)
{
    if (parameter.choices.empty())
        return parameter.type.empty() ? typeOfKind(parameter.kind) : parameter.type;
    std::string words;
    for (const std::string& choice : parameter.choices)
        words += (words.empty() ? "{" : ",") + choice;
    return words + "}";
}

const std::vector<TypeRow>& typeRows()
{
    using Source = TypeRow::Source;
    static const std::vector<TypeRow> rows = {
        {"TEXT", ""},
        {"INT", "NUMBER"},
        {"UINT", "NUMBER"},
        {"FILE", "FILE", Source::Files},
        {"VALUE-NODE", "", Source::ValueNodes},
        {"ACTION-NODE", "", Source::ActionNodes},
        {"ACTION", "PATH", Source::ActionNodes},
        {"ROWS-NODE", "", Source::RowsNodes},
        {"NODE", "", Source::Nodes},
        {"NODE-VALUE", "", Source::NodeValues},
        {"NETWORK", "", Source::Networks},
        {"KNOWN", "", Source::KnownNetworks},
        {"REQUESTER", "", Source::Requesters},
    };
    return rows;
}

std::string shownType(const std::string& type)
{
    const TypeRow* row = rowOf(type);
    return row ? row->shown : type;
}

TypeRow::Source sourceOf(const Parameter& parameter)
{
    const TypeRow* row = rowOf(typeOf(parameter));
    return row ? row->source : TypeRow::Source::None;
}

Parameter resultTime()
{
    return {"--wait", "Wait at most SECONDS for the result, 90 where not given; 0 does not wait",
            Parameter::Kind::Wait};
}

Parameter answerTime()
{
    return {"--wait", "Wait at most SECONDS for the answer", Parameter::Kind::Time};
}

} // namespace ctl
