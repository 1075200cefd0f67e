// SPDX-License-Identifier: Apache-2.0
#include "workerqt.h"

#include <QFile>

#include <string_view>

namespace {

constexpr int ownQt = QT_VERSION_MAJOR;

/// A library names those that it needs in its table of strings, between zero bytes.
bool needsQt(std::string_view library, int version)
{
    const std::string number = std::to_string(version);
    const std::string name = "libQt" + number + "Core.so." + number;
    return library.find('\0' + name + '\0') != std::string_view::npos;
}

} // namespace

OrvaResult<void> checkQtOf(const QString& library)
{
    QFile file(library);
    const uchar* content = file.open(QIODevice::ReadOnly) ? file.map(0, file.size()) : nullptr;
    if (!content)
        return {};
    const std::string_view bytes(reinterpret_cast<const char*>(content),
                                 static_cast<std::size_t>(file.size()));
    for (const int other : {ownQt - 1, ownQt + 1}) {
        if (needsQt(bytes, other) && !needsQt(bytes, ownQt))
            return CMError::failed(
                QStringLiteral("it is built with Qt %1, and this host with Qt %2")
                    .arg(other)
                    .arg(ownQt));
    }
    return {};
}
