// SPDX-License-Identifier: Apache-2.0
#include "world/real/engines/requiredprogram.h"

#include <QFileInfo>

Result<> requireProgram(const char* who, const QString& program, const char* package)
{
    if (QFileInfo(program).isExecutable())
        return {};
    return Failure{QStringLiteral("%1 the program %2, which is not here; the package %3 has it")
                       .arg(QLatin1String(who), program, QLatin1String(package))};
}
