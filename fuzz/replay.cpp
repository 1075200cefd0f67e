// SPDX-License-Identifier: Apache-2.0
// Replays a corpus where there is no libFuzzer: each file of the directories that it is given.
#include "target.h"

#include <QDir>

#include <cstdio>

int main(int argc, char** argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const QDir directory(QFile::decodeName(argv[i]));
        const QStringList names = directory.entryList(QDir::Files, QDir::Name);
        for (const QString& name : names) {
            QFile file(directory.filePath(name));
            if (!file.open(QIODevice::ReadOnly))
                return 1;
            const QByteArray input = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.constData()),
                                   static_cast<std::size_t>(input.size()));
            ++count;
        }
    }
    std::printf("%d inputs replayed\n", count);
    return count > 0 ? 0 : 1;
}
