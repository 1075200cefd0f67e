#include "networkinglog.h"

const log4cplus::Logger& networkingLogger()
{
    static const auto instance = log4cplus::Logger::getInstance("Networking");
    return instance;
}
