// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvarecord.h"

#include <QList>

/// An argument of a translatable text; replaces "%1", "%2" and so on in it.
class ORVA_API TrArg
{
public:
    /// A text, used as it stands.
    TrArg(const QString& text)
        : m_text(text)
    {
    }
    /// A number, in decimal.
    TrArg(int number)
        : m_text(QString::number(number))
    {
    }
    /// The text in the place of the mark.
    [[nodiscard]] const QString& toString() const { return m_text; }

private:
    QString m_text;
};

/// Text for a person: plain, or translatable with a context and arguments. A value type.
class ORVA_API TrString
{
public:
    TrString() = default;
    /// Plain text, shown as it stands.
    TrString(const QString& text)
        : m_text(text)
    {
    }
    /// Plain Latin-1 text.
    explicit TrString(const char* text)
        : m_text(QString::fromLatin1(text))
    {
    }
    /// Translatable text. `context` is what `trExtractContext` makes of the raising function.
    TrString(const QByteArray& context, const char* text, const QList<TrArg>& arguments = {});

    /// The text in the application's language, its arguments in place.
    [[nodiscard]] QString toString() const;
    /// `toString()`, as it stands inside a record.
    operator QVariant() const { return toString(); }

private:
    QByteArray m_context;
    QByteArray m_source;
    QString m_text;
    QList<TrArg> m_arguments;
};

/// The translation context of a function: its signature, written out in the form that gcc gives it,
/// so that a catalogue of translations serves the builds of every compiler.
[[nodiscard]] ORVA_API QByteArray trExtractContext(const char* signature);

/// Writes `toString()`.
ORVA_API std::ostream& operator<<(std::ostream& stream, const TrString& text);

/// Texts stand inside records as strings.
template <>
struct OrvaCodec<TrString> : OrvaPlainCodec
{
    static std::optional<TrString> decode(const QVariant& value)
    {
        const auto text = OrvaCodec<QString>::decode(value);
        return text ? std::optional(TrString(*text)) : std::nullopt;
    }
    static QVariant encode(const TrString& text) { return text.toString(); }
    static bool accepts(const QVariant& value) { return OrvaCodec<QString>::accepts(value); }
};
