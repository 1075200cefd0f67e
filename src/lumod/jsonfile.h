#pragma once

#include <QVariantMap>

#include <optional>

/// Reads a JSON object in which lines that begin with "//" are comments.
/// @param error says for a person, with file and line, why nothing is returned
std::optional<QVariantMap> readJsonFile(const QString& fileName, QString* error);
/// The same for a text that stands in `fileName`.
std::optional<QVariantMap> readJson(const QByteArray& text, const QString& fileName,
                                    QString* error);
