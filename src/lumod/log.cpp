#include "log.h"

Q_LOGGING_CATEGORY(lcLumod, "lumod")
