// What the host decides without a thread, a process or a plugin.

#include "columns.h"
#include "eventqueue.h"
#include "hostoptions.h"
#include "recordjson.h"
#include "recordtext.h"
#include "testfiles.h"
#include "unitlist.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <limits>

namespace {

using DataMap = QMap<int, QVariant>;

QVariantMap dataRecord(const DataMap& data)
{
    return {{QStringLiteral("timeStr"), QStringLiteral("2024-03-05 07:08:09")},
            {QStringLiteral("data"), QVariant::fromValue(data)}};
}

} // namespace

class HostDecisionsTest : public QObject
{
    Q_OBJECT

private slots:
    void refusesOptions_data()
    {
        const auto row = columns<QString>("expected");
        row("--seconds 5s", "--seconds 5s");
        row("--seconds -1", "--seconds -1");
        row("--seconds 99999999", "--seconds");
        row("--units A,,B", "--units");
        row("--control A,on,1", "UNIT,ID,VALUE");
        row("--control A,1009", "UNIT,ID,VALUE");
        row("--control A,99999999999,", "UNIT,ID,VALUE");
        row("--nonsense", "nonsense");
        row("--json surplus", "surplus");
        row("--json", "--json goes with --headless");
        row("--control A,1009,", "--control goes with --headless");
        row("--plugin", "plugin");
        row("--log-interval 0", "--log-interval 0: a whole number from 1");
        row("--keep-days 1.5", "--keep-days 1.5: a whole number from 0");
        row("--journal=", "--journal");
        row("--export-log=", "--export-log");
        row("--from 2024-03-05", "--from goes with");
        row("--export-log a --from yesterday", "--from \"yesterday\"");
        row("--export-log a --from 2024-03-05T10:00 --to 2024-03-05T10:00", "--to");
        row("--export-log a --units A", "--units does not go");
        row("--export-log - --export-events -", "--export-log -");
        row("--export-log a --journal none", "--journal none");
        row("--screenshots=", "name of a folder");
        row("--screenshots p --json", "--json does not go with --screenshots");
        row("--screenshots p --check", "--check does not go with --screenshots");
        row("--screenshots p --export-log l", "export does not go with --screenshots");
    }
    void refusesOptions()
    {
        QFETCH(QString, expected);
        const QString arguments = QStringLiteral("ups-host ") + rowName();
        const QString error = parseOptions(words(arguments)).error;
        QVERIFY2(error.contains(expected), qPrintable(error));
        QVERIFY(!error.contains(QLatin1Char('\n')));
    }

    void readsOptions()
    {
        const HostOptions oneDay =
            parseOptions(words("ups-host --export-log=a --from=2024-03-05 --to=2024-03-05")).options;
        QCOMPARE(oneDay.journalFile, QStringLiteral("journal.sqlite"));
        QCOMPARE(*oneDay.exports.toUtcMs - *oneDay.exports.fromUtcMs, 24 * 3600 * 1000);

        const ParsedOptions parsed = parseOptions(
            words("ups-host --headless --control A,1009,") +
            QStringList{QStringLiteral("--control=A, B,2016,3000,5"), QStringLiteral("--units=B, A")});
        QCOMPARE(parsed.error, QString());
        QCOMPARE(parsed.options.controls.size(), 2);
        QCOMPARE(parsed.options.controls[0].value, QString());
        QCOMPARE(parsed.options.controls[1].unitName, QStringLiteral("A, B"));
        QCOMPARE(parsed.options.controls[1].id, 2016);
        QCOMPARE(parsed.options.controls[1].value, QStringLiteral("3000,5"));
        QCOMPARE(parsed.options.unitNames, QStringList({QStringLiteral("B"), QStringLiteral("A")}));
    }

    void readsUnits_data()
    {
        const auto row = columns<QByteArray, QString, QString>("text", "names", "error"); // a part of it
        row("file order", "; c\n[Z]\nportName=p\n[A]\ncommType=1\nipAddr=h\naddr=255\n", "Z|A", "");
        row("nested name, selection only inside it", "[s/A]\nportName=p\neventChooseList\\3=1\n", "s/A", "");
        row("group without a key", "[A]\n[B]\nportName=p\n", "", "[A] has no keys");
        row("comment behind a section", "[B] ; rack 3\nportName=p\n", "B", "");
        row("empty", "", "", "no unit");
        row("no group", "portName=p\n", "", "[General]");
        row("address not a number", "[A]\nportName=p\naddr=one\n", "", "A/addr=one");
        row("broadcast on a line", "[A]\nportName=p\naddr=0\n", "", "A/addr=0");
        row("port out of range", "[A]\ncommType=1\nipAddr=h\nport=65536\n", "", "A/port=65536");
        row("empty interval", "[A]\nportName=p\ninterval=\n", "", "A/interval=");
        row("value is a list", "[A]\nportName=p\nretries=5,6\n", "", "A/retries=5,6");
        row("unknown transport", "[A]\nportName=p\ncommType=2\n", "", "A/commType=2");
        row("serial without port", "[A]\naddr=1\n", "", "A/portName is missing");
        row("port name is a list", "[A]\nportName=a,b\n", "", "A/portName is missing");
        row("TCP without host", "[A]\ncommType=1\nportName=p\n", "", "A/ipAddr is missing");
        row("second unit wrong", "[A]\nportName=p\n[B]\nx=1\n", "", "B/portName");
        row("name with an end of line", "[a%0Ab]\naddr=1\n", "", "a?b/portName");
        row("not an INI file", "[A]\nportName=p\n\nhello\n", "", "line 4");
    }
    void checksLines()
    {
        const QTemporaryDir folder;
        const auto errorOf = [&](const char* serial) {
            writeFile(folder.filePath(QStringLiteral("dev.ini")), "[A]\nportName=/dev/p\n");
            writeFile(folder.filePath(QStringLiteral("serial.ini")), serial);
            return unitlist::lineError(folder.filePath(QStringLiteral("serial.ini")),
                                       folder.filePath(QStringLiteral("dev.ini")), {QStringLiteral("A")});
        };
        QCOMPARE(errorOf("[other]\nparam=nonsense\n"), QString());
        QCOMPARE(errorOf("[dev/p]\nparam=9600,n,8,1\ntimeout=300\n"), QString());
        QVERIFY(errorOf("[dev/p]\nparam=9600,x,8,1\n\n").contains(QLatin1String("param=9600,x,8,1")));
        QVERIFY(errorOf("[dev/p]\ntimeout=50\n\n\n").contains(QLatin1String("timeout=50")));
        QVERIFY(errorOf("[dev/p]\ntimeout=soon\n\n\n\n").contains(QLatin1String("timeout=soon")));
    }
    void readsUnits()
    {
        QFETCH(QByteArray, text);
        const QTemporaryDir folder;
        const QString name = folder.filePath(QStringLiteral("dev.ini"));
        writeFile(name, text);
        const UnitList units = unitlist::read(name);
        QTEST(units.names.join(QLatin1Char('|')), "names");
        QFETCH(QString, error);
        QCOMPARE(units.error.isEmpty(), error.isEmpty());
        QVERIFY2(units.error.contains(error), qPrintable(units.error));
        QVERIFY(error.isEmpty() || units.error.startsWith(name));
        QFile::remove(name);
        QVERIFY(unitlist::read(name).error.contains(QLatin1String("no such")));
        QVERIFY(unitlist::read(folder.path()).error.contains(QLatin1String("not a file")));
    }

    void describesAlarms()
    {
        const QStringList texts{QStringLiteral("Fan"), QString(), QStringLiteral("Fan gone"), QString()};
        const std::tuple<int, int, const char*> rows[] = {
            {0, 1, "alarm appeared: 0 Fan"},
            {2, 5, "alarm cleared:  2 Fan gone (state 5)"},
            {1, 1, "alarm appeared: event 1"}, // reserved
            {-1, 1, "alarm appeared: event -1"},
        };
        for (const auto& [id, state, text] : rows)
            QCOMPARE(
                recordtext::describe(
                    2006, {{QStringLiteral("alarmId"), id}, {QStringLiteral("alarmState"), state}}, texts),
                QString::fromLatin1(text));
        QCOMPARE(recordtext::describe(1029, {}, texts), QStringLiteral("event of type 1029"));
    }

    void neverShowsOldValuesAsLive()
    {
        struct Step
        {
            int type;         // of the event that comes
            int failedCycles; // by then
            const char* text; // at the end of the status
            bool isLive = false;
        };
        const Step steps[] = {
            {2007, 0, "no answer yet"},
            {1041, 0, "no answer yet"},
            {1040, 0, "waiting for values"},
            {2007, 0, " 96 %", true},
            {2007, 1, "no answer since 07:08:09"}, // not told as lost yet: that may take minutes over TCP
            {2007, 0, " 96 %", true},
            {1041, 0, "no answer since 07:08:09"},
            {2007, 0, "no answer since 07:08:09"}, // reports go on while the unit is lost
            {1040, 0, "waiting for values"},
        };
        UnitState state;
        for (const Step& step : steps) {
            state.apply(step.type, dataRecord({{4111, 96.0F}}), step.failedCycles);
            const QString status = recordtext::status(state, {QStringLiteral("220.0")});
            QVERIFY2(status.endsWith(QLatin1String(step.text)), qPrintable(status));
            QCOMPARE(status.contains(QLatin1String("220.0")), step.isLive);
            QCOMPARE(!state.liveData().isEmpty(), step.isLive);
        }
    }

    // While nobody takes the events, only values that newer ones have overtaken are dropped.
    void queueKeepsAllButOvertakenValues()
    {
        EventQueue queue;
        constexpr int reports = 1000;
        for (int i = 0; i < reports; ++i) {
            QCOMPARE(queue.append({2007, {{QStringLiteral("n"), i}}}), i == 0);
            if (i % 10 == 0)
                queue.append({2006, {{QStringLiteral("n"), i}}});
        }
        const QVector<UnitEvent> events = queue.takeAll();
        QVERIFY(events.size() < reports / 10 + EventQueue::fullLength);
        QCOMPARE(events.last().record.value(QStringLiteral("n")).toInt(), reports - 1);
        int alarm = 0;
        int last = -1;
        for (const UnitEvent& event : events) {
            const int n = event.record.value(QStringLiteral("n")).toInt();
            QVERIFY(n >= last); // in order
            last = n;
            if (event.type == 2006)
                QCOMPARE(n, 10 * alarm++);
        }
        QCOMPARE(alarm, reports / 10);
        QVERIFY(queue.append({2006, {}}));
    }

    void writesJson()
    {
        QVariantMap record = dataRecord({{4133, 219.95F}, {2000, 1.0F}, {-1, std::nanf("")}});
        record.insert(QStringLiteral("model"), QByteArray("M\xe9\0x", 4));
        record.insert(QStringLiteral("bytes"), QByteArray("\x01\x02", 2));
        const QByteArray line = recordjson::eventLine(QStringLiteral("a\"\n\u00e9"), 2007, record, true);
        QVERIFY(!line.contains('\n'));
        QVERIFY(line.contains("\"4133\":219.95,") || line.contains("\"4133\":219.95}"));

        QJsonParseError error;
        const QJsonObject event = QJsonDocument::fromJson(line, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(event[QLatin1String("unit")].toString(), QStringLiteral("a\"\n\u00e9"));
        QCOMPARE(event[QLatin1String("type")].toInt(), 2007);
        const QJsonObject written = event[QLatin1String("record")].toObject();
        QCOMPARE(written[QLatin1String("model")].toString(), QStringLiteral("M\u00e9"));
        QCOMPARE(written[QLatin1String("bytes")].toString(), QStringLiteral("0102"));
        const QJsonObject points = written[QLatin1String("data")].toObject();
        QCOMPARE(points.keys().size(), 3);
        QCOMPARE(points[QLatin1String("2000")].toInt(), 1);
        QVERIFY(points[QLatin1String("-1")].isNull());
    }
};

QTEST_GUILESS_MAIN(HostDecisionsTest)
#include "tst_hostdecisions.moc"
