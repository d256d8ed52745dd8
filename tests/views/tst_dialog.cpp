#include "columns.h"
#include "dialog.h"
#include "loading.h"
#include "msgbox.h"

#include <QAbstractEventDispatcher>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>

#include <functional>

Q_DECLARE_METATYPE(ParameterInformation)

namespace {

ParameterInformation value(float ratio, int minRaw = 0, int maxRaw = 0)
{
    ParameterInformation record;
    record.label = QStringLiteral("Output with transformer voltage rectification 2:");
    record.valueText = QStringLiteral("-");
    record.pointId = 3019;
    record.ratio = ratio;
    record.minRaw = minRaw;
    record.maxRaw = maxRaw;
    return record;
}

ParameterInformation text(int pointId, int length)
{
    ParameterInformation record = value(1);
    record.type = 9;
    record.pointId = pointId;
    record.pointCount = length;
    return record;
}

ParameterInformation chargeLimit()
{
    ParameterInformation record = value(0.01F);
    record.type = 11;
    record.addCombo({QStringLiteral("0.5"), QStringLiteral("1.0"), QStringLiteral("2.0")}, {0.5F, 1, 2});
    return record;
}

void enter(const Dialog& dialog, const QString& entry)
{
    dialog.findChild<QLineEdit*>()->setText(entry);
    dialog.findChild<QComboBox*>()->setCurrentText(entry);
}

QPushButton* button(const QWidget& box, const char* name)
{
    return box.findChild<QPushButton*>(QLatin1String(name));
}

int page(const Dialog& dialog)
{
    return dialog.findChild<QStackedWidget*>()->currentIndex();
}

// Acts on the next box that runs modally; the test's time limit ends the wait for one that never does.
void inBox(const std::function<void(MsgBox*)>& action)
{
    QTimer::singleShot(5, qApp, [action] {
        auto* box = qobject_cast<MsgBox*>(QApplication::activeModalWidget());
        box ? action(box) : inBox(action);
    });
}

void drag(QWidget* target, Qt::MouseButton held, const QPoint& by)
{
    const QPoint start = target->mapToGlobal(QPoint());
    const auto send = [&](QEvent::Type type, const QPoint& global) {
        QMouseEvent event(type, QPoint(), global, type == QEvent::MouseMove ? Qt::NoButton : held, held, {});
        QApplication::sendEvent(target, &event);
    };
    send(QEvent::MouseButtonPress, start);
    send(QEvent::MouseMove, start + by);
    send(QEvent::MouseButtonRelease, start + by);
    send(QEvent::MouseMove, start);
}

} // namespace

class tst_dialog : public QObject
{
    Q_OBJECT

private slots:
    void request_data();
    void request();
    void waiting();
    void keys();
    void boxes();
    void dragging();
    void placeAndSize();
    void deletion();
    void turnsOnlyWhileVisible();
};

void tst_dialog::request_data()
{
    // Nothing is sent of what is out of range.
    const auto row = columns<ParameterInformation, QString, QString>("record", "entry", "sent");
    const ParameterInformation voltage = value(0.01F, 210, 365);
    row("ratio 1", value(1), "32", "3019,32");
    row("ratio 0.1", value(0.1F), "5", "3019,50");
    row("ratio 0.01", voltage, "2.256", "3019,226");
    row("other ratio", value(0.5F), "7", "3019,14");
    row("ratio 0", value(0), "7", "3019,7");
    row("rounded below zero", value(1), "-2.7", "3019,-2");
    row("no number", value(0.1F), "-", "3019,0");
    row("not a number", value(0.1F), "nan", "3019,0");
    row("nothing", value(0.1F), "", "3019,0");
    row("decimal comma", voltage, "2,25", "3019,225");
    row("point is no group", voltage, "2.250", "3019,225");
    row("half an ampere", chargeLimit(), "0.5", "3019,50");
    row("option", chargeLimit(), "2.0", "3019,200");
    row("long text", text(3087, 6), "Company", "3087,Compan");
    row("short text", text(3087, 6), "a,%1", "3087,a,%1");
    row("text of digits", text(3109, 16), "99999999999", "3109,99999999999");
    row("text without length", text(3087, -1), "Company", "3087,");
    row("system time", text(3103, 6), "2024/05/06 12:30:00", "3103,24,05,06,12,30,00");
    row("other century", text(3103, 6), "19/20 x", "3103,19,20");
    row("least", voltage, "2.1", "3019,210");
    row("greatest", voltage, "3.65", "3019,365");
    row("too little", voltage, "2.09", "");
    row("too much", voltage, "3.66", "");
    row("no number in range", voltage, "abc", "");
    row("beyond an int", value(1), "99999999999", "");
    row("beyond a double", value(0.1F), "-1e999", "");
    row("infinite", value(1), "inf", "");
}

void tst_dialog::request()
{
    QFETCH(ParameterInformation, record);
    QFETCH(QString, entry);
    QFETCH(QString, sent);
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    Dialog dialog;
    QSignalSpy requests(&dialog, &Dialog::postDEvent);
    dialog.initial(nullptr);
    dialog.checkRange();
    dialog.initial(&record);
    dialog.setDevName(QStringLiteral("UPS 1"));
    QCOMPARE(page(dialog), record.comboMap.isEmpty() ? 0 : 1);
    QStringList shown;
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        shown << label->text();
    QCOMPARE(shown.contains(QStringLiteral("Range:2.1~3.65")), record.hasRange());
    dialog.show();
    enter(dialog, entry);
    QString notice;
    if (sent.isEmpty()) {
        inBox([&](MsgBox* box) {
            notice = box->findChild<QLabel*>()->text();
            button(*box, "btnBlue")->click();
        });
    }
    button(dialog, "btnBlue")->click();
    QVERIFY(dialog.isVisible());
    if (sent.isEmpty()) {
        QCOMPARE(notice, QStringLiteral("The value is out of range!"));
        QVERIFY(requests.isEmpty() && page(dialog) == 0 && !dialog.findChild<MsgBox*>());
        QCOMPARE(record.valueText, QStringLiteral("-"));
        return;
    }
    QCOMPARE(page(dialog), 2);
    QCOMPARE(record.valueText, entry.isEmpty() ? QStringLiteral("-") : entry);
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests[0][0].toInt(), 1029);
    const QMap<QString, QVariant> expected{
        {QStringLiteral("controlId"), 2016},
        {QStringLiteral("controlValue"), sent},
        {QStringLiteral("nodeValue"), record.type == 9 ? sent.section(QLatin1Char(','), 1) : entry},
        {QStringLiteral("nodeName"), record.label},
        {QStringLiteral("name"), QStringLiteral("UPS 1")}};
    QCOMPARE(requests[0][1].toMap(), expected);
}

// The dialog with a range closes first, then the one without; one with another record stays open.
void tst_dialog::waiting()
{
    ParameterInformation ranged = value(1, 0, 5);
    ParameterInformation free = value(1);
    Dialog first;
    Dialog second;
    Dialog reused;
    Dialog cancelled;
    QSignalSpy requests(&first, &Dialog::postDEvent);
    QSignalSpy accepted(&cancelled, &Dialog::accepted);
    for (Dialog* dialog : {&second, &first, &reused, &cancelled}) {
        dialog->initial(dialog == &second ? &free : &ranged);
        dialog->show();
        dialog->checkRange();
    }
    button(first, "btnBlue")->click();
    first.checkRange();
    QCOMPARE(requests.size(), 1);
    button(cancelled, "btnWhite")->click();
    QVERIFY(!cancelled.isVisible());
    reused.initial(&free);
    QTRY_VERIFY(!first.isVisible());
    QCOMPARE(first.result(), int(QDialog::Accepted));
    QVERIFY(second.isVisible());
    QTRY_VERIFY(!second.isVisible());
    QVERIFY(reused.isVisible() && page(reused) == 0 && button(reused, "btnBlue")->isEnabled());
    QVERIFY(accepted.isEmpty());
}

void tst_dialog::keys()
{
    ParameterInformation record = value(1, 30, 40);
    record.valueText = QStringLiteral("32");
    Dialog dialog;
    for (const bool isConfirmed : {false, true}) {
        dialog.initial(&record);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("36")); // replaces the text
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, {}, QString(), true);
        QApplication::sendEvent(dialog.findChild<QLineEdit*>(), &held); // the key that opened the dialog
        QTest::keyClick(QApplication::focusWidget(), isConfirmed ? Qt::Key_Return : Qt::Key_Escape);
        QCOMPARE(dialog.isVisible(), isConfirmed);
        QCOMPARE(record.valueText, isConfirmed ? QStringLiteral("36") : QStringLiteral("32"));
    }
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QVERIFY(dialog.isVisible());

    ParameterInformation limit = chargeLimit();
    dialog.initial(&limit);
    dialog.setPresentValue(2);
    dialog.setPresentValue(77);
    QCOMPARE(dialog.getstrValue(), QStringLiteral("2.0"));
}

void tst_dialog::boxes()
{
    for (const int kind : {0, 1, 7}) {
        for (const bool isConfirmed : {false, true}) {
            MsgBox box(kind, QStringLiteral("Startup?"));
            inBox([&](MsgBox*) {
                QCOMPARE(button(box, "btnWhite")->isVisible(), kind == 1);
                QTest::keyClick(&box, isConfirmed ? Qt::Key_Return : Qt::Key_Escape);
            });
            QCOMPARE(box.exec(), int(isConfirmed));
        }
    }
}

void tst_dialog::dragging()
{
    Dialog dialog;
    MsgBox box(0, QStringLiteral("Startup?"));
    for (QDialog* each : {static_cast<QDialog*>(&dialog), static_cast<QDialog*>(&box)}) {
        each->show();
        const QPoint by(25, -40);
        const QPoint end = each->pos() + by;
        drag(each->findChild<QLabel*>(), Qt::LeftButton, by);
        drag(each, Qt::RightButton, by);
        drag(button(*each, "btnBlue"), Qt::LeftButton, by);
        each->setProperty("canMove", false);
        drag(each, Qt::LeftButton, by);
        QCOMPARE(each->pos(), end);
    }
}

void tst_dialog::placeAndSize()
{
    QWidget panel;
    panel.setGeometry(200, 150, 500, 400);
    panel.show();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    ParameterInformation record = chargeLimit();
    record.addCombo({QStringLiteral("An option with a long text that people still have to read")});
    Dialog dialog;
    dialog.initial(&record);
    dialog.show();
    QVERIFY((dialog.geometry().center() - panel.geometry().center()).manhattanLength() <= 2);
    const auto* options = dialog.findChild<QComboBox*>();
    QVERIFY(options->width() >= options->sizeHint().width());
}

void tst_dialog::deletion()
{
    ParameterInformation record = value(1, 1, 5);
    QPointer<Dialog> dialog;
    for (const char* entry : {"3", "9", "4"}) {
        dialog = new Dialog;
        dialog->initial(&record);
        dialog->show();
        enter(*dialog, QLatin1String(entry));
        if (*entry == '9')
            inBox([&](MsgBox*) { delete dialog; });
        else if (*entry == '3')
            connect(dialog.data(), &Dialog::postDEvent, this, [&] { delete dialog; });
        QTest::keyClick(dialog.data(), Qt::Key_Return);
        QCOMPARE(dialog.isNull(), *entry != '4');
    }
    delete dialog; // while its timer runs
}

void tst_dialog::turnsOnlyWhileVisible()
{
    Loading loading;
    for (const bool isVisible : {true, false}) {
        loading.setVisible(isVisible);
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(&loading);
        QCOMPARE(timers.size(), int(isVisible));
    }
    const QImage before = loading.grab().toImage();
    loading.show();
    QTRY_VERIFY(loading.grab().toImage() != before);
}

QTEST_MAIN(tst_dialog)
#include "tst_dialog.moc"
