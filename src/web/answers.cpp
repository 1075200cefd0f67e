// SPDX-License-Identifier: Apache-2.0
#include "answers.h"

#include "core/orvaplainvalue.h"

#include <QFile>

namespace {

struct PageFile
{
    const char* path;
    const char* file;
    const char* type;
};

constexpr PageFile pageFiles[] = {
    {"/", ":/index.html", "text/html; charset=utf-8"},
    {"/page.css", ":/page.css", "text/css"},
    {"/words.js", ":/words.js", "text/javascript; charset=utf-8"},
    {"/device.js", ":/device.js", "text/javascript; charset=utf-8"},
    {"/attempt.js", ":/attempt.js", "text/javascript; charset=utf-8"},
    {"/show.js", ":/show.js", "text/javascript; charset=utf-8"},
    {"/page.js", ":/page.js", "text/javascript; charset=utf-8"},
    {"/icon.svg", ":/icon.svg", "image/svg+xml"},
};

} // namespace

HttpAnswer jsonAnswer(const QVariantHash& fields)
{
    return {200, "application/json", OrvaPlain::toJson(fields)};
}

HttpAnswer refusal(int status, const QString& error, const QString& message)
{
    HttpAnswer answer =
        jsonAnswer({{QStringLiteral("error"), error}, {QStringLiteral("message"), message}});
    answer.status = status;
    return answer;
}

HttpAnswer pageFile(const HttpRequest& request)
{
    for (const PageFile& row : pageFiles) {
        if (request.path != row.path)
            continue;
        if (request.method != "GET" && request.method != "HEAD")
            return {405, "text/plain", "Read only.\n", {{"Allow", "GET, HEAD"}}};
        QFile file(QString::fromLatin1(row.file));
        if (file.open(QIODevice::ReadOnly))
            return {200, row.type, file.readAll()};
    }
    return {404, "text/plain", "Nothing here.\n"};
}
