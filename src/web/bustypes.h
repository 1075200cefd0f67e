// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusArgument>
#include <QList>
#include <QVariantMap>

// What the generated proxy names: rows and values as maps. The list of nodes is never asked for.
using OrvaBusRows = QList<QVariantMap>;
using OrvaBusValue = QVariantMap;
using OrvaBusNodes = QDBusArgument;
