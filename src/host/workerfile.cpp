// SPDX-License-Identifier: Apache-2.0
#include "workerfile.h"

#include "core/orvaworker.h"

#include <QFile>

#include <string_view>

#include <cstring>

namespace {

constexpr int ownQt = QT_VERSION_MAJOR;

/// What follows the text in the library; empty where the text does not stand there. The standard
/// library's search looks at each byte, which took a third of the host's start.
std::string_view restAfter(std::string_view library, std::string_view text)
{
    const void* found = ::memmem(library.data(), library.size(), text.data(), text.size());
    if (!found)
        return {};
    const auto at = static_cast<std::size_t>(static_cast<const char*>(found) - library.data());
    return library.substr(at + text.size());
}

/// A library names those that it needs in its table of strings, between zero bytes.
bool needsQt(std::string_view library, int version)
{
    const std::string number = std::to_string(version);
    const std::string name = "libQt" + number + "Core.so." + number;
    return !restAfter(library, '\0' + name + '\0').empty();
}

OrvaResult<void> checkQt(std::string_view library)
{
    if (needsQt(library, ownQt))
        return {};
    for (const int other : {ownQt - 1, ownQt + 1}) {
        if (needsQt(library, other))
            return CMError::failed(
                QStringLiteral("it is built with Qt %1, and this host with Qt %2")
                    .arg(other)
                    .arg(ownQt));
    }
    return {};
}

/// A library names the version in the text of its `worker_api_version`.
OrvaResult<void> checkApi(std::string_view library)
{
    constexpr std::size_t longest = 16;
    const std::string_view rest = restAfter(library, ORVA_API_MARK).substr(0, longest);
    const std::string_view version = rest.substr(0, rest.find('\0'));
    if (rest.empty() || version == ORVA_API_VERSION)
        return {};
    return CMError::failed(
        QStringLiteral("it is built for version %1 of the workers' interface, and this host "
                       "has " ORVA_API_VERSION)
            .arg(QString::fromLatin1(version.data(), static_cast<int>(version.size()))));
}

} // namespace

OrvaResult<void> checkWorkerFile(const QString& library)
{
    QFile file(library);
    const uchar* content = file.open(QIODevice::ReadOnly) ? file.map(0, file.size()) : nullptr;
    if (!content)
        return {};
    const std::string_view bytes(reinterpret_cast<const char*>(content),
                                 static_cast<std::size_t>(file.size()));
    const auto qt = checkQt(bytes);
    return qt ? checkApi(bytes) : qt;
}
