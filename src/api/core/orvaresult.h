#pragma once

#include "core/model/cmerror.h"

#include <optional>
#include <utility>

/// What a step that can fail comes to: its value, or the error that says why there is none.
///
/// `OrvaResult<void>`, below, is for a step that has no value. Both convert from what they hold, so
/// that such a function returns the value, or the error, as it stands. A result must be looked at.
template <class T>
class [[nodiscard]] OrvaResult
{
public:
    /// The step went well and came to `value`.
    OrvaResult(T value)
        : m_value(std::move(value))
    {
    }
    /// The step failed; `error` is not empty.
    OrvaResult(const CMError& error)
        : m_error(error)
    {
    }

    /// Whether there is a value.
    [[nodiscard]] bool isOk() const { return m_value.has_value(); }
    /// `isOk()`.
    explicit operator bool() const { return isOk(); }
    /// The value; may be asked for only where there is one.
    [[nodiscard]] const T& operator*() const { return *m_value; }
    /// A member of the value; may be asked for only where there is one.
    const T* operator->() const { return &*m_value; }
    /// The value; `instead` where there is none.
    [[nodiscard]] T value_or(T instead) const { return m_value.value_or(std::move(instead)); }
    /// Moves the value out; may be asked for only where there is one.
    [[nodiscard]] T take() { return std::move(*m_value); }
    /// Why there is no value; empty where there is one.
    [[nodiscard]] const CMError& error() const { return m_error; }
    /// The error's message, for the end of a sentence.
    [[nodiscard]] QString why() const { return m_error.message(); }

private:
    std::optional<T> m_value;
    CMError m_error;
};

/// What a step without a value comes to: well, which it is by default, or an error.
template <>
class [[nodiscard]] OrvaResult<void>
{
public:
    /// The step went well.
    OrvaResult() = default;
    /// The step failed, unless `error` is empty.
    OrvaResult(const CMError& error)
        : m_error(error)
    {
    }

    /// Whether the step went well.
    [[nodiscard]] bool isOk() const { return m_error.isEmpty(); }
    /// `isOk()`.
    explicit operator bool() const { return isOk(); }
    /// Why it did not; empty where it did.
    [[nodiscard]] const CMError& error() const { return m_error; }
    /// The error's message, for the end of a sentence.
    [[nodiscard]] QString why() const { return m_error.message(); }

private:
    CMError m_error;
};
