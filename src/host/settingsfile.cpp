#include "settingsfile.h"

#include "privatefile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <cstdio>
#include <unistd.h>

namespace {

constexpr qint64 MaxFileSize = 64 << 20;

ORVA_LOGGER("Settings")

QString fileName()
{
    return QStringLiteral("settings.json");
}

/// The value of an entry; nothing, with the reason in `why`, where it is not one of `type`.
std::optional<OrvaValue> decode(const QJsonValue& entry, const QString& type, QString* why)
{
    const auto plain = OrvaPlain::fromForeign(entry.toVariant(), why);
    if (!plain)
        return std::nullopt;
    const OrvaValue value(plain->toHash());
    const QString malformed = orvaMalformedField(OrvaValue::fields(), value.__hash());
    if (value.typeKey() == type && malformed.isEmpty())
        return value;
    *why = QStringLiteral("it is not a well-formed \"%1\"").arg(type);
    return std::nullopt;
}

} // namespace

SettingsFile::SettingsFile(const QString& directory)
    : m_directory(QDir(directory).absolutePath())
{
    if (!PrivateFile::makeDirectory(m_directory))
        LOG4CPLUS_ERROR(logger(), "Couldn't make the state directory " << m_directory);
    if (const int strays = PrivateFile::sweep(m_directory, fileName()))
        LOG4CPLUS_INFO(logger(), "Removed what " << strays << " interrupted writes left behind");
    read();
}

std::optional<OrvaValue> SettingsFile::take(const CMPath& path, const OrvaValue& expected)
{
    const auto entry = m_entries.constFind(path.toString());
    if (entry == m_entries.constEnd())
        return std::nullopt;
    QString why;
    auto value = decode(*entry, expected.typeKey(), &why);
    if (!value)
        drop(path, why);
    return value;
}

bool SettingsFile::put(const CMPath& path, const OrvaValue& value, QString* why)
{
    const QJsonObject entry = QJsonObject::fromVariantHash(value.__hash());
    if (!decode(entry, value.typeKey(), why))
        return false;
    m_put.insert(path.toString(), entry);
    return true;
}

bool SettingsFile::commit(QString* why)
{
    const QJsonObject put = std::exchange(m_put, {});
    QJsonObject entries = m_entries;
    for (auto entry = put.begin(); entry != put.end(); ++entry)
        entries.insert(entry.key(), entry.value());
    return entries == m_entries || write(entries, why);
}

void SettingsFile::read()
{
    QString why;
    const auto bytes = PrivateFile::read(m_directory, fileName(), MaxFileSize, &why);
    if (!why.isEmpty())
        return setAside(why);
    if (!bytes) {
        LOG4CPLUS_INFO(logger(), "No settings are stored in " << m_directory << " yet");
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
    LOG4CPLUS_ERROR(logger(), "The settings file " << filePath() << " is damaged: " << reason
                                                   << ". It is set aside as " << name);
    if (::rename(QFile::encodeName(filePath()).constData(), QFile::encodeName(name).constData()) ==
        0)
        return;
    m_blocked = QStringLiteral("the damaged settings file could not be set aside");
    LOG4CPLUS_ERROR(logger(), "No setting will be stored: " << m_blocked);
}

void SettingsFile::drop(const CMPath& path, const QString& reason)
{
    LOG4CPLUS_ERROR(logger(), "The stored setting " << path << " does not suit: " << reason
                                                    << ". Its default is used");
    if (!m_copied) {
        const QString name = freeName();
        // The next write puts another file under the old name.
        m_copied = ::link(QFile::encodeName(filePath()).constData(),
                          QFile::encodeName(name).constData()) == 0;
        LOG4CPLUS_ERROR(logger(), (m_copied ? "The settings as they were are kept as "
                                            : "Couldn't keep the settings as they were as ")
                                      << name);
    }
    if (!m_copied) {
        // The next write would destroy the only copy.
        m_blocked = QStringLiteral("the damaged settings could not be kept");
        return;
    }
    QJsonObject entries = m_entries;
    entries.remove(path.toString());
    QString why;
    if (!write(entries, &why))
        LOG4CPLUS_ERROR(logger(), "Couldn't store the settings: " << why);
}

bool SettingsFile::write(const QJsonObject& entries, QString* why)
{
    const QByteArray bytes = QJsonDocument(entries).toJson();
    if (bytes.size() > MaxFileSize)
        *why = QStringLiteral("the file would be larger than %1 bytes").arg(MaxFileSize);
    else
        *why = m_blocked;
    if (!why->isEmpty())
        return false;
    if (PrivateFile::replace(m_directory, fileName(), bytes, why)) {
        m_entries = entries;
        return true;
    }
    // What was refused may be in place, though nobody knows for how long.
    QString ignored;
    (void)PrivateFile::replace(m_directory, fileName(), QJsonDocument(m_entries).toJson(),
                               &ignored);
    return false;
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
