// SPDX-License-Identifier: Apache-2.0
#include "online/namelookup.h"

#include <QSocketNotifier>

#include <atomic>
#include <memory>
#include <string>

#include <netdb.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int maxQuestions = 4;
constexpr int maxAddresses = 8;
constexpr std::size_t maxTexts = std::size_t(maxAddresses) * (NI_MAXHOST + 1);

std::atomic<int> questions{0};

/// What the thread has; nothing that the end of the process takes away.
struct Question
{
    std::string name;
    int answer;
    ~Question()
    {
        ::close(answer);
        --questions;
    }
};

std::string addressTexts(const addrinfo* first)
{
    std::string texts;
    int count = 0;
    for (auto* address = first; address && count < maxAddresses; address = address->ai_next) {
        char text[NI_MAXHOST];
        if (::getnameinfo(address->ai_addr, address->ai_addrlen, text, sizeof text, nullptr, 0,
                          NI_NUMERICHOST) != 0)
            continue;
        texts += std::string(text) + ' ';
        ++count;
    }
    return texts;
}

void* ask(void* given)
{
    const std::unique_ptr<Question> question(static_cast<Question*>(given));
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* addresses = nullptr;
    if (::getaddrinfo(question->name.c_str(), nullptr, &hints, &addresses) != 0)
        return nullptr;
    const std::string texts = addressTexts(addresses);
    ::freeaddrinfo(addresses);
    ::send(question->answer, texts.data(), texts.size(), MSG_NOSIGNAL);
    return nullptr;
}

/// Where no thread can be had, the question's end closes its socket, which answers it.
void start(std::unique_ptr<Question> question)
{
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    if (questions <= maxQuestions &&
        ::pthread_create(&thread, &attributes, ask, question.get()) == 0)
        static_cast<void>(question.release());
    ::pthread_attr_destroy(&attributes);
}

} // namespace

NameLookup::NameLookup(const QString& name, QObject* parent)
    : QObject(parent)
{
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        QMetaObject::invokeMethod(
            this, [this] { Q_EMIT found({}); }, Qt::QueuedConnection);
        return;
    }
    m_answer = ends[0];
    m_answered = new QSocketNotifier(m_answer, QSocketNotifier::Read, this);
    connect(m_answered, &QSocketNotifier::activated, this, &NameLookup::read);
    ++questions;
    start(std::unique_ptr<Question>(new Question{name.toStdString(), ends[1]}));
}

NameLookup::~NameLookup()
{
    delete m_answered;
    if (m_answer >= 0)
        ::close(m_answer);
}

void NameLookup::read()
{
    m_answered->setEnabled(false);
    QByteArray texts(static_cast<int>(maxTexts), '\0');
    const auto size = ::recv(m_answer, texts.data(), maxTexts, MSG_DONTWAIT);
    texts.truncate(static_cast<int>(qMax(decltype(size){0}, size)));
    QVector<QHostAddress> addresses;
    const auto all = texts.split(' ');
    for (const QByteArray& text : all) {
        const QHostAddress address(QString::fromLatin1(text));
        if (!address.isNull())
            addresses << address;
    }
    Q_EMIT found(addresses);
}
