// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>
#include <type_traits>
#include <utility>

class CMError;

/// The outcome of a step that can fail: its value, or the error that says why there is none.
///
/// Converts from what it holds, so that a function returns the value, or the error, as it stands:
///
///     OrvaResult<OrvaValue> parse(const QByteArray& text)
///     {
///         if (text.isEmpty())
///             return CMError::failed(QStringLiteral("it is empty"));
///         …
///     }
///
/// A result must be looked at. `Error` is any type that has a default and a `message()`; `CMError`
/// comes with its own header. A value type.
template <class T, class Error = CMError>
class [[nodiscard]] OrvaResult
{
    static_assert(!std::is_same_v<T, Error>, "a result could not tell its value from its error");

public:
    /// The step went well and came to `value`.
    OrvaResult(T value)
        : m_value(std::move(value))
    {
    }
    /// The step failed.
    OrvaResult(Error error)
        : m_error(std::move(error))
    {
    }

    /// True if there is a value.
    [[nodiscard]] bool isOk() const { return m_value.has_value(); }
    /// `isOk()`.
    explicit operator bool() const { return isOk(); }
    /// The value; may be asked for only where there is one.
    [[nodiscard]] const T& operator*() const { return *m_value; }
    /// The value, to be changed or moved out; may be asked for only where there is one.
    [[nodiscard]] T& operator*() { return *m_value; }
    /// A member of the value; may be asked for only where there is one.
    [[nodiscard]] const T* operator->() const { return &*m_value; }
    /// A member of the value, to be changed; may be asked for only where there is one.
    [[nodiscard]] T* operator->() { return &*m_value; }
    /// The value; `instead` where there is none.
    [[nodiscard]] T value_or(T instead) const { return m_value.value_or(std::move(instead)); }

    /// Why there is no value; an error's default where there is one.
    [[nodiscard]] const Error& error() const { return m_error; }
    /// The error's message, for the end of a sentence.
    [[nodiscard]] QString why() const { return m_error.message(); }

private:
    std::optional<T> m_value;
    Error m_error;
};

/// The outcome of a step without a value: success, which is the default, or an error.
template <class Error>
class [[nodiscard]] OrvaResult<void, Error>
{
public:
    /// The step went well.
    OrvaResult() = default;
    /// The step failed.
    OrvaResult(Error error)
        : m_isWell(false)
        , m_error(std::move(error))
    {
    }
    /// The same without the value.
    template <class T>
    OrvaResult(const OrvaResult<T, Error>& result)
        : m_isWell(result.isOk())
        , m_error(result.error())
    {
    }

    /// True if the step went well.
    [[nodiscard]] bool isOk() const { return m_isWell; }
    /// `isOk()`.
    explicit operator bool() const { return isOk(); }
    /// Why it did not; an error's default where it did.
    [[nodiscard]] const Error& error() const { return m_error; }
    /// The error's message, for the end of a sentence.
    [[nodiscard]] QString why() const { return m_error.message(); }

private:
    bool m_isWell = true;
    Error m_error;
};
