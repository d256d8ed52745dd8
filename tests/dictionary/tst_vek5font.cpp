#include "columns.h"
#include "vek5font.h"

#include <QCryptographicHash>

#include <thread>
#include <vector>

using Data = QMap<int, QVariant>;

// The dictionary: its lists as hosts store them, and the data-log row.
class tst_Vek5Font : public QObject
{
    Q_OBJECT

private slots:
    void oneInstanceForAllThreads()
    {
        std::vector<vek5Font*> seen(8);
        std::vector<std::thread> threads;
        for (vek5Font*& instance : seen)
            threads.emplace_back([&instance] { instance = vek5Font::instance(); });
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(seen, std::vector<vek5Font*>(8, vek5Font::instance()));
    }

    // Of the lists as agreed, made by another program: hosts compare stored texts letter by letter.
    void catalogue()
    {
        const QStringList events = vek5Font::instance()->getEventLogDesc();
        QCOMPARE(events.size(), 996);
        for (const QString& event : events)
            QVERIFY(!event.isNull()); // an empty text, not an absent one
        const QByteArray text = events.join(QLatin1Char('\n')).toUtf8();
        QCOMPARE(QCryptographicHash::hash(text, QCryptographicHash::Sha1).toHex(),
                 QByteArray("d219a2dc389f6e23b9a79e2be3286f2b4aeadf08"));
        QCOMPARE(vek5Font::instance()->getDataLogDesc().mid(8, 4).join(QLatin1Char('|')),
                 QStringLiteral(
                     "Output frequency(Hz)|Output mode|Remaining battery capacity(%)|Battery voltage(V)"));
    }

    void rows_data()
    {
        const auto row = columns<Data, int, QString>("data", "index", "text");
        row("absent number", {}, 0, "0.0");
        row("absent mode", {}, 9, "None");
        row("absent pair", {}, 11, "0.00.0");
        row("absent state", {}, 14, "Disconnect");
        Data input{{4132, 3.0F}, {4133, 220.04F}, {4134, 221.06F}, {4135, 219.95F}};
        row("three phases", input, 0, "220.0/221.1/219.9");
        input.insert(4132, 2);
        row("two are not three", input, 0, "220.0");
        row("output count", {{4162, 3}, {4185, 41.0F}}, 7, "0.0/41.0/0.0");
        row("mode", {{4161, 2.0F}}, 9, "Load on inverter");
        row("mode too large", {{4161, 7.0F}}, 9, "None");
        row("mode negative", {{4161, -1.0F}}, 9, "None");
        row("state truncated", {{4101, 3.9F}}, 14, "Float charge");
        row("state too large", {{4101, 5.0F}}, 14, "Disconnect");
        row("state no int", {{4101, 1e30F}}, 14, "Disconnect");
        row("signs join", {{4103, 240.0F}, {4104, -240.0F}}, 11, "240.0-240.0");
        row("cold", {{4107, -10.0F}}, 13, "-10.0");
        row("no sensor", {{4107, -11.0F}}, 13, "-");
    }
    void rows()
    {
        QFETCH(Data, data);
        QFETCH(int, index);
        QFETCH(QString, text);
        const QStringList row = vek5Font::instance()->changeLogData(data);
        QCOMPARE(row.size(), 15);
        QCOMPARE(row.at(index), text);
    }
};

QTEST_GUILESS_MAIN(tst_Vek5Font)
#include "tst_vek5font.moc"
