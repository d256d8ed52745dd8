#include "mainwindow.h"
#include "scriptedunit.h"
#include "unitlistmodel.h"
#include "unitsession.h"
#include "windowrunner.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QListView>
#include <QProcess>
#include <QSettings>
#include <QTabBar>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const DataMap onMains{{2003, 1}, {2100, 1}, {2101, 2}, {3017, 30}, {4250, 1}};

/// Units without threads of their own, and a window on them.
struct Bench
{
    explicit Bench(int count)
    {
        for (int i = 0; i < count; ++i) {
            auto unit = std::make_unique<ScriptedUnit>();
            units += unit.get();
            sessions.push_back(std::make_unique<UnitSession>(QStringLiteral("U%1").arg(i), std::move(unit),
                                                             UnitSession::Cycles::OwnThread));
            pointers += sessions.back().get();
        }
        window.reset(new MainWindow(pointers, 3));
        window->setEventList(new QLabel);
        window->setTrends(new QLabel);
    }
    void show()
    {
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }
    QString text(int row) const
    {
        return window->findChild<QListView*>()
            ->model()
            ->index(row, 0)
            .data(Qt::AccessibleTextRole)
            .toString();
    }
    QString status() const { return window->findChild<QLabel*>(QStringLiteral("StatusLine"))->text(); }
    bool isDimmed() const
    {
        const auto veils = window->findChildren<QWidget*>(QStringLiteral("Veil"));
        return std::any_of(veils.begin(), veils.end(), [](const QWidget* veil) { return veil->isVisible(); });
    }

    QVector<ScriptedUnit*> units;
    std::vector<std::unique_ptr<UnitSession>> sessions;
    QVector<UnitSession*> pointers;
    std::unique_ptr<MainWindow> window; // ends first
};

/// The longest time in which the event loop handled nothing.
class LongestBlock : public QObject
{
public:
    LongestBlock()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this,
                [this] { m_longestMs = qMax(m_longestMs, m_sinceTick.restart()); });
        m_sinceTick.start();
        m_timer.start(2);
    }
    qint64 ms() const { return m_longestMs; }

private:
    QTimer m_timer;
    QElapsedTimer m_sinceTick;
    qint64 m_longestMs = 0;
};

using Setup = std::function<void(int number, ScriptedUnit& unit)>;

std::unique_ptr<WindowRunner> makeRunner(int count, const QString& memoryFile, const Setup& setup)
{
    QStringList names;
    std::vector<std::unique_ptr<CollectThread>> collectors;
    for (int i = 0; i < count; ++i) {
        names += QStringLiteral("U%1").arg(i);
        auto unit = std::make_unique<ScriptedUnit>();
        setup(i, *unit);
        collectors.push_back(std::move(unit));
    }
    return std::make_unique<WindowRunner>(HostOptions(), names, std::move(collectors),
                                          WindowSettings{memoryFile, 0, {}});
}

} // namespace

class WindowTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(m_folder.isValid()); }

    void listTellsHowUnitsAre();
    void shownPagesGetValues();
    void silentUnitIsDimmed();
    void userLevelReachesAllPages();
    void answersAreShown_data();
    void answersAreShown();
    void missingAnswerIsTold();
    void keysReachEverything();
    void choicesAreRemembered();
    void closesWhileUnitsAreBusy_data();
    void closesWhileUnitsAreBusy();
    void manyUnitsDoNotBlock();
    void saysThatThereIsNoDisplay();

private:
    QTemporaryDir m_folder;
};

void WindowTest::listTellsHowUnitsAre()
{
    Bench bench(2);
    QCOMPARE(bench.text(0), QStringLiteral("U0, No answer yet"));
    bench.units[0]->answer(onMains);
    QTRY_COMPARE(bench.text(0), QStringLiteral("U0, On mains, Load 34 %, Alarms: 2"));
    bench.units[0]->answer({{4250, 9}});
    QTRY_COMPARE(bench.text(0), QStringLiteral("U0, Load on other, Load 34 %"));
    bench.units[0]->beSilent();
    QTRY_COMPARE(bench.text(0), QStringLiteral("U0, No answer since 2024-03-05 07:08:09"));
    QCOMPARE(UnitSummary::sinceText(QStringLiteral("2024-03-05 07:08:09"), QDate(2024, 3, 5)),
             QStringLiteral("07:08:09"));
    bench.units[1]->beSilent(); // has never answered
    bench.units[0]->answer(onMains);
    QTRY_VERIFY(bench.text(0).contains(QStringLiteral("On mains")));
    QCOMPARE(bench.text(1), QStringLiteral("U1, No answer yet"));
    emit bench.units[1]->postDEvent(1041, {});
    QTRY_COMPARE(bench.text(1), QStringLiteral("U1, No answer since the start"));
    QCOMPARE(bench.window->findChild<QLabel*>(QStringLiteral("SilentCount"))->text(),
             QStringLiteral("No answer: 1"));
}

void WindowTest::shownPagesGetValues()
{
    Bench bench(2);
    QSignalSpy shown(bench.window.get(), &MainWindow::unitShown);
    bench.show();
    QCOMPARE(shown.value(0), QVariantList{QStringLiteral("U0")});
    for (ScriptedUnit* unit : qAsConst(bench.units))
        unit->answer(onMains);
    QTRY_VERIFY(bench.units[0]->view && bench.units[0]->view->m_data == onMains);
    QVERIFY(!bench.units[1]->view); // made when it is first shown
    QCOMPARE(bench.units[0]->view->m_language, 3);

    QTest::keyClick(bench.window.get(), Qt::Key_Down, Qt::ControlModifier);
    QTRY_VERIFY(bench.units[1]->view && bench.units[1]->view->isVisible());
    QCOMPARE(bench.units[1]->view->m_data, onMains); // from before
    QCOMPARE(bench.units[1]->view->flushCount, 1);
    QVERIFY(!bench.isDimmed());

    const int flushCount = bench.units[0]->view->flushCount;
    bench.units[0]->answer({{4250, 2}});
    QTRY_VERIFY(bench.text(0).contains(QStringLiteral("On battery")));
    QCOMPARE(bench.units[0]->view->flushCount, flushCount);
    QTest::keyClick(bench.window.get(), Qt::Key_Up, Qt::ControlModifier);
    QCOMPARE(bench.units[0]->view->m_data, DataMap({{4250, 2}}));
    QCOMPARE(bench.units[0]->view->flushCount, flushCount + 1);
}

void WindowTest::silentUnitIsDimmed()
{
    Bench bench(1);
    bench.show();
    QTRY_VERIFY(bench.units[0]->view && bench.units[0]->view->isVisible());
    QVERIFY(bench.isDimmed()); // not heard yet
    bench.units[0]->answer(onMains);
    QTRY_VERIFY(!bench.isDimmed());
    bench.units[0]->beSilent();
    QTRY_VERIFY(bench.isDimmed());
    // Nothing to flow, and the alarms keep their times.
    QCOMPARE(bench.units[0]->view->m_data, DataMap({{2003, 1}, {2100, 1}, {2101, 2}}));
    bench.units[0]->answer(onMains);
    QTRY_VERIFY(!bench.isDimmed());
    QCOMPARE(bench.units[0]->view->m_data, onMains);
    delete bench.units[0]->view; // whoever did it
    bench.units[0]->beSilent();
    QTRY_VERIFY(bench.isDimmed());
}

void WindowTest::userLevelReachesAllPages()
{
    Bench bench(2);
    bench.show();
    QTRY_VERIFY(bench.units[0]->view && bench.units[0]->view->isVisible());
    QCOMPARE(bench.units[0]->view->m_userLevel, 0);
    auto* level = bench.window->findChild<QComboBox*>(QStringLiteral("LevelChooser"));
    QTest::keyClick(bench.window.get(), Qt::Key_L, Qt::AltModifier);
    QVERIFY(level->hasFocus());
    QWheelEvent wheel({}, {}, {}, {0, -120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(level, &wheel); // is meant for what can be scrolled
    QCOMPARE(level->currentIndex(), 0);
    QTest::keyClick(level, Qt::Key_End);
    QCOMPARE(bench.units[0]->view->m_userLevel, 2);
    QCOMPARE(bench.units[0]->view->m_user, QStringLiteral("engineer"));

    // What one level opened is not left to the next, nor one unit's dialog open over another unit.
    bench.units[0]->view->dialog.show();
    QTest::keyClick(level, Qt::Key_Up);
    QVERIFY(!bench.units[0]->view->dialog.isVisible());
    bench.units[0]->view->dialog.show();
    QTest::keyClick(bench.window.get(), Qt::Key_Down, Qt::ControlModifier);
    QVERIFY(!bench.units[0]->view->dialog.isVisible());
    QTRY_VERIFY(bench.units[1]->view && bench.units[1]->view->isVisible());
    QCOMPARE(bench.units[1]->view->m_userLevel, 1);
}

void WindowTest::answersAreShown_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<DataMap>("readBack");
    QTest::newRow("as stored") << "3017,32"
                               << "32" << DataMap{{3017, 32.0F}};
    QTest::newRow("as written") << "3023,55"
                                << "5.5" << DataMap{{3023, 5.5F}};
    QTest::newRow("option") << "3001,2"
                            << "Three-Single" << DataMap{{3001, 2}};
    QTest::newRow("text") << "3100,AB"
                          << "AB" << DataMap{{3100, 65}, {3101, 66}};
    QTest::newRow("time") << "3200,24,3,5,7,8,9"
                          << "24,3,5,7,8,9"
                          << DataMap{{3200, 24}, {3201, 3}, {3202, 5}, {3203, 7}, {3204, 8}, {3205, 30}};
}

void WindowTest::answersAreShown()
{
    QFETCH(QString, value);
    QFETCH(QString, entry);
    QFETCH(DataMap, readBack);
    Bench bench(1);
    bench.show();
    ScriptedUnit& unit = *bench.units[0];
    QTRY_VERIFY(unit.view && unit.view->isVisible());
    const auto ask = [&] {
        emit unit.view->postDEvent(1029, {{QStringLiteral("controlId"), 2016},
                                          {QStringLiteral("controlValue"), value},
                                          {QStringLiteral("nodeName"), QStringLiteral("Name:")},
                                          {QStringLiteral("nodeValue"), entry}});
    };
    ask();
    QTRY_VERIFY(bench.status().contains(QStringLiteral("U0: Name = %1 - not sent").arg(entry)));
    QCOMPARE(unit.controls, QStringList());

    unit.answer({{4250, 1}, {value.section(QLatin1Char(','), 0, 0).toInt(), 99}});
    ask();
    QTRY_VERIFY(bench.status().contains(QStringLiteral("sent, waiting")));
    QCOMPARE(unit.controls, QStringList{QStringLiteral("2016=") + value});
    unit.answer(unit.view->m_data); // still the old value
    unit.answer(readBack);
    QTRY_VERIFY(bench.status().contains(QStringLiteral("read back")));

    ask();
    unit.beSilent();
    emit unit.postDEvent(1041, {});
    QTRY_VERIFY(bench.status().contains(QStringLiteral("fell silent")));
    emit unit.postDEvent(
        1042, {{QStringLiteral("controlId"), 1045}, {QStringLiteral("desc"), QStringLiteral("saved")}});
    QTRY_VERIFY(bench.status().endsWith(QStringLiteral("  saved")));
}

void WindowTest::missingAnswerIsTold()
{
    Bench bench(1);
    bench.units[0]->answer(onMains);
    RequestWatch watch(100);
    QStringList lines;
    connect(&watch, &RequestWatch::told, &watch, [&](const QString& line) { lines += line; });
    const auto ask = [&](const char* setting) {
        watch.follow(bench.pointers[0],
                     {{QStringLiteral("controlValue"), QLatin1String(setting)},
                      {QStringLiteral("nodeName"), QStringLiteral("Name")},
                      {QStringLiteral("nodeValue"), QLatin1String(setting).mid(5)}},
                     true);
    };
    ask("3017,31"); // taken back before it was read
    ask("3017,32");
    QTRY_COMPARE(lines.size(), 3);
    QCOMPARE(lines.last(), QStringLiteral("U0: Name = 32 - the unit still has another value"));
    QTest::qWait(300);
    QCOMPARE(lines.size(), 3);
}

void WindowTest::keysReachEverything()
{
    Bench bench(3);
    bench.show();
    QTRY_VERIFY(bench.units[0]->view && bench.units[0]->view->isVisible());
    auto* list = bench.window->findChild<QListView*>();
    QVERIFY(list->hasFocus());
    QTest::keyClick(list, Qt::Key_End);
    QCOMPARE(bench.window->shownUnit(), QStringLiteral("U2"));
    QStringList areas;
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(bench.window.get(), Qt::Key_F6);
        areas += QApplication::focusWidget()->objectName();
    }
    QCOMPARE(areas, QStringList({QStringLiteral("UnitPages"), QStringLiteral("LowerTabs"),
                                 QStringLiteral("LevelChooser"), QStringLiteral("UnitList")}));
    QTest::keyClick(bench.window.get(), Qt::Key_T, Qt::ControlModifier);
    QCOMPARE(bench.window->findChild<QTabBar*>(QStringLiteral("LowerTabs"))->currentIndex(), 1);
    QSignalSpy close(bench.window.get(), &MainWindow::closeRequested);
    QTest::keyClick(bench.window.get(), Qt::Key_Q, Qt::ControlModifier);
    QCOMPARE(close.size(), 1);
    QVERIFY(bench.window->isVisible());
}

void WindowTest::choicesAreRemembered()
{
    QSettings memory(m_folder.filePath(QStringLiteral("choices.ini")), QSettings::IniFormat);
    {
        Bench bench(3);
        bench.window->resize(1111, 666);
        bench.show();
        QTest::keyClick(bench.window->findChild<QListView*>(), Qt::Key_Down);
        QTest::keyClick(bench.window.get(), Qt::Key_T, Qt::ControlModifier);
        bench.window->findChild<QComboBox*>(QStringLiteral("LevelChooser"))->setCurrentIndex(2);
        bench.window->remember(memory);
    }
    Bench bench(3);
    bench.window->restore(memory);
    bench.show();
    QCOMPARE(bench.window->size(), QSize(1111, 666));
    QCOMPARE(bench.window->shownUnit(), QStringLiteral("U1"));
    QCOMPARE(bench.window->findChild<QTabBar*>(QStringLiteral("LowerTabs"))->currentIndex(), 1);
    QCOMPARE(bench.window->findChild<QComboBox*>(QStringLiteral("LevelChooser"))->currentIndex(), 0);
}

void WindowTest::closesWhileUnitsAreBusy_data()
{
    QTest::addColumn<int>("configMs");
    QTest::addColumn<int>("cycleMs");
    QTest::newRow("in a cycle that nothing ends early") << 0 << 1500;
    QTest::newRow("while a port is opened") << 1500 << 20;
}

void WindowTest::closesWhileUnitsAreBusy()
{
    QFETCH(int, configMs);
    QFETCH(int, cycleMs);
    const auto runner =
        makeRunner(3, m_folder.filePath(QStringLiteral("none/w.ini")), [&](int number, ScriptedUnit& unit) {
            unit.configMs = number == 0 ? configMs : 0;
            unit.cycleMs = number == 0 ? cycleMs : 20;
        });
    QElapsedTimer sinceClose;
    qint64 hiddenAfterMs = -1;
    QDialog question(&runner->window()); // a box that waits for an answer must not hold up the end
    QTimer::singleShot(300, &question, [&] { question.exec(); });
    QTimer::singleShot(400, &question, [&] {
        sinceClose.start();
        runner->window().close();
        hiddenAfterMs = runner->window().isVisible() || question.isVisible() ? -1 : sinceClose.elapsed();
    });
    LongestBlock block;
    QCOMPARE(runner->run(), WindowRunner::End::Stopped);
    QVERIFY(hiddenAfterMs >= 0 && hiddenAfterMs < 500);
    QVERIFY(sinceClose.elapsed() < 5000);
    QVERIFY2(block.ms() < 1000, qPrintable(QString::number(block.ms()))); // waiting was no blocking
}

void WindowTest::manyUnitsDoNotBlock()
{
    const auto runner =
        makeRunner(64, m_folder.filePath(QStringLiteral("m.ini")), [](int number, ScriptedUnit& unit) {
            unit.configMs = 20; // 1.3 s in all
            unit.isDark = number % 2 == 1;
            unit.cycleMs = unit.isDark ? 400 : 50;
        });
    QElapsedTimer total;
    total.start();
    qint64 allHeardMs = -1;
    LongestBlock block;
    QTimer look;
    auto* model = runner->window().findChild<UnitListModel*>();
    connect(&look, &QTimer::timeout, &look, [&] {
        if (model->count(UnitSummary::Tone::Calm) == 32 && allHeardMs < 0) {
            allHeardMs = total.elapsed();
            QTimer::singleShot(500, runner.get(), &WindowRunner::stop);
        }
    });
    look.start(20);
    QTimer::singleShot(20000, runner.get(), &WindowRunner::stop);
    QCOMPARE(runner->run(), WindowRunner::End::Stopped);
    qInfo("all heard after %lld ms, longest block %lld ms", allHeardMs, block.ms());
    QVERIFY(allHeardMs > 0 && allHeardMs < 6000);
    QVERIFY(block.ms() < 400); // loose, for busy machines; far less than what the units make wait
}

void WindowTest::saysThatThereIsNoDisplay()
{
    QProcess host;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("none"));
    host.setProcessEnvironment(environment);
    host.start(QStringLiteral(UPS_HOST), QStringList());
    QVERIFY(host.waitForFinished(20000));
    QCOMPARE(host.exitStatus(), QProcess::NormalExit);
    QCOMPARE(host.exitCode(), 2);
    const QByteArray errors = host.readAllStandardError();
    QVERIFY2(errors.startsWith("ups-host: no display") && errors.count('\n') == 1, errors);
}

QTEST_MAIN(WindowTest)
#include "tst_window.moc"
