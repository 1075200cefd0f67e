// SPDX-License-Identifier: Apache-2.0
#include "buscall.h"

namespace {

constexpr int maxErrorName = 128;

bool isNameCharacter(QChar character)
{
    const ushort ascii = character.unicode();
    return (ascii >= 'a' && ascii <= 'z') || (ascii >= 'A' && ascii <= 'Z') ||
           (ascii >= '0' && ascii <= '9');
}

CMError tooLarge()
{
    return {QStringLiteral("TooLarge"),
            TrString(trExtractContext("CMError {anonymous}::tooLarge()"),
                     "The answer is too large for the bus.")};
}

} // namespace

BusCall::BusCall(const QDBusConnection& connection, const QDBusMessage& message)
    : m_connection(connection)
    , m_message(message)
{
}

void BusCall::answer(const QVariantList& arguments) const
{
    if (m_message.isReplyRequired())
        m_connection.send(m_message.createReply(arguments));
}

void BusCall::fail(const CMError& error) const
{
    if (m_message.isReplyRequired())
        m_connection.send(m_message.createErrorReply(busErrorName(error), error.message()));
}

CMReply<QVariant> BusCall::reply(const Encode& encode) const
{
    auto reply = CMReply<QVariant>::create();
    reply.addWatcher(
        [call = *this, encode](const CMReply<QVariant>& finished) {
            if (!finished.error().isEmpty())
                return call.fail(finished.error());
            const auto arguments = encode(finished.value());
            if (arguments)
                call.answer(*arguments);
            else
                call.fail(tooLarge());
        },
        Qt::DirectConnection);
    return reply;
}

QString busErrorName(const CMError& error)
{
    QString name = error.name().left(maxErrorName);
    for (QChar& character : name) {
        if (!isNameCharacter(character))
            character = QLatin1Char('_');
    }
    if (name.isEmpty())
        name = QStringLiteral("error");
    if (name.at(0).isDigit())
        name.prepend(QLatin1Char('_'));
    return QStringLiteral("org.orva.Error.") + name;
}
