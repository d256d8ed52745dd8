#include "vek5font.h"

#include <QCryptographicHash>
#include <QtTest>

#include <thread>
#include <vector>

// The dictionary: its lists as hosts store them, and the data-log row.
class tst_Vek5Font : public QObject
{
    Q_OBJECT

private slots:
    void oneInstanceForAllThreads();
    void catalogue();
    void rows_data();
    void rows();
};

void tst_Vek5Font::oneInstanceForAllThreads()
{
    std::vector<vek5Font*> seen(8);
    std::vector<std::thread> threads;
    for (vek5Font*& instance : seen)
        threads.emplace_back([&instance] { instance = vek5Font::instance(); });
    for (std::thread& thread : threads)
        thread.join();
    for (const vek5Font* instance : seen)
        QCOMPARE(instance, seen.front());
}

void tst_Vek5Font::catalogue()
{
    const QStringList events = vek5Font::instance()->getEventLogDesc();
    QCOMPARE(events.size(), 996);
    const int half = 498;
    const QList<int> exceptions{243, 244, 287, 496, 497};
    int count = 0;
    for (int code = 0; code < half; ++code) {
        QVERIFY(!events.at(code).isNull()); // an empty text, not an absent one
        if (events.at(code).isEmpty())
            QVERIFY(events.at(code + half).isEmpty());
        else if (!exceptions.contains(code))
            QCOMPARE(events.at(code + half), QString(events.at(code) + QStringLiteral(" disappear")));
        count += events.at(code).isEmpty() ? 0 : 1;
    }
    QCOMPARE(count, 301);
    // Of the catalogue as agreed, made by another program: hosts compare stored texts letter by letter.
    QCOMPARE(
        QCryptographicHash::hash(events.join(QLatin1Char('\n')).toUtf8(), QCryptographicHash::Sha1).toHex(),
        QByteArray("d219a2dc389f6e23b9a79e2be3286f2b4aeadf08"));
    QCOMPARE(events.at(741), QStringLiteral("BYP Module/Sys board_Bypass abnormal disappear"));
    QCOMPARE(events.at(244), QStringLiteral("Byp Module/Sys board_Output abnormal "));
    QCOMPARE(events.at(785), events.at(287));
    QCOMPARE(events.at(995), QStringLiteral("Inverter_inverter Negative power fault disappear"));
    QCOMPARE(events.at(546), QStringLiteral("UPS need maintenance disappear"));
    QCOMPARE(
        vek5Font::instance()->getDataLogDesc().mid(8, 4),
        QStringList({QStringLiteral("Output frequency(Hz)"), QStringLiteral("Output mode"),
                     QStringLiteral("Remaining battery capacity(%)"), QStringLiteral("Battery voltage(V)")}));
}

void tst_Vek5Font::rows_data()
{
    QTest::addColumn<QMap<int, QVariant>>("data");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("text");
    using Data = QMap<int, QVariant>;
    const Data none;
    QTest::newRow("absent number") << none << 0 << QStringLiteral("0.0");
    QTest::newRow("absent mode") << none << 9 << QStringLiteral("None");
    QTest::newRow("absent pair") << none << 11 << QStringLiteral("0.00.0");
    QTest::newRow("absent state") << none << 14 << QStringLiteral("Disconnect");
    const Data input{{4132, 3.0F}, {4133, 220.04F}, {4134, 221.06F}, {4135, 219.95F}};
    QTest::newRow("three phases") << input << 0 << QStringLiteral("220.0/221.1/219.9");
    Data single = input;
    single.insert(4132, 2);
    QTest::newRow("two are not three") << single << 0 << QStringLiteral("220.0");
    QTest::newRow("output count") << Data{{4162, 3}, {4185, 41.0F}} << 7 << QStringLiteral("0.0/41.0/0.0");
    QTest::newRow("mode") << Data{{4161, 2.0F}} << 9 << QStringLiteral("Load on inverter");
    QTest::newRow("mode too large") << Data{{4161, 7.0F}} << 9 << QStringLiteral("None");
    QTest::newRow("mode negative") << Data{{4161, -1.0F}} << 9 << QStringLiteral("None");
    QTest::newRow("state truncated") << Data{{4101, 3.9F}} << 14 << QStringLiteral("Float charge");
    QTest::newRow("state too large") << Data{{4101, 5.0F}} << 14 << QStringLiteral("Disconnect");
    QTest::newRow("state no int") << Data{{4101, 1e30F}} << 14 << QStringLiteral("Disconnect");
    QTest::newRow("signs join") << Data{{4103, 240.0F}, {4104, -240.0F}} << 11
                                << QStringLiteral("240.0-240.0");
    QTest::newRow("cold") << Data{{4107, -10.0F}} << 13 << QStringLiteral("-10.0");
    QTest::newRow("no sensor") << Data{{4107, -11.0F}} << 13 << QStringLiteral("-");
}

void tst_Vek5Font::rows()
{
    using Data = QMap<int, QVariant>;
    QFETCH(Data, data);
    QFETCH(int, index);
    QFETCH(QString, text);
    const QStringList row = vek5Font::instance()->changeLogData(data);
    QCOMPARE(row.size(), 15);
    QCOMPARE(row.at(index), text);
}

QTEST_GUILESS_MAIN(tst_Vek5Font)
#include "tst_vek5font.moc"
