// SPDX-License-Identifier: Apache-2.0
#include "world/real/engines/strayprocesses.h"

#include "log.h"

#include <QDir>
#include <QFile>

#include <csignal>

namespace {

QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void killProcesses(const QString& name, const QString& word)
{
    const auto wanted = QFile::encodeName(word);
    const auto entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const auto& entry : entries) {
        bool isProcess = false;
        const pid_t pid = entry.toInt(&isProcess);
        const auto directory = QStringLiteral("/proc/%1/").arg(entry);
        if (!isProcess || contentOf(directory + QStringLiteral("comm")) != name.toUtf8() + '\n' ||
            !contentOf(directory + QStringLiteral("cmdline")).contains(wanted))
            continue;
        qCInfo(lcLumod).noquote() << "Ending what is left of an engine:" << pid;
        ::kill(pid, SIGKILL);
    }
}
