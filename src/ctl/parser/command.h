// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "output/outcome.h"

#include <QMetaEnum>
#include <QStringList>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace ctl {

struct Context;

/// One argument or option of a command, as help, manual page and completion describe it.
struct Parameter
{
    /// The texts that a person may write for it.
    enum class Kind {
        Flag,      ///< nothing: it is there or not
        Version,   ///< nothing: it has the version shown instead of all else
        Text,      ///< any text
        Texts,     ///< any number of texts
        Integer,   ///< a number of 32 bits
        Natural,   ///< the same without a sign
        Truth,     ///< true or false
        Seconds,   ///< a time in seconds, more than 0
        Time,      ///< the same, and the time for all of the command
        Wait,      ///< the same for an action; 0 has it not wait for the result
        Address,   ///< an IPv4 address
        Addresses, ///< several, commas between them
        Names,     ///< any texts, commas between them
    };

    std::string name; ///< begins with a dash where it is an option
    std::string description;
    Kind kind = Kind::Text;
    std::string type = {}; ///< what completes it, see typeOf(); empty for the kind's own
    std::vector<std::string> choices = {};  ///< the only texts it may have; empty for any
    std::vector<std::string> synonyms = {}; ///< for the choices, in their order; not shown
    std::vector<std::string> excludes = {}; ///< options that it does not go with
    std::string fallback = {};              ///< its text where none is given
    bool isRequired = false;
    bool isHidden = false;

    [[nodiscard]] bool isOption() const { return name.front() == '-'; }

    // For the rows of a table.
    Parameter required() const { return with(&Parameter::isRequired, true); }
    Parameter hidden() const { return with(&Parameter::isHidden, true); }
    Parameter of(const std::string& what) const { return with(&Parameter::type, what); }
    Parameter oneOf(const std::vector<std::string>& words) const
    {
        return with(&Parameter::choices, words);
    }
    /// One of an enumeration's values, by its word or its number.
    Parameter valueOf(const QMetaEnum& values) const;
    Parameter without(const std::vector<std::string>& options) const
    {
        return with(&Parameter::excludes, options);
    }
    Parameter usually(const std::string& text) const { return with(&Parameter::fallback, text); }

private:
    template <typename Member, typename Value>
    [[nodiscard]] Parameter with(Member Parameter::*member, const Value& value) const
    {
        Parameter changed = *this;
        changed.*member = value;
        return changed;
    }
};

/// The values that a person gave for the parameters of a command, by their names. To name one that
/// the command does not have is a mistake of ours and ends the program.
class Arguments
{
public:
    using Value = std::variant<bool, std::string, std::vector<std::string>, std::optional<int>,
                               std::optional<unsigned>, std::optional<double>, std::optional<bool>>;

    /// Empty where the text was not given.
    [[nodiscard]] QString text(const std::string& name) const;
    [[nodiscard]] QStringList texts(const std::string& name) const;
    [[nodiscard]] bool flag(const std::string& name) const { return get<bool>(name); }
    [[nodiscard]] std::optional<int> integer(const std::string& name) const;
    [[nodiscard]] std::optional<unsigned> natural(const std::string& name) const;
    [[nodiscard]] std::optional<bool> truth(const std::string& name) const;
    [[nodiscard]] std::optional<double> seconds(const std::string& name) const;

    /// The place where the parser stores the parameter's value; the reference lasts.
    Value& place(const Parameter& parameter);

private:
    template <typename T>
    [[nodiscard]] const T& get(const std::string& name) const
    {
        return std::get<T>(m_values.at(name));
    }

    std::map<std::string, Value> m_values;
};

/// A command, or a group of commands, one of which must be named.
struct Command
{
    using Run = std::function<Result(Context&, const Arguments&)>;

    std::string words; ///< as a person writes them: "wifi connect"
    std::string description;
    std::vector<Parameter> parameters = {};
    Run run = {};                          ///< none for a group
    bool isPatient = false;                ///< waits for a bus and a host that are not there yet
    std::vector<std::string> columns = {}; ///< of the table that it writes, for --terse

    /// For the rows of a table: the same with columns.
    Command writing(const std::vector<std::string>& names) const
    {
        Command changed = *this;
        changed.columns = names;
        return changed;
    }

    [[nodiscard]] bool isGroup() const { return !run; }
    /// The words before the last; empty where there is one.
    [[nodiscard]] std::string parent() const;
    /// The last word.
    [[nodiscard]] std::string name() const;
};

/// Commands in the order in which help, manual page and completion have them; a group stands before
/// its commands.
using Commands = std::vector<Command>;

/// One entry of the manual page.
struct Note
{
    std::string subject;
    std::string text;
};

/// The program as a whole.
struct Program
{
    std::string description;
    std::string footer;
    std::vector<Parameter> options;
    Commands commands;
    std::vector<Note> environment;
    std::vector<Note> examples;
};

/// Everything that orvactl does.
Program program();

/// The commands directly below the words `parent`.
std::vector<const Command*> below(const Commands& commands, const std::string& parent);

/// A type of its own: the text that a person reads in its place, and what completes it.
struct TypeRow
{
    /// The things that complete a word: the shell's files, or what the host knows.
    enum class Source {
        None,
        Files,
        ValueNodes,
        ActionNodes,
        RowsNodes,
        Nodes,
        NodeValues, ///< the words of the type of the node that stands before
        Networks,
        KnownNetworks,
        Requesters
    };

    std::string type;
    std::string shown; ///< empty where the parameter's name or description says it all
    Source source = Source::None;
};

/// The types that are shown otherwise, or completed.
const std::vector<TypeRow>& typeRows();

/// The kind of text that a parameter takes, in one word: its choices in braces, its own type, or
/// that of its kind.
std::string typeOf(const Parameter& parameter);

/// The same as a person reads it.
std::string shownType(const std::string& type);

/// What completes a parameter that has no choices.
TypeRow::Source sourceOf(const Parameter& parameter);

/// The --wait option of a command that waits for an answer alone.
Parameter answerTime();

/// The --wait option of an action that waits for its result.
Parameter resultTime();

} // namespace ctl
