// SPDX-License-Identifier: Apache-2.0
#include "settingsfile.h"

#include "privatefile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {

constexpr qint64 maxFileSize = 64 << 20;

ORVA_LOGGER(settingsFileLogger, "Settings")

QString fileName()
{
    return QStringLiteral("settings.json");
}

/// The value of an entry; fails where it is not one of `type`.
OrvaResult<OrvaValue> decode(const QJsonValue& entry, const QString& type)
{
    const auto plain = OrvaPlain::fromForeign(entry.toVariant());
    if (!plain)
        return plain.error();
    const OrvaValue value(plain->toHash());
    const QString malformed = orvaMalformedField(OrvaValue::fields(), value.__hash());
    if (value.typeKey() == type && malformed.isEmpty())
        return value;
    return CMError::failed(QStringLiteral("it is not a well-formed \"%1\"").arg(type));
}

} // namespace

SettingsFile::SettingsFile(const QString& directory)
    : m_directory(QDir(directory).absolutePath())
{
    prepare();
    if (const int strays = PrivateFile::sweep(m_directory, fileName()))
        LOG4CPLUS_INFO(settingsFileLogger(),
                       "Removed what " << strays << " interrupted writes left behind");
    read();
}

void SettingsFile::prepare()
{
    if (!PrivateFile::makeDirectory(m_directory))
        m_fault = QStringLiteral("the directory %1 could not be made").arg(m_directory);
    else if (::access(QFile::encodeName(m_directory).constData(), W_OK | X_OK) != 0)
        m_fault = QStringLiteral("the directory %1 cannot be written: %2")
                      .arg(m_directory, QString::fromLocal8Bit(std::strerror(errno)));
    if (!m_fault.isEmpty())
        LOG4CPLUS_ERROR(settingsFileLogger(), "No setting can be stored: " << m_fault);
}

std::optional<OrvaValue> SettingsFile::take(const CMPath& path, const OrvaValue& expected)
{
    const auto entry = m_entries.constFind(path.toString());
    if (entry == m_entries.constEnd())
        return std::nullopt;
    const auto value = decode(*entry, expected.typeKey());
    if (value)
        return *value;
    drop(path, value.why());
    return std::nullopt;
}

OrvaResult<void> SettingsFile::put(const CMPath& path, const OrvaValue& value)
{
    const QJsonObject entry = QJsonObject::fromVariantHash(value.__hash());
    const auto back = decode(entry, value.typeKey());
    if (back)
        m_put.insert(path.toString(), entry);
    return back;
}

OrvaResult<void> SettingsFile::commit()
{
    const QJsonObject put = std::exchange(m_put, {});
    QJsonObject entries = m_entries;
    for (auto entry = put.begin(); entry != put.end(); ++entry)
        entries.insert(entry.key(), entry.value());
    return entries == m_entries ? OrvaResult<void>() : write(entries);
}

void SettingsFile::read()
{
    const auto file = PrivateFile::read(m_directory, fileName(), maxFileSize);
    if (!file)
        return setAside(file.why());
    const auto& bytes = *file;
    if (!bytes) {
        LOG4CPLUS_INFO(settingsFileLogger(), "No settings are stored in " << m_directory << " yet");
        return;
    }
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(*bytes, &error);
    if (error.error != QJsonParseError::NoError)
        return setAside(error.errorString());
    if (!document.isObject())
        return setAside(QStringLiteral("it is not an object"));
    m_entries = document.object();
}

void SettingsFile::setAside(const QString& reason)
{
    const QString name = freeName();
    LOG4CPLUS_ERROR(settingsFileLogger(), "The settings file " << filePath()
                                                               << " is damaged: " << reason
                                                               << ". It is set aside as " << name);
    if (::rename(QFile::encodeName(filePath()).constData(), QFile::encodeName(name).constData()) ==
        0)
        return;
    m_blocked = CMError::failed(QStringLiteral("the damaged settings file could not be set aside"));
    LOG4CPLUS_ERROR(settingsFileLogger(), "No setting will be stored: " << m_blocked->message());
}

void SettingsFile::drop(const CMPath& path, const QString& reason)
{
    LOG4CPLUS_ERROR(settingsFileLogger(), "The stored setting " << path
                                                                << " does not suit: " << reason
                                                                << ". Its default is used");
    if (!m_copied) {
        const QString name = freeName();
        // The next write puts another file under the old name.
        m_copied = ::link(QFile::encodeName(filePath()).constData(),
                          QFile::encodeName(name).constData()) == 0;
        LOG4CPLUS_ERROR(settingsFileLogger(),
                        (m_copied ? "The settings as they were are kept as "
                                  : "Couldn't keep the settings as they were as ")
                            << name);
    }
    if (!m_copied) {
        // The next write would destroy the only copy.
        m_blocked = CMError::failed(QStringLiteral("the damaged settings could not be kept"));
        return;
    }
    QJsonObject entries = m_entries;
    entries.remove(path.toString());
    const auto written = write(entries);
    if (!written)
        LOG4CPLUS_ERROR(settingsFileLogger(), "Couldn't store the settings: " << written.why());
}

OrvaResult<void> SettingsFile::write(const QJsonObject& entries)
{
    const QByteArray bytes = QJsonDocument(entries).toJson();
    if (bytes.size() > maxFileSize)
        return CMError::failed(
            QStringLiteral("the file would be larger than %1 bytes").arg(maxFileSize));
    if (m_blocked)
        return *m_blocked;
    const auto replaced = PrivateFile::replace(m_directory, fileName(), bytes);
    m_fault = replaced ? QString() : replaced.why();
    if (replaced)
        m_entries = entries;
    else // The refused file may be in place, and need not stay there.
        (void)PrivateFile::replace(m_directory, fileName(), QJsonDocument(m_entries).toJson());
    return replaced;
}

QString SettingsFile::filePath() const
{
    return QDir(m_directory).filePath(fileName());
}

QString SettingsFile::freeName() const
{
    const QString stem =
        filePath() + QStringLiteral(".damaged-") +
        QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-hhmmss"));
    QString name = stem;
    for (int number = 2; QFileInfo::exists(name); ++number)
        name = stem + QLatin1Char('-') + QString::number(number);
    return name;
}
