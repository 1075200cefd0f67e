#pragma once

#include <QByteArray>
#include <QString>

/// Replaces the file `fileName`, or where a link of that name leads, by `text` in one step,
/// readable by everybody.
/// @return why it could not, for a person; empty when it could
[[nodiscard]] QString saveText(const QString& fileName, const QByteArray& text);
