// SPDX-License-Identifier: Apache-2.0
#include "softapwire.h"
#include "tables.h"
#include "world/real/realsettings.h"
#include "world/real/softap/accesspointevent.h"
#include "world/real/softap/softapconfiguration.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

constexpr int linesOfPlace = 3; ///< of hostapd's file
constexpr int fixedLines = 9;   ///< of dnsmasq's

QJsonValue json(const QString& text)
{
    return QJsonDocument::fromJson(("["_s + text + "]"_s).toUtf8()).array().first();
}

QString linesOf(const QByteArray& file, int from)
{
    return QString::fromUtf8(file).chopped(1).split("\n"_s).mid(from).join("; "_s);
}

QStringList remarks;

void remark(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text)
{
    remarks.append(text);
}

/// What is logged of the daemon's settings and of those of a soft AP.
QString remarksOn(const QVariantMap& settings)
{
    remarks.clear();
    auto* const before = qInstallMessageHandler(remark);
    const bool ofDaemon = settings.contains("wired"_s) || settings.contains("softAp"_s);
    if (ofDaemon)
        static_cast<void>(realSettings(settings));
    else
        static_cast<void>(softApSettings(settings));
    qInstallMessageHandler(before);
    return remarks.isEmpty() ? "none"_s : remarks.join("; "_s);
}

QString lastThatTells(const QJsonArray& lines)
{
    QString why = "nothing"_s;
    for (const auto& line : lines) {
        if (tellsWhy(line.toString()))
            why = line.toString();
    }
    return why;
}

/// The outcome of a row's second cell.
QString outcome(const QString& section, const QString& input)
{
    if (section == "event"_s) {
        const auto event = parseAccessPointEvent(json(input).toString().toUtf8());
        if (!event)
            return "none"_s;
        const auto channel = event->channel ? QString::number(event->channel) : QString();
        return (QString::number(int(event->kind)) + " "_s + event->station + channel).trimmed();
    }
    if (section == "why"_s)
        return lastThatTells(json(input).toArray());
    const auto map = json(input).toObject().toVariantMap();
    if (section == "remark"_s)
        return remarksOn(map);
    const auto settings = softApSettings(map);
    if (!settings)
        return settings.why();
    const SoftApPlace place{"uap0"_s,
                            "/run/lumod"_s,
                            {},
                            settings->channel,
                            map.contains("announcesPage"_s),
                            map.contains("takesNames"_s)};
    return section == "hostapd"_s ? linesOf(hostapdConfiguration(*settings, place), linesOfPlace)
                                  : linesOf(dnsmasqConfiguration(*settings, place), fixedLines);
}

} // namespace

class TestSoftAp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_data()
    {
        addTableColumns();
        addTableRows(QFINDTESTDATA("softap.txt"));
    }

    void rows()
    {
        QFETCH(QString, section);
        QFETCH(QStringList, cells);
        QCOMPARE(outcome(section, cells.at(1)), cells.at(2));
    }
};

QTEST_APPLESS_MAIN(TestSoftAp)

#include "tst_softap.moc"
