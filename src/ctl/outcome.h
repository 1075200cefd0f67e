#pragma once

#include <QString>
#include <utility>
#include <variant>

namespace ctl {

/// The exit status of orvactl; scripts rely on the numbers.
enum class ExitStatus {
    Done = 0,       ///< what was asked for is done
    Other = 1,      ///< a fault that has no number of its own
    Usage = 2,      ///< the command line or a value in it cannot be understood
    TimedOut = 3,   ///< the time given with --wait or --timeout ran out
    Failed = 4,     ///< the host understood the request, and it failed or was refused
    Refused = 5,    ///< the bus policy or the host lets this user not do it
    NoSuchNode = 6, ///< the host has no node of that path
    NotRunning = 8, ///< the host or the bus is not there
};

/// How a step ended: its status and, unless it is done, a text for the person who asked.
struct [[nodiscard]] Result
{
    ExitStatus status = ExitStatus::Done;
    QString text;

    [[nodiscard]] bool ok() const { return status == ExitStatus::Done; }
};

/// A value, or the result that says why there is none.
template <typename T>
class [[nodiscard]] Outcome
{
public:
    Outcome(T value)
        : m_state(std::move(value))
    {
    }
    Outcome(Result failure)
        : m_state(std::move(failure))
    {
    }

    explicit operator bool() const { return std::holds_alternative<T>(m_state); }
    [[nodiscard]] const T& operator*() const { return *std::get_if<T>(&m_state); }
    [[nodiscard]] const T* operator->() const { return std::get_if<T>(&m_state); }

    /// The same without the value.
    [[nodiscard]] Result result() const { return *this ? Result() : failure(); }
    /// Why there is no value; only to be called where there is none.
    [[nodiscard]] const Result& failure() const { return *std::get_if<Result>(&m_state); }

private:
    std::variant<T, Result> m_state;
};

} // namespace ctl
