// The host's window in the hands of a person: what is seen of a unit, what reaches it, and how all of it
// ends.

#include "exitcode.h"
#include "hostoptions.h"
#include "journalexport.h"
#include "ownfolder.h"
#include "person.h"
#include "pluginlibrary.h"
#include "screen.h"
#include "simulatorprocess.h"
#include "unitlist.h"

#include <QAbstractButton>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>
#include <QTableWidget>
#include <QtTest>

using Act = std::function<void(Person&)>;
Q_DECLARE_METATYPE(Act)

namespace {

const QString journalFile = QStringLiteral("journal.sqlite");
constexpr int batteryNumbersRow = 0; // of the battery parameters
constexpr const char* serialUnit = "[A]\nportName=line\nretries=2\n";

QByteArray textOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& name, const QByteArray& text)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

/// What the unit got, in the order in which it came: the values of a kind of line in its trace.
QList<QJsonValue> received(const char* kind)
{
    QList<QJsonValue> values;
    const QList<QByteArray> lines = textOf(QStringLiteral("trace")).split('\n');
    for (const QByteArray& line : lines) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object.contains(QLatin1String(kind)))
            values += object.value(QLatin1String(kind));
    }
    return values;
}

bool isLive(int row)
{
    return screen::unitText(row).contains(QLatin1String("Load")) && screen::veil().isEmpty();
}

int eventCount(const char* text)
{
    return screen::events().filter(QLatin1String(text)).size();
}

// By keys, also while a dialog of the pages is open.
void chooseLevel(Qt::Key key)
{
    auto* window = screen::find<QWidget>("MainWindow");
    QApplication::setActiveWindow(window);
    QTest::keyClick(window, Qt::Key_L, Qt::AltModifier);
    QTest::keyClick(window->focusWidget(), key);
}

Person& watchUnit(Person& person)
{
    return person.sees("values of the unit", [] { return isLive(0); });
}

void openBatterySettings(Person& person)
{
    person.clicksTab("devStacketTable", "Control")
        .clicksTab("configStack", "Battery parameters")
        .sees("the present setting",
              [] { return screen::setting("batteryTable", batteryNumbersRow).toInt() > 0; });
}

void openSetting()
{
    screen::doubleClickRow("batteryTable", batteryNumbersRow);
}

} // namespace

class WindowUnitsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void levelOpensAndClosesSettings();
    void settingGoesToTheUnitAndBack();
    void commandIsSentOnceConfirmed();
    void historyIsDownloaded();
    void unitComesBackEachTime();
    void endsWhileAUnitIsSilent_data();
    void endsWhileAUnitIsSilent();
    void damagedConfigurationIsRepaired();
    void withoutConfigurationUnitIsAdded();
    void unitIsAddedToTheWindow();

private:
    void startUnit(const QStringList& transport);
    void startSerialUnit();
    void killUnit();
    Person& beginWithUnit(Person& person);
    int use(Person& person);

    std::unique_ptr<PluginLibrary> m_plugin;
    std::unique_ptr<Simulator> m_unit;
};

void WindowUnitsTest::initTestCase()
{
    m_plugin = std::make_unique<PluginLibrary>(QStringLiteral(PLUGIN_FILE));
    QVERIFY2(m_plugin->factory(), qPrintable(m_plugin->error()));
}

void WindowUnitsTest::init()
{
    write(unitlist::defaultFile(), serialUnit);
    write(unitlist::lineFile(), "[line]\ntimeout=200\n");
}

void WindowUnitsTest::cleanup()
{
    killUnit();
    const auto files = QDir().entryList({QStringLiteral("journal.sqlite*"), QStringLiteral("trace")});
    for (const QString& file : files)
        QFile::remove(file);
}

void WindowUnitsTest::startUnit(const QStringList& transport)
{
    m_unit = std::make_unique<Simulator>(
        words(QStringLiteral("--scenario none --trace trace --address 1 --address 2")) + transport);
    QVERIFY(m_unit->waitReady(transport.contains(QStringLiteral("--tcp")) ? "127.0.0.1:" : "line"));
}

void WindowUnitsTest::startSerialUnit()
{
    startUnit(words(QStringLiteral("--serial line --baud 0")));
}

void WindowUnitsTest::killUnit()
{
    m_unit.reset();
    QFile::remove(QStringLiteral("line")); // it names a terminal that another test may get
}

Person& WindowUnitsTest::beginWithUnit(Person& person)
{
    startSerialUnit();
    return watchUnit(person);
}

int WindowUnitsTest::use(Person& person)
{
    HostOptions options;
    options.journalFile = journalFile;
    return person.use(options, *m_plugin->factory());
}

void WindowUnitsTest::levelOpensAndClosesSettings()
{
    Person person;
    startSerialUnit();
    const auto maintenanceIsOpen = [] {
        const auto* tabs = screen::find<QTabWidget>("devStacketTable");
        return tabs->isTabEnabled(4) && tabs->tabBar()->tabRect(4).width() > 0;
    };
    watchUnit(person)
        .clicksTab("devStacketTable", "Control")
        .sees("basicTable")
        .does([] { screen::doubleClickRow("basicTable", 0); })
        .sees("no more than the tables", [&] { return !maintenanceIsOpen() && !screen::settingDialog(); })
        .does([] { chooseLevel(Qt::Key_End); })
        .sees("the maintenance tab", maintenanceIsOpen)
        .does([] { screen::doubleClickRow("basicTable", 0); })
        .sees("the dialog", screen::settingDialog)
        .does([] { chooseLevel(Qt::Key_Home); })
        .sees("no dialog", [&] { return !maintenanceIsOpen() && !screen::settingDialog(); })
        .quits();
    QCOMPARE(use(person), 0);
    QCOMPARE(received("settings").size(), 0);
}

void WindowUnitsTest::settingGoesToTheUnitAndBack()
{
    Person person;
    beginWithUnit(person).does([] { chooseLevel(Qt::Key_End); });
    openBatterySettings(person);
    person.does(openSetting)
        .sees("the dialog", screen::settingDialog)
        .types("999")
        .presses(Qt::Key_Return)
        .sees("the refusal", screen::messageBox)
        .presses(Qt::Key_Return)
        .sees("the dialog alone", [] { return screen::settingDialog() && !screen::messageBox(); })
        .types("34")
        .presses(Qt::Key_Return)
        .sees("the answer", [] { return screen::status().contains(QLatin1String("read back")); })
        .sees("the dialog closed", [] { return !screen::settingDialog(); })
        .sees("the new setting",
              [] {
                  return screen::setting("batteryTable", batteryNumbersRow) == QLatin1String("34") &&
                         isLive(0) && eventCount("Setting requested: Battery numbers = 34") == 1;
              })
        .quits();
    QCOMPARE(use(person), 0);
    QCOMPARE(received("settings"), QList<QJsonValue>{QJsonObject({{QStringLiteral("3017"), 34}})});
}

void WindowUnitsTest::commandIsSentOnceConfirmed()
{
    Person person;
    beginWithUnit(person)
        .does([] { chooseLevel(Qt::Key_End); })
        .clicksTab("devStacketTable", "Control")
        .clicks("battery_test")
        .sees("the question", screen::messageBox)
        .presses(Qt::Key_Escape)
        .sees("no question", [] { return !screen::messageBox(); })
        .clicks("battery_test")
        .sees("the question", screen::messageBox)
        .presses(Qt::Key_Return)
        .sees("what was done", [] { return screen::status().endsWith(QLatin1String("Selftest - sent")); })
        .sees("the event", [] { return eventCount("Command requested: Selftest") > 0; })
        .sees("what the unit got", [] { return !received("command").isEmpty(); })
        .quits();
    QCOMPARE(use(person), 0);
    QCOMPARE(received("command").size(), 1);
}

void WindowUnitsTest::historyIsDownloaded()
{
    Person person;
    beginWithUnit(person)
        .does([] { chooseLevel(Qt::Key_End); })
        .clicksTab("devStacketTable", "Maintenance")
        .clicks("download_history_log")
        .sees("the question", screen::messageBox)
        .presses(Qt::Key_Return)
        .sees("fileNameEdit")
        .types("past")
        .presses(Qt::Key_Return)
        .sees("the result",
              [] { return screen::status().endsWith(QLatin1String("Download history successful")); })
        .sees("the event", [] { return eventCount("Download history successful") == 1; })
        .quits();
    QCOMPARE(use(person), 0);
    QVERIFY(textOf(QStringLiteral("past.csv")).count('\n') > 10);
}

void WindowUnitsTest::unitComesBackEachTime()
{
    constexpr int rounds = 5;
    Person person;
    startSerialUnit();
    QVector<int> widgets; // after each return
    watchUnit(person);
    for (int round = 1; round <= rounds; ++round) {
        person.does([this] { killUnit(); })
            .sees("the loss in the list and over the pages",
                  [] {
                      return screen::unitText(0).startsWith(QLatin1String("A, No answer since")) &&
                             screen::veil().startsWith(QLatin1String("No answer from A since"));
                  })
            .sees("the loss in the event list", [round] { return eventCount("lost") == round; })
            .does([this] { startSerialUnit(); });
        watchUnit(person)
            .sees("the return in the event list", [round] { return eventCount("established") == round + 1; })
            .does([&] { widgets += QApplication::allWidgets().size(); });
    }
    person.quits();
    QCOMPARE(use(person), 0);
    QCOMPARE(widgets, QVector<int>(rounds, widgets.value(0)));
}

void WindowUnitsTest::endsWhileAUnitIsSilent_data()
{
    QTest::addColumn<bool>("isTcp");
    QTest::addColumn<Act>("open");
    QTest::addColumn<Act>("end");
    const Act nothing = [](Person&) {};
    const Act setting = [](Person&) { openSetting(); };
    const Act question = [](Person&) { screen::click(screen::find<QAbstractButton>("battery_test")); };
    const Act byKey = [](Person&) { screen::key(Qt::Key_Q, Qt::ControlModifier); };
    const Act byButton = [](Person&) { screen::find<QWidget>("MainWindow")->close(); };
    const Act bySession = [](Person& person) { person.endSession(); };
    QTest::newRow("TCP, Ctrl+Q") << true << nothing << byKey;
    QTest::newRow("serial line, close button, setting dialog open") << false << setting << byButton;
    QTest::newRow("serial line, end of the session, question open") << false << question << bySession;
}

void WindowUnitsTest::endsWhileAUnitIsSilent()
{
    constexpr int endLimitMs = 8000; // of the units' reads
    constexpr int hideLimitMs = 300;
    QFETCH(bool, isTcp);
    QFETCH(Act, open);
    QFETCH(Act, end);
    if (isTcp) {
        startUnit(words(QStringLiteral("--tcp 0")));
        write(unitlist::defaultFile(),
              "[A]\ncommType=1\nipAddr=127.0.0.1\nport=" + QByteArray::number(m_unit->port()) + '\n');
    } else {
        startSerialUnit();
    }
    Person person;
    QElapsedTimer sinceEnd;
    qint64 hiddenAfterMs = -1;
    watchUnit(person).does([] { chooseLevel(Qt::Key_End); });
    openBatterySettings(person);
    person.does([&] { open(person); })
        .does([this] { m_unit->signal(SIGSTOP); }) // connections are kept, nothing is answered
        .sees("the silence", [] { return !screen::veil().isEmpty(); })
        .does([&] {
            sinceEnd.start();
            end(person);
            const QWidgetList windows = QApplication::topLevelWidgets();
            if (std::none_of(windows.begin(), windows.end(), [](QWidget* w) { return w->isVisible(); }))
                hiddenAfterMs = sinceEnd.elapsed();
        });
    QCOMPARE(use(person), 0);
    qInfo("hidden after %lld ms, ended after %lld ms", hiddenAfterMs, sinceEnd.elapsed());
    QVERIFY(hiddenAfterMs >= 0 && hiddenAfterMs < hideLimitMs);
    QVERIFY(sinceEnd.elapsed() < endLimitMs);
    QVERIFY(!QFile::exists(journalFile + QStringLiteral("-wal"))); // closed in order
    QCOMPARE(journalexport::writeEvents({journalFile, QStringLiteral("events.csv"), {}, {}, {}}), QString());
    QVERIFY(textOf(QStringLiteral("events.csv")).contains("established"));
}

void WindowUnitsTest::damagedConfigurationIsRepaired()
{
    write(unitlist::defaultFile(), "[A]\nportName=line\nhello\n");
    startSerialUnit();
    const auto problem = [] {
        const auto* label = screen::find<QLabel>("UnitsProblem");
        return label ? label->text() : QString();
    };
    Person visitor;
    visitor.sees("the wrong line", [&] { return problem().contains(QLatin1String("line 3")); })
        .presses(Qt::Key_Escape);
    QCOMPARE(use(visitor), static_cast<int>(ExitCode::Configuration));
    QVERIFY(!QFile::exists(journalFile));

    Person person;
    person.sees("the wrong line", [&] { return problem().contains(QLatin1String("line 3")); })
        .does([] { write(unitlist::defaultFile(), "[A]\nportName=line\naddr=one\nkept=yes\n"); })
        .clicks("readAgain")
        .sees("FieldError")
        .fills("unitAddress", "2")
        .presses(Qt::Key_Return);
    watchUnit(person).quits();
    QCOMPARE(use(person), 0);
    QCOMPARE(textOf(unitlist::defaultFile()), QByteArray("[A]\nportName=line\naddr=2\nkept=yes\n"));
}

void WindowUnitsTest::withoutConfigurationUnitIsAdded()
{
    QFile::remove(unitlist::defaultFile());
    Person person;
    startSerialUnit();
    person.sees("UnitsDialog")
        .presses(Qt::Key_Space) // add
        .types("Cellar")
        .presses(Qt::Key_Tab)
        .presses(Qt::Key_Tab)
        .presses(Qt::Key_A, Qt::ControlModifier)
        .types("line")
        .presses(Qt::Key_Return)
        .sees("the unit",
              [] { return isLive(0) && screen::unitText(0).startsWith(QLatin1String("Cellar,")); })
        .quits();
    QCOMPARE(use(person), 0);
}

void WindowUnitsTest::unitIsAddedToTheWindow()
{
    Person person;
    QRect before;
    const auto geometry = [] { return screen::find<QWidget>("MainWindow")->geometry(); };
    beginWithUnit(person)
        .does([] { screen::find<QWidget>("MainWindow")->setGeometry(40, 60, 740, 655); })
        .does([&] { before = geometry(); })
        .presses(Qt::Key_U, Qt::ControlModifier)
        .sees("UnitsDialog")
        .clicks("addUnit")
        .types("B")
        .fills("unitPort", "line")
        .fills("unitAddress", "2")
        .presses(Qt::Key_Return)
        .sees("both units", [] { return isLive(0) && isLive(1); })
        .does([&] { QCOMPARE(geometry(), before); })
        .quits();
    QCOMPARE(use(person), 0);
    QCOMPARE(unitlist::read(unitlist::defaultFile()).names,
             QStringList({QStringLiteral("A"), QStringLiteral("B")}));
}

int main(int argc, char* argv[])
{
    return ownfolder::run<WindowUnitsTest>(argc, argv);
}

#include "tst_windowunits.moc"
