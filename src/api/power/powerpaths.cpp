#include "power/powerrecords.h"

CMPath OrvaPowerManagerModuleRegisterPath()
{
    return CMPath(QStringLiteral("power/module/register"));
}

CMPath OrvaPowerManagerResourceRequestPath()
{
    return CMPath(QStringLiteral("power/resource/request"));
}

CMPath OrvaPowerManagerTargetRequestPath()
{
    return CMPath(QStringLiteral("power/target/request"));
}
