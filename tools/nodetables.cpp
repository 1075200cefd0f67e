// SPDX-License-Identifier: Apache-2.0
// Prints what docs/nodes.md is made of beside the host's answers: the rows of the tables of nodes,
// in the form in which "orvactl --json nodes" prints nodes, with their words, and the enumerations'
// words.

#include "common/hostnodes.h"
#include "core/orvaplainvalue.h"
#include "core/orvaroles.h"
#include "core/orvawords.h"
#include "network/networkpaths.h"
#include "network/networkrecords.h"
#include "power/powerrecords.h"
#include "standins/standinnodes.h"

#include <cstdio>

namespace {

void print(const QVariantHash& document)
{
    std::puts(OrvaPlain::toJson(document).constData());
}

QString kindOf(CMNodeRow::Kind kind)
{
    switch (kind) {
    case CMNodeRow::Value:
    case CMNodeRow::ReadOnly:
        return QStringLiteral("value");
    case CMNodeRow::Action:
        return QStringLiteral("activate");
    case CMNodeRow::Rows:
        return QStringLiteral("rows");
    }
    return {};
}

void print(const CMNodeRow& row, const char* words)
{
    print({{QStringLiteral("path"), QString::fromLatin1(row.path)},
           {QStringLiteral("kind"), kindOf(row.kind)},
           {QStringLiteral("type"), QString::fromLatin1(row.type)},
           {QStringLiteral("title"), QString::fromLatin1(row.title)},
           {QStringLiteral("permission"), OrvaPermission::toString(row.permission)},
           {QStringLiteral("readOnly"),
            row.kind == CMNodeRow::ReadOnly || row.kind == CMNodeRow::Rows},
           {QStringLiteral("words"), QString::fromLatin1(words)}});
}

void printEnumerations(const QVector<OrvaField>& fields)
{
    for (const OrvaField& field : fields) {
        if (field.shape.values) {
            const QMetaEnum values = field.shape.values();
            print(
                {{QStringLiteral("enumeration"), QString::fromLatin1(values.scope())},
                 {QStringLiteral("words"), OrvaCodec<QStringList>::encode(orvaEnumWords(values))}});
        }
        if (field.shape.fields)
            printEnumerations(field.shape.fields());
    }
}

} // namespace

#define PRINT(Function, path, kind, type, permission, title, words) \
    print({path, CMNodeRow::kind, type, OrvaPermission::permission, title}, words);

int main()
{
    ORVA_NETWORK_NODES(PRINT)
    ORVA_POWER_NODES(PRINT)
    ORVA_STANDIN_NODES(PRINT)
    ORVA_HOST_NODES(PRINT)
    printEnumerations(OrvaRoles::fields());
    printEnumerations(OrvaPowerManagerResourceRequest::fields());
    printEnumerations(OrvaPowerManagerTarget::fields());
}
