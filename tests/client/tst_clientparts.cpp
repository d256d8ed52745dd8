#include "alarmchanges.h"
#include "columns.h"
#include "controlcommands.h"
#include "deviceinfo.h"
#include "pointstore.h"

#include <limits>
#include <random>

// The collector's decisions, without a thread, a port or a driver.
class tst_ClientParts : public QObject
{
    Q_OBJECT

private slots:
    void storeEqualsPlainMap()
    {
        std::mt19937 random(7);
        PointStore store;
        QMap<int, QVariant> plain;
        QList<QMap<int, QVariant>> copies; // as held by a host: they make the store detach in between
        for (int i = 0; i < 20000; ++i) {
            const int id = i % 3 == 0 ? 1990 + int(random() % 110) : 2000 + i % 50;
            const float value = static_cast<float>(random() % 4);
            store.store(id, value);
            plain.insert(id, value);
            if (i % 700 == 0)
                copies = copies.mid(0, 2) << store.map();
        }
        QCOMPARE(store.map(), plain);
        QCOMPARE(store.map().first().userType(), static_cast<int>(QMetaType::Float));
    }

    void nothingDetachesWithoutNews()
    {
        const auto fill = [](PointStore& store) {
            for (int id = 2000; id < 2950; ++id)
                store.store(id, id == 2500 ? std::numeric_limits<float>::quiet_NaN() : 1.5F);
        };
        PointStore store;
        fill(store);
        QMap<QString, QVariant> info;
        DeviceInfo update;
        update.updatePoints(info, store.map());

        const QMap<int, QVariant> dataCopy = store.map();
        const QMap<QString, QVariant> infoCopy = info;
        fill(store);
        update.updatePoints(info, store.map());
        DeviceInfo::update(info, QStringLiteral("2000"), 1.5F);
        QVERIFY(store.map().isSharedWith(dataCopy) && info.isSharedWith(infoCopy));

        store.store(2300, -0.0F);
        store.store(2300, 0.0F); // equal as numbers, not as values to report
        QVERIFY(!std::signbit(store.map().value(2300).toFloat()));
    }

    void infoKeepsForeignEntriesAndMendsTouchedOnes()
    {
        // 999 sorts after 1000 as text and before it as a number; "name" and "3" belong to somebody else.
        PointStore store;
        QMap<QString, QVariant> info{{QStringLiteral("name"), 1}, {QStringLiteral("3"), 2}};
        DeviceInfo update;
        for (const int id : {5, 40, 999, 1000, 4000, 30000})
            store.store(id, static_cast<float>(id));
        update.updatePoints(info, store.map());
        QCOMPARE(info.size(), 8);

        info.insert(QStringLiteral("999"), QStringLiteral("overwritten by a host"));
        info.remove(QStringLiteral("4000"));
        store.store(1000, -1.0F);
        store.store(7, 7.0F);
        update.updatePoints(info, store.map());
        QCOMPARE(info.size(), 9);
        for (auto point = store.map().constBegin(); point != store.map().constEnd(); ++point)
            QCOMPARE(info.value(QString::number(point.key())), point.value());
        QCOMPARE(info.value(QStringLiteral("3")), QVariant(2));
    }

    void alarmChanges()
    {
        using namespace alarmchanges;
        const QMap<int, int> previous{{1, 1}, {2, 1}, {7, 2}, {368, 1}, {2022, 1}, {2368, 1}};
        const QMap<int, QVariant> data{{1999, 1.0F}, {2000, 1.0F}, {2002, 2.0F}, {2003, 0.6F},
                                       {2007, 2.0F}, {2368, 1.0F}, {2498, 1.0F}, {4000, 1.0F}};
        QStringList seen;
        for (const Change& change : between(previous, data, 498))
            seen << QStringLiteral("%1=%2->%3")
                        .arg(change.index)
                        .arg(change.state)
                        .arg(eventCode(change, 498));
        QCOMPARE(seen.join(QLatin1Char(' ')), QStringLiteral("0=1->0 1=0->499 2=2->500 3=1->3"));
        QVERIFY(between(previous, data, 0).isEmpty());
    }

    void commandTexts_data()
    {
        const auto row = columns<int, QString, QByteArray>("id", "value", "text");
        const QString longValue(80, QLatin1Char('x'));
        row("no argument", 1009, "", "17,");
        row("code 0", 1003, "10", "0,10");
        row("never a format", 1008, "%s%n", "7,%s%n");
        row("cut", 1016, longValue, "10," + QByteArray(46, 'x'));
        row("raw cut", 2016, longValue, QByteArray(49, 'x'));
        row("raw empty", 2016, "", "");
        for (const int id : {0, -1, 1011, 1018, 1012, 99999})
            row(QByteArray::number(id), id, "x", QByteArray());
    }
    void commandTexts()
    {
        QFETCH(int, id);
        QFETCH(QString, value);
        QFETCH(QByteArray, text);
        const std::optional<QByteArray> built = controlcommands::driverText({id, value});
        QCOMPARE(built.has_value(), !text.isNull());
        QCOMPARE(built.value_or(QByteArray()), text);
    }
};

QTEST_GUILESS_MAIN(tst_ClientParts)
#include "tst_clientparts.moc"
