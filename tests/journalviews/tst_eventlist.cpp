#include "blockwatch.h"
#include "eventlist.h"
#include "eventtext.h"
#include "generatedjournal.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>

#include <memory>

namespace {

constexpr qint64 startMs = 1700000000000;
const QString a = QStringLiteral("A");
const QString b = QStringLiteral("B");

JournalEvent alarm(int number, const QString& unit = a)
{
    return generatedjournal::event(startMs + number, unit, 2006, number, 1, QStringLiteral("Fan"));
}

std::vector<JournalRecord> alarms(int count)
{
    std::vector<JournalRecord> records;
    for (int i = 0; i < count; ++i)
        records.emplace_back(alarm(i));
    return records;
}

} // namespace

class EventListTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        m_file = m_folder->filePath(QStringLiteral("journal.sqlite"));
    }
    void cleanup() { m_list.reset(); }

    void describes_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("code"); // -1 for none
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("line");
        const auto row = [](const char* name, int type, int code, const char* text, const char* json,
                            const char* line) {
            QTest::newRow(name) << type << code << QString::fromLatin1(text) << QByteArray(json)
                                << QString::fromLatin1(line);
        };
        row("alarm", 2006, 25, "Fan failure \n", "{}", "Fan failure");
        row("reserved alarm", 2006, 3, "", "{}", "Event 3");
        row("nothing known", 2006, -1, "", "", "Event of type 2006");
        row("status", 2010, 2022, "status point 2022 (Low battery (DOD)) is now 1", "{\"alarmState\":1}",
            "Status point on: Low battery (DOD)");
        row("status without name", 2009, -1, "status point 2368 is now 0", "", "Status point off: 2009");
        row("setting", 1029, 2016, "3017,32", "{\"nodeName\":\"Battery number:\",\"nodeValue\":32}",
            "Setting requested: Battery number = 32");
        row("setting, broken record", 1029, 2016, "3017,32", "{\"nodeNa", "Setting requested: 3017,32");
        row("command", 1004, 1004, "5", "{}", "Command requested: Discharge (5)");
        row("unknown command", 4711, 4711, "", "{}", "Command requested: 4711");
        row("result", 1042, 1045, "A done", "{}", "A done");
    }
    void describes()
    {
        QFETCH(int, code);
        const auto known = code < 0 ? std::nullopt : std::optional<int>(code);
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(QByteArray, json);
        QTEST(EventText::describe(generatedjournal::event(startMs, a, type, known, {}, text, json)), "line");
    }

    // Every kind of event has one entry of its own, and all of them together are all events.
    void filters_data()
    {
        QTest::addColumn<QString>("unit");
        QTest::addColumn<int>("kinds");
        QTest::addColumn<QString>("codes");
        QTest::newRow("all") << QString() << int(EventKinds::all) << QStringLiteral("9 8 7 6 5 4 3 2 1");
        QTest::newRow("unit") << b << int(EventKinds::all) << QStringLiteral("9 2");
        QTest::newRow("alarms") << QString() << int(EventKinds::AlarmAppeared | EventKinds::AlarmCleared)
                                << QStringLiteral("9 3 2 1");
        QTest::newRow("appeared") << QString() << int(EventKinds::AlarmAppeared) << QStringLiteral("2 1");
        QTest::newRow("cleared") << QString() << int(EventKinds::AlarmCleared) << QStringLiteral("9 3");
        QTest::newRow("communication")
            << QString() << int(EventKinds::Lost | EventKinds::Answering) << QStringLiteral("5 4");
        QTest::newRow("commands") << QString() << int(EventKinds::Command) << QStringLiteral("8 7");
        QTest::newRow("status of unit") << a << int(EventKinds::Status) << QStringLiteral("6");
        QTest::newRow("no such unit") << QStringLiteral("' OR 1 --") << int(EventKinds::all) << QString();
    }
    void filters()
    {
        const auto event = [](int code, int type, std::optional<int> state, const QString& unit = a) {
            return generatedjournal::event(startMs - code, unit, type, code,
                                           state); // the clock runs backwards
        };
        generatedjournal::write(m_file, {event(1, 2006, 1), event(2, 2006, 1, b), event(3, 2006, 0),
                                         event(4, 1040, 0), event(5, 1041, 1), event(6, 2009, 1),
                                         event(7, 1029, {}), event(8, 1003, {}), event(9, 2006, {}, b)});
        QFETCH(QString, unit);
        QFETCH(int, kinds);
        open();
        m_list->setKinds(EventKinds::Set(kinds));
        m_list->setUnit(unit);
        QFETCH(QString, codes);
        QTRY_COMPARE(shownCodes().join(QLatin1Char(' ')), codes);
        auto* units = m_list->findChild<QComboBox*>(QStringLiteral("EventUnits"));
        QTRY_VERIFY(units->findData(a) > 0 && units->findData(b) > 0);
        QCOMPARE(units->currentData().toString(), unit);
        QCOMPARE(int(m_list->kinds()), kinds);
    }

    // What arrives appears on top, or above what the user looks at.
    void appendsLive()
    {
        generatedjournal::write(m_file, alarms(300));
        open();
        QTRY_COMPARE(table()->model()->rowCount(), 300);
        generatedjournal::write(m_file, {alarm(300)});
        QTRY_COMPARE(shownCodes().value(0), QStringLiteral("300"));
        QCOMPARE(table()->verticalScrollBar()->value(), 0);

        table()->verticalScrollBar()->setValue(100);
        const QString looked = topCode();
        table()->selectRow(100);
        generatedjournal::write(m_file, {alarm(301), alarm(302)});
        QTRY_COMPARE(table()->model()->rowCount(), 303);
        QCOMPARE(topCode(), looked);
        QCOMPARE(table()->selectionModel()->selectedRows().value(0).row(), 102);
    }

    // Very many events: the newest at once, all of them by scrolling, with the loop free all the time.
    void pagesThroughManyEvents()
    {
        constexpr int count = 200000 / fewerBy;
        std::vector<JournalRecord> records = alarms(count);
        records.front() = alarm(0, b); // to be found by a search through all others
        generatedjournal::write(m_file, records);
        const BlockWatch watch;
        QElapsedTimer clock;
        clock.start();
        open();
        QTRY_VERIFY(table()->model()->rowCount() > 0);
        const qint64 firstMs = clock.restart();
        while (table()->model()->rowCount() < count && clock.elapsed() < 60000) {
            QTest::keyClick(table(), Qt::Key_End, Qt::ControlModifier);
            QTest::qWait(1);
        }
        QCOMPARE(table()->model()->rowCount(), count);
        const qint64 allMs = clock.restart();
        QCOMPARE(code(count - 1), QStringLiteral("0"));
        m_list->setUnit(b);
        QTRY_COMPARE(table()->model()->rowCount(), 1);
        QCOMPARE(code(0), QStringLiteral("0"));
        qInfo("first page %lld ms, %d events %lld ms, search %lld ms; longest block %.1f ms, of which "
              "processor %.1f ms",
              firstMs, count, allMs, clock.elapsed(), watch.longestMs(), watch.longestCpuMs());
        QVERIFY2(watch.longestCpuMs() < longestBlockMs, qPrintable(QString::number(watch.longestCpuMs())));
    }

    void copiesAndExports()
    {
        generatedjournal::write(m_file, {alarm(1), alarm(2, b), alarm(3)});
        open();
        QTRY_COMPARE(table()->model()->rowCount(), 3);
        table()->setFocus();
        table()->selectRow(2);
        QTest::keyClick(table(), Qt::Key_Up, Qt::ShiftModifier);
        QTest::keyClick(table(), Qt::Key_C, Qt::ControlModifier);
        const QStringList lines = QApplication::clipboard()->text().split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 2);
        QVERIFY2(lines[0].endsWith(QLatin1String("\tB\t2\tFan")), qPrintable(lines[0]));

        m_list->setUnit(a);
        const QString target = m_folder->filePath(QStringLiteral("out.csv"));
        m_list->exportTo(target);
        QTRY_VERIFY(label("EventNotice")->text().startsWith(QLatin1String("Exported")));
        QFile file(target);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll().count('\n'), 3);
        m_list->exportTo(m_folder->filePath(QStringLiteral("none/out.csv")));
        QTRY_VERIFY(label("EventNotice")->text().startsWith(QLatin1String("Nothing was exported")));
    }

    // One line says what is wrong; the list goes on by itself once it can, and the loop is never held up.
    void outlivesTrouble_data()
    {
        QTest::addColumn<QString>("trouble");
        QTest::addColumn<QString>("line");
        QTest::newRow("missing") << QStringLiteral("missing") << QStringLiteral("There is no file");
        QTest::newRow("locked") << QStringLiteral("locked") << QStringLiteral("locked by another program");
        QTest::newRow("damaged") << QStringLiteral("damaged") << QStringLiteral("it is damaged");
    }
    void outlivesTrouble()
    {
        QFETCH(QString, trouble);
        QFETCH(QString, line);
        Connection other;
        if (trouble == QLatin1String("damaged")) {
            QFile file(m_file);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QCOMPARE(file.write(QByteArray(9000, 'x')), 9000);
        } else if (trouble == QLatin1String("locked")) {
            generatedjournal::write(m_file, {alarm(1)});
            QVERIFY(other.open(m_file, Connection::Mode::ReadWrite) &&
                    other.execute(QStringLiteral("PRAGMA locking_mode = EXCLUSIVE")) && other.begin() &&
                    other.execute(QStringLiteral("DELETE FROM event")));
        }
        const BlockWatch watch;
        open();
        QTRY_VERIFY2(label("EventProblem")->text().contains(line), qPrintable(label("EventProblem")->text()));
        QVERIFY(label("EventProblem")->isVisible() && label("EventProblem")->text().contains(m_file));
        QCOMPARE(table()->model()->rowCount(), 0);
        other.close();
        if (trouble != QLatin1String("locked")) {
            QFile::remove(m_file); // as the writer does with a damaged one
            generatedjournal::write(m_file, {alarm(1)});
        }
        QTRY_COMPARE(shownCodes(), QStringList(QStringLiteral("1")));
        QVERIFY(!label("EventProblem")->isVisible());
        QVERIFY2(watch.longestCpuMs() < longestBlockMs, qPrintable(QString::number(watch.longestCpuMs())));
    }

    // A file that is replaced under its name begins a new list; a damaged page leaves what was read.
    void followsTheFile()
    {
        generatedjournal::write(m_file, alarms(5000));
        open();
        QTRY_COMPARE(table()->model()->rowCount(), 500);
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(20000));
        file.write(QByteArray(100000, 'x'));
        file.close();
        QTRY_VERIFY_WITH_TIMEOUT(
            (QTest::keyClick(table(), Qt::Key_End, Qt::ControlModifier), label("EventProblem")->isVisible()),
            10000);
        QVERIFY(label("EventProblem")->text().contains(QLatin1String("it is damaged")));
        QVERIFY(table()->model()->rowCount() >= 500);

        QVERIFY(QFile::rename(m_file, m_file + QStringLiteral(".aside")));
        generatedjournal::write(m_file, {alarm(7), alarm(8)});
        QTRY_COMPARE(shownCodes(), QStringList({QStringLiteral("8"), QStringLiteral("7")}));
        QVERIFY(!label("EventProblem")->isVisible());
    }

private:
    void open()
    {
        m_list.reset(new EventList(m_file));
        m_list->resize(900, 300);
        m_list->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_list.get()));
    }
    QTableView* table() const { return m_list->findChild<QTableView*>(); }
    QLabel* label(const char* name) const { return m_list->findChild<QLabel*>(QLatin1String(name)); }
    QString code(int row) const
    {
        return table()->model()->index(row, EventModel::CodeColumn).data().toString();
    }
    QString topCode() const { return code(table()->rowAt(0)); }
    QStringList shownCodes() const
    {
        QStringList list;
        for (int row = 0; row < table()->model()->rowCount(); ++row)
            list += code(row);
        return list;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file;
    std::unique_ptr<EventList> m_list;
};

QTEST_MAIN(EventListTest)
#include "tst_eventlist.moc"
