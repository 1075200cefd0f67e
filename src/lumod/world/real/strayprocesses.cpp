// SPDX-License-Identifier: Apache-2.0
#include "world/real/strayprocesses.h"

#include "log.h"

#include <QDir>
#include <QFile>

#include <csignal>

void killProcessesWith(const QString& word)
{
    const auto wanted = QFile::encodeName(word);
    const auto entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const auto& entry : entries) {
        bool isProcess = false;
        const pid_t pid = entry.toInt(&isProcess);
        QFile file(QStringLiteral("/proc/%1/cmdline").arg(entry));
        if (!isProcess || !file.open(QIODevice::ReadOnly) || !file.readAll().contains(wanted))
            continue;
        qCInfo(lcLumod).noquote() << "Ending what is left of an engine:" << pid;
        ::kill(pid, SIGKILL);
    }
}
