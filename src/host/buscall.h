// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <functional>
#include <optional>

/// A D-Bus method call that is answered later, or at once, but always here. A caller that has gone
/// or wants no answer does no harm.
class BusCall
{
public:
    /// Makes the arguments of the answer from the value of a finished request. Nothing where it is
    /// too large for the bus.
    using Encode = std::function<std::optional<QVariantList>(const QVariant& value)>;

    BusCall(const QDBusConnection& connection, const QDBusMessage& message);

    /// The unique name of the caller.
    [[nodiscard]] QString caller() const { return m_message.service(); }

    void answer(const QVariantList& arguments) const;
    /// Answers with the D-Bus error that stands for `error`.
    void fail(const CMError& error) const;
    /// A request's reply whose end answers the call.
    [[nodiscard]] CMReply<QVariant> reply(const Encode& encode) const;

private:
    QDBusConnection m_connection;
    QDBusMessage m_message;
};

/// The D-Bus name of an error: "org.orva.Error." and the error's own name, with "_" for whatever a
/// D-Bus name may not hold.
[[nodiscard]] QString busErrorName(const CMError& error);
