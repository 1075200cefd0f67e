#pragma once

#include "literals.h"

#include "core/orvaplainvalue.h"
#include "core/orvavalue.h"

/// A value from its JSON text.
inline OrvaValue json(const QByteArray& text)
{
    return OrvaValue(OrvaPlain::fromJson(text)->toHash());
}

/// A value that is one number.
inline OrvaValue number(qint32 content)
{
    OrvaValue value;
    value.setI32_(content);
    return value;
}

/// A value that is one text.
inline OrvaValue text(const char* content)
{
    OrvaValue value;
    value.setString_(QLatin1String(content));
    return value;
}
