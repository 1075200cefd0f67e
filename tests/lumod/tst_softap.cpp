// SPDX-License-Identifier: Apache-2.0
#include "softapwire.h"
#include "tables.h"
#include "world/real/accesspointevent.h"
#include "world/real/softapconfiguration.h"

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

/// The outcome of a row's second cell.
QString outcome(const QString& section, const QString& input)
{
    if (section == "event"_s) {
        const auto event = parseAccessPointEvent(json(input).toString().toUtf8());
        return event ? (QString::number(int(event->kind)) + " "_s + event->station).trimmed()
                     : "none"_s;
    }
    const auto settings = softApSettings(json(input).toObject().toVariantMap());
    if (!settings)
        return settings.why();
    const SoftApPlace place{"uap0"_s, "/run/lumod"_s, {}, settings->channel};
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
