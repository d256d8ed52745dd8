// The units dialog as a person uses it: by keys, on good files and bad ones, with a unit that answers and one
// that does not.

#include "hoststyle.h"
#include "pluginlibrary.h"
#include "portmanage.h"
#include "serialport.h"
#include "simulatorprocess.h"
#include "unitlist.h"
#include "unitsdialog.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QTableWidget>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace {

QByteArray textOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(not there)");
}

} // namespace

class UnitsDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void addsAUnitByKeys();
    void editsAPortsLine();
    void showsWhatIsWrong();
    void asksBeforeChangesAreLost();
    void refusesADamagedFileUntilItIsRight();
    void testsAUnitThatAnswers();
    void testsOnAPortThatUnitsUse();
    void isClosedDuringATest();

private:
    QString path(const char* name) const { return m_folder->filePath(QLatin1String(name)); }
    void write(const char* name, const QByteArray& text) const;
    void open();
    template <typename T>
    T* find(const char* name) const
    {
        return m_dialog->findChild<T*>(QLatin1String(name));
    }
    /// Types into a field as if a person had gone there.
    void enter(const char* field, const char* text);
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
    QString problem() const { return find<QLabel>("UnitsProblem")->text(); }

    std::unique_ptr<PluginLibrary> m_plugin;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UnitsDialog> m_dialog;
};

void UnitsDialogTest::initTestCase()
{
    std::signal(SIGPIPE, SIG_IGN);
    hoststyle::apply();
    m_plugin = std::make_unique<PluginLibrary>(QStringLiteral(PLUGIN_FILE));
    QVERIFY2(m_plugin->factory(), qPrintable(m_plugin->error()));
}

void UnitsDialogTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QDir::setCurrent(m_folder->path());
}

void UnitsDialogTest::cleanup()
{
    m_dialog.reset();
}

void UnitsDialogTest::write(const char* name, const QByteArray& text) const
{
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

void UnitsDialogTest::open()
{
    m_dialog = std::make_unique<UnitsDialog>(path("dev.ini"), path("serial.ini"));
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
}

void UnitsDialogTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(m_dialog->focusWidget() ? m_dialog->focusWidget() : m_dialog.get(), key, modifiers);
}

void UnitsDialogTest::enter(const char* field, const char* text)
{
    auto* widget = find<QWidget>(field);
    widget->setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    QTest::keyClicks(m_dialog->focusWidget(), QLatin1String(text));
}

void UnitsDialogTest::addsAUnitByKeys()
{
    open();
    QVERIFY(find<QPushButton>("addUnit")->hasFocus()); // there is no file, so no unit
    press(Qt::Key_Space);
    QVERIFY(find<QLineEdit>("unitName")->hasFocus());
    QTest::keyClicks(m_dialog->focusWidget(), QStringLiteral("Server room"));
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    press(Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(m_dialog->focusWidget(), QStringLiteral("/dev/ttyUSB7"));
    press(Qt::Key_Tab);
    press(Qt::Key_Down); // the next speed
    for (int field = 0; field < 5; ++field)
        press(Qt::Key_Tab);
    QVERIFY(find<QLineEdit>("unitAddress")->hasFocus());
    press(Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(m_dialog->focusWidget(), QStringLiteral("300"));
    QSignalSpy changed(m_dialog.get(), &UnitsDialog::unitsChanged);
    press(Qt::Key_Return);
    QVERIFY2(problem().contains(QLatin1String("from 1 to 247")), qPrintable(problem()));
    QVERIFY(find<QLineEdit>("unitAddress")->hasFocus() && !QFile::exists(path("dev.ini")));
    QTest::keyClicks(m_dialog->focusWidget(), QStringLiteral("7"));
    press(Qt::Key_Return);
    QCOMPARE(problem(), QString());
    QCOMPARE(changed.size(), 1);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(textOf(path("dev.ini")),
             QByteArray("[Server room]\nportName=/dev/ttyUSB7\naddr=7\nretries=5\ninterval=5\n"));
    QCOMPARE(textOf(path("serial.ini")), QByteArray("[dev/ttyUSB7]\nparam=\"19200,n,8,1\"\ntimeout=1000\n"));
}

void UnitsDialogTest::editsAPortsLine()
{
    write("dev.ini", "[A]\nportName=/dev/p\n[B]\nportName=/dev/p\naddr=2\n");
    write("serial.ini", "[dev/p]\nparam=14400,s,7,2\n[dev/q]\nparam=12#3#2#0\n");
    open();
    enter("lineTimeout", "2000");
    press(Qt::Key_Return);
    QCOMPARE(textOf(path("serial.ini")),
             QByteArray("[dev/p]\nparam=14400,s,7,2\ntimeout=2000\n[dev/q]\nparam=12#3#2#0\n"));

    open();
    m_dialog->selectUnit(QStringLiteral("B"));
    enter("lineTimeout", "99999"); // for A as well
    QTRY_VERIFY(find<QTableWidget>("UnitsTable")->item(0, 1)->text().contains(QLatin1String("25500")));
    enter("unitPort", "/dev/q"); // with settings of its own
    QCOMPARE(find<QLineEdit>("lineTimeout")->text(), QStringLiteral("1000"));
    QVERIFY(find<QTableWidget>("UnitsTable")->item(1, 1)->text().contains(QLatin1String("/dev/q")));
    const auto boxes = m_dialog->findChildren<QComboBox*>();
    QStringList shown;
    for (const QComboBox* box : boxes)
        shown += box->currentText();
    QVERIFY2(shown.contains(QLatin1String("even parity")), qPrintable(shown.join(QLatin1Char('|'))));
}

void UnitsDialogTest::showsWhatIsWrong()
{
    const QByteArray before = "[A]\nportName=p\naddr=one\n[B]\ncommType=2\nport=0\n";
    write("dev.ini", before);
    write("serial.ini", "[p]\nparam=fast\n");
    open();
    const auto findings = [this](const char* name) {
        QStringList texts;
        const auto labels = m_dialog->findChildren<QLabel*>(QLatin1String(name));
        for (const QLabel* label : labels)
            texts += label->isVisible() ? label->text() : QString();
        texts.removeAll(QString());
        return texts;
    };
    QCOMPARE(findings("FieldError").size(), 2); // line and address
    find<QPushButton>("btnBlue")->click();
    QVERIFY(problem().startsWith(QLatin1String("A, Line: Choose speed")));
    QCOMPARE(textOf(path("dev.ini")), before);
    m_dialog->selectUnit(QStringLiteral("B"));
    QCOMPARE(findings("FieldError").size(), 3); // connection, port, TCP port
    find<QWidget>("unitOnTcp")->setFocus();
    press(Qt::Key_Space);
    QCOMPARE(findings("FieldError").size(), 2);
    enter("unitHost", "ups.example");
    enter("unitTcpPort", "502");
    QCOMPARE(findings("FieldError").size(), 0);
    m_dialog->selectUnit(QStringLiteral("A"));
    find<QTableWidget>("UnitsTable")->setFocus();
    press(Qt::Key_Delete);
    find<QPushButton>("btnBlue")->click();
    QCOMPARE(textOf(path("dev.ini")), QByteArray("[B]\ncommType=1\nport=502\nipAddr=ups.example\n"));
}

void UnitsDialogTest::asksBeforeChangesAreLost()
{
    write("dev.ini", "[A]\nportName=p\n");
    open();
    enter("unitAddress", "9");
    press(Qt::Key_Escape);
    auto* question = m_dialog->findChild<QMessageBox*>();
    QVERIFY(question && m_dialog->isVisible());
    QTest::keyClick(question, Qt::Key_Escape);
    QVERIFY(m_dialog->isVisible());
    press(Qt::Key_Escape);
    QTRY_VERIFY(m_dialog->findChildren<QMessageBox*>().size() == 1);
    m_dialog->findChild<QMessageBox*>()->button(QMessageBox::Discard)->click();
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(textOf(path("dev.ini")), QByteArray("[A]\nportName=p\n"));
}

void UnitsDialogTest::refusesADamagedFileUntilItIsRight()
{
    write("dev.ini", "[A]\nportName=p\nhello\n");
    open();
    QVERIFY2(problem().contains(QLatin1String("line 3")), qPrintable(problem()));
    QVERIFY(!find<QPushButton>("btnBlue")->isEnabled() && !find<QPushButton>("addUnit")->isEnabled());
    QVERIFY(find<QPushButton>("readAgain")->hasFocus());
    write("dev.ini", "[A]\nportName=p\naddr=4\n");
    press(Qt::Key_Space);
    QCOMPARE(problem(), QString());
    QCOMPARE(find<QLineEdit>("unitAddress")->text(), QStringLiteral("4"));
    // A folder in the place of a file.
    QVERIFY(QFile::remove(path("dev.ini")) && QDir().mkpath(path("dev.ini")));
    open();
    QVERIFY(problem().contains(QLatin1String("not a file")));
    press(Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
}

void UnitsDialogTest::testsAUnitThatAnswers()
{
    Simulator unit({QStringLiteral("--tcp"), QStringLiteral("0")});
    QVERIFY(unit.waitReady("127.0.0.1:"));
    write("dev.ini", "[A]\ncommType=1\nipAddr=127.0.0.1\nport=1\n");
    open();
    enter("unitTcpPort", QByteArray::number(unit.port())); // not saved
    QSignalSpy ended(m_dialog.get(), &UnitsDialog::testEnded);
    find<QPushButton>("testUnit")->click();
    QVERIFY(m_dialog->isTesting() && !find<QPushButton>("btnBlue")->isEnabled());
    QVERIFY(ended.wait(patienceMs));
    const QString output = find<QPlainTextEdit>("TestOutput")->toPlainText();
    QVERIFY2(output.contains(QLatin1String("952 values, 6 requests")), qPrintable(output));
    QVERIFY(output.endsWith(QLatin1String("the unit answers")));
    QCOMPARE(find<QLabel>("testStatus")->text(), QStringLiteral("A answers"));
    QVERIFY(find<QPushButton>("btnBlue")->isEnabled());
}

// The settings that are tested are the entered ones; afterwards the units have their port as it was.
void UnitsDialogTest::testsOnAPortThatUnitsUse()
{
    Simulator unit(words(QStringLiteral("--serial line --baud 0")));
    QVERIFY(unit.waitReady("line"));
    write("dev.ini", "[A]\nportName=line\n");
    PortManage running;
    SerialPort* port = running.getPortHandle(QStringLiteral("line"));
    QVERIFY(port->isOpen());
    open();
    m_dialog->setRunningPorts(&running, {QStringLiteral("A")});
    enter("lineTimeout", "700");
    QSignalSpy ended(m_dialog.get(), &UnitsDialog::testEnded);
    port->Lock(); // a query of a unit
    find<QPushButton>("testUnit")->click();
    QVERIFY(!ended.wait(200));
    port->UnLock();
    QVERIFY(ended.wait(patienceMs));
    const QString output = find<QPlainTextEdit>("TestOutput")->toPlainText();
    QVERIFY2(output.endsWith(QLatin1String("the unit answers")), qPrintable(output));
    QVERIFY(output.contains(QLatin1String("timeout=700")));
    port->Lock();
    QVERIFY(port->isOpen());
    QCOMPARE(port->settingsInForce().Timeout, 1000);
    port->UnLock();
}

void UnitsDialogTest::isClosedDuringATest()
{
    QTcpServer silent; // takes the connection and says nothing
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    write("dev.ini",
          "[A]\ncommType=1\nipAddr=127.0.0.1\nport=" + QByteArray::number(silent.serverPort()) + '\n');
    open();
    QSignalSpy ended(m_dialog.get(), &UnitsDialog::testEnded);
    auto* button = find<QPushButton>("testUnit");
    auto* output = find<QPlainTextEdit>("TestOutput");
    button->click();
    QTRY_VERIFY(output->toPlainText().contains(QLatin1String("connected after")));
    button->click();
    const QString before = output->toPlainText();
    QVERIFY(m_dialog->isTesting());
    press(Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible() && m_dialog->isTesting());
    QVERIFY(ended.wait(patienceMs));
    QCOMPARE(output->toPlainText(), before);
    QVERIFY(!m_dialog->isTesting());
    button->click(); // and deleted while the next one runs
}

QTEST_MAIN(UnitsDialogTest)
#include "tst_unitsdialog.moc"
