#include "catalogue.h"
#include "columns.h"
#include "dialog.h"
#include "displaytext.h"
#include "settingstable.h"
#include "vek5_10_30k_view.h"
#include "vek5view.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

#include <malloc.h>

namespace {

// Under the sanitizer every allocation is dear, and its leak check needs a single one to tell.
#ifdef __SANITIZE_ADDRESS__
constexpr int refreshCount = 1000;
#else
constexpr int refreshCount = 10000;
#endif

using Points = QMap<int, QVariant>;
using Rows = QList<const catalogue::Row*>;

// Every point that the pages read, with values that differ from one another.
Points everyPoint(int offset)
{
    Points points;
    for (int alarm = 0; alarm < 512; ++alarm)
        points.insert(2000 + alarm, alarm % 7 == offset % 7 ? 1 : 0);
    for (int id = 3000; id < 3164; ++id)
        points.insert(id, static_cast<float>((id + offset) % 97) / 4);
    for (int id = 4000; id < 4276; ++id)
        points.insert(id, static_cast<float>((id + offset) % 211) / 4);
    return points;
}

// The display texts once more, written apart from the code.
QString expectedText(const catalogue::Row& row, const Points& points)
{
    QString text;
    const auto number = [&](int i) { return points.value(row.pointId + i).toDouble(); };
    const auto whole = [&](int i) { return points.value(row.pointId + i).toInt(); };
    const QString unit = QString::fromUtf8(row.unit);
    QString bytes;
    switch (row.type) {
    case 0:
        text = QString::asprintf("%d", whole(0));
        break;
    case 4:
        text = QString::asprintf("%.1f", number(0));
        break;
    case 5:
        text = QString::asprintf("%.1f/%.1f/%.1f", number(0), number(1), number(2));
        break;
    case 6:
        text = QString::asprintf("%.2f", number(0));
        break;
    case 9:
        if (row.pointId == 3103 || row.pointId == 4268) {
            for (int i = 0; i < 6; ++i)
                bytes += points.value(row.pointId + i).toString().rightJustified(2, QLatin1Char('0')) +
                         QString::fromLatin1("// ::").mid(i, 1);
            return QStringLiteral("20") + bytes;
        }
        for (int i = 0; i < row.pointCount; ++i)
            bytes += QChar(whole(i));
        return bytes.trimmed().section(QChar(0), 0, 0) + unit;
    case 11:
        for (int i = row.choices.count - 1; i >= 0; --i) {
            const QString option = QString::fromUtf8(row.choices.first[i].text);
            const bool isLast = i == row.choices.count - 1 || option != QLatin1String("9600") || i != 0;
            if (static_cast<int>(row.choices.first[i].value) == whole(0) && isLast)
                return option + unit;
        }
        return {};
    }
    return text + unit;
}

template <int size>
Rows rowsOf(const catalogue::Row (&table)[size])
{
    Rows rows;
    for (const catalogue::Row& row : table)
        rows << &row;
    return rows;
}

Rows realtimeRows()
{
    return rowsOf(catalogue::deviceData) + rowsOf(catalogue::outputData) + rowsOf(catalogue::inputData) +
           rowsOf(catalogue::bypassData) + rowsOf(catalogue::batteryData) + rowsOf(catalogue::recInvData);
}

// As soon as a modal window is open: acts on it.
template <typename Action>
void withNextModal(Action action)
{
    QTimer::singleShot(0, [action] {
        QWidget* modal = nullptr;
        QTRY_VERIFY((modal = QApplication::activeModalWidget()));
        action(modal);
    });
}

void answerNextBox(const char* buttonName, QString* question = nullptr)
{
    withNextModal([=](QWidget* box) {
        if (question)
            *question = box->findChild<QLabel*>()->text();
        box->findChild<QPushButton*>(QLatin1String(buttonName))->click();
    });
}

Dialog* openDialog()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<Dialog*>(widget))
            return dialog->isVisible() ? dialog : nullptr;
    }
    return nullptr;
}

} // namespace

class tst_vek5View : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup() { m_view.reset(); }

    void catalogueRecords();
    void displayTexts_data();
    void displayTexts();
    void everyTextOfEveryPage();
    void beforeAnyData();
    void alarms();
    void buttons_data();
    void buttons();
    void download();
    void unknownButtonAndHostThatDeletes();
    void settings_data();
    void settings();
    void lastSetTextUntilRefresh();
    void guests();
    void copying();
    void manyRefreshesLeakNothing();

private:
    QTabWidget* tabs() { return m_view->findChild<QTabWidget*>(QStringLiteral("devStacketTable")); }
    SettingsTable* table(const char* name) { return m_view->findChild<SettingsTable*>(QLatin1String(name)); }
    void showTab(int index) { tabs()->setCurrentIndex(index); }
    void doubleClick(const char* tableName, int row);

    std::unique_ptr<vek5View> m_view;
};

void tst_vek5View::initTestCase()
{
    qRegisterMetaType<QMap<QString, QVariant>>("QMap<QString,QVariant>");
}

void tst_vek5View::init()
{
    m_view = std::make_unique<vek5View>();
    m_view->flushData(everyPoint(0)); // before any layout
    m_view->setUserInfo(QStringLiteral("user"), 2);
    for (int i = 0; i < 10; ++i)
        m_view->refreshLayout();
    m_view->setName(QStringLiteral("UPS-A"));
    m_view->resize(1024, 700);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    QCOMPARE(tabs()->count(), 5);
}

void tst_vek5View::doubleClick(const char* tableName, int row)
{
    showTab(3);
    SettingsTable* target = table(tableName);
    m_view->findChild<QTabWidget*>(QStringLiteral("configStack"))->setCurrentWidget(target);
    target->scrollToItem(target->item(row, 1));
    const QPoint position = target->visualItemRect(target->item(row, 1)).center();
    QTest::mouseClick(target->viewport(), Qt::LeftButton, {}, position);
    QTest::mouseDClick(target->viewport(), Qt::LeftButton, {}, position);
}

void tst_vek5View::catalogueRecords()
{
    vek5_10_30k_View first;
    vek5_10_30k_View second;
    QCOMPARE(first.getDevCode(), 222);
    QVERIFY(first.getSpecialConfig().isEmpty());
    QVERIFY(first.getDeviceData().at(0) != second.getDeviceData().at(0));
    QCOMPARE(first.getAlarmList().size(), 512);
    QCOMPARE(first.getAlarmList().at(22), QStringLiteral("Monitor_Low battery (DOD)"));
    QVERIFY(first.getAlarmList().at(511).isEmpty());
    const ParameterInformation* limit = first.getAdjustConfig().at(9);
    QCOMPARE(limit->comboMap.value(QStringLiteral("0.5"), -1), 0);
    QCOMPARE(limit->comboMap.value(QStringLiteral("12.0")), 12);
    QCOMPARE(first.getDevInfoConfig().at(17)->comboMap.value(QStringLiteral("9600")), 3);
}

void tst_vek5View::displayTexts_data()
{
    const auto row =
        columns<int, int, int, QVariantList, QString>("type", "pointId", "count", "values", "expected");
    row("absent integer", 0, 10, 0, {}, "0u");
    row("three integers", 1, 10, 0, {1, 2}, "1/2/0u");
    row("hundredths", 7, 10, 0, {1.005, -2.5, 3}, "1.00/-2.50/3.00u");
    row("free code", 8, 10, 3, {1, 2, 3}, "");
    row("text", 9, 10, 6, {' ', 'A', 0xC2, 0xB0, 'B', 0}, "A\u00b0Bu");
    row("blanks before the zero stay", 9, 10, 4, {'A', ' ', 0, 'x'}, "A u");
    row("no points", 9, 10, 0, {'A'}, "");
    row("date", 9, 3103, 6, {24, 5, 6, 7, 8, 123}, "2024/05/06 07:08:123");
    row("absent date", 9, 4268, 6, {}, "2000/00/00 00:00:00");
    row("short date", 9, 4268, 3, {24, 5, 6}, "2024/05/06 ");
    row("too short date", 9, 4268, 2, {24, 5}, "");
    row("option", 11, 10, 0, {7}, "a sevenu");
    row("no such option", 11, 10, 0, {6}, "");
}

void tst_vek5View::displayTexts()
{
    QFETCH(int, type);
    QFETCH(int, pointId);
    QFETCH(int, count);
    QFETCH(QVariantList, values);
    QFETCH(QString, expected);
    ParameterInformation record;
    record.unit = QStringLiteral("u");
    record.type = type;
    record.pointId = pointId;
    record.pointCount = count;
    record.addCombo({QStringLiteral("b seven"), QStringLiteral("a seven")}, {7.9F, 7.0F});
    Points points;
    for (const QVariant& value : values)
        points.insert(pointId + points.size(), value);
    QCOMPARE(displaytext::value(record, points), expected);
}

void tst_vek5View::everyTextOfEveryPage()
{
    for (const Points& points : {everyPoint(3), everyPoint(50), Points(), everyPoint(3)}) {
        m_view->flushData(points);
        showTab(2);
        const auto labels = m_view->findChildren<QLabel*>(QStringLiteral("PanelValue"));
        const Rows rows = realtimeRows();
        QCOMPARE(labels.size(), rows.size());
        for (int i = 0; i < rows.size(); ++i)
            QCOMPARE(QAccessible::queryAccessibleInterface(labels.at(i))->text(QAccessible::Name),
                     expectedText(*rows.at(i), points));
        QTRY_COMPARE(qobject_cast<QScrollArea*>(tabs()->widget(2))->horizontalScrollBar()->maximum(), 0);
        showTab(3);
        const QMap<const char*, Rows> settings = {{"basicTable", rowsOf(catalogue::basicConfig)},
                                                  {"batteryTable", rowsOf(catalogue::batteryConfig)},
                                                  {"adjustTable", rowsOf(catalogue::adjustConfig)},
                                                  {"devinforTable", rowsOf(catalogue::devInfoConfig)}};
        for (auto entry = settings.begin(); entry != settings.end(); ++entry) {
            const SettingsTable* shown = table(entry.key());
            QCOMPARE(shown->rowCount(), entry.value().size());
            for (int row = 0; row < shown->rowCount(); ++row) {
                QCOMPARE(shown->item(row, 0)->text(), QString::fromUtf8(entry.value().at(row)->label));
                QCOMPARE(shown->item(row, 1)->text(), expectedText(*entry.value().at(row), points));
            }
        }
    }
    QCOMPARE(table("batteryTable")->item(3, 2)->text(), QStringLiteral("2.1-3.65"));
    QCOMPARE(table("batteryTable")->item(2, 2)->text(), QStringLiteral("-"));
    QCOMPARE(table("batteryTable")->item(3, 2)->foreground().color(), QColor(Qt::red));
}

void tst_vek5View::beforeAnyData()
{
    vek5View view;
    view.refreshLayout();
    delete view.findChild<QTabWidget*>(QStringLiteral("devStacketTable")); // a host's doing
    view.refreshLayout();
    view.findChild<QTabWidget*>(QStringLiteral("devStacketTable"))->setCurrentIndex(3);
    const auto* shown = view.findChild<SettingsTable*>(QStringLiteral("batteryTable"));
    QCOMPARE(shown->item(0, 1)->text(), QStringLiteral("-"));
    view.flushData({});
    QCOMPARE(shown->item(0, 1)->text(), QStringLiteral("0"));
}

void tst_vek5View::alarms()
{
    showTab(1);
    auto* list = m_view->findChild<AlarmTable*>();
    Points points = {{2000, 1}, {2001, 2}, {2020, 1}, {2511, 1}};
    m_view->flushData(points);
    QCOMPARE(list->rowCount(), 3);
    QCOMPARE(list->horizontalHeaderItem(1)->text(), QStringLiteral("Event description"));
    const QString seen = list->item(1, 0)->text();
    QCOMPARE(list->item(1, 1)->text(), QStringLiteral("Monitor_Bypass power supply"));
    QVERIFY(qAbs(QDateTime::fromString(seen, QStringLiteral("yyyy-MM-dd HH:mm:ss"))
                     .secsTo(QDateTime::currentDateTime())) < 60);
    list->selectRow(1);
    QTest::qWait(1100); // the clock of the list shows seconds
    points.insert(2000, 0);
    points.insert(2002, 1);
    m_view->flushData(points);
    QCOMPARE(list->rowCount(), 3);
    QCOMPARE(list->item(1, 0)->text(), seen);
    QVERIFY(list->selectionModel()->isRowSelected(1, QModelIndex()));
    points.remove(2020);
    showTab(0);
    m_view->flushData(points); // noticed although another page is open
    points.insert(2020, 1);
    m_view->flushData(points);
    showTab(1);
    QCOMPARE(list->rowCount(), 3);
    QVERIFY(list->item(1, 0)->text() > seen);
}

void tst_vek5View::buttons_data()
{
    const auto row = columns<int>("commandId");
    row("buzzer_off", 1010);
    row("buzzer_on", 1009);
    row("power_on", 1008);
    row("off_turn_bypass", 1015);
    row("power_off", 1007);
    row("turn_bypass", 1016);
    row("turn_inverter", 1017);
    row("battery_test", 1003);
    row("battery_maintenance", 1005);
    row("cancel_test", 1006);
    row("clear_fault", 1001);
    row("clear_history_log", 1002);
}

void tst_vek5View::buttons()
{
    QFETCH(int, commandId);
    auto* button = m_view->findChild<QPushButton*>(QLatin1String(QTest::currentDataTag()));
    QVERIFY(button && !button->toolTip().isEmpty() && !button->accessibleName().isEmpty());
    QSignalSpy requests(m_view.get(), &CollectView::postDEvent);
    QString question;
    answerNextBox("btnWhite", &question);
    button->click();
    QCOMPARE(question, button->text() + QLatin1Char('?'));
    QVERIFY(requests.isEmpty());
    answerNextBox("btnBlue");
    button->click();
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.at(0).at(0).toInt(), commandId);
    const QVariantMap expected = {{QStringLiteral("name"), QStringLiteral("UPS-A")},
                                  {QStringLiteral("controlId"), commandId},
                                  {QStringLiteral("controlValue"), QString()}};
    QCOMPARE(requests.at(0).at(1).toMap(), expected);
}

void tst_vek5View::download()
{
    QTemporaryDir folder;
    QSignalSpy requests(m_view.get(), &CollectView::postDEvent);
    auto* button = m_view->findChild<QPushButton*>(QStringLiteral("download_history_log"));
    const auto press = [&](const QString& fileName) {
        withNextModal([=](QWidget* box) {
            withNextModal([=](QWidget* chooser) {
                if (fileName.isEmpty())
                    return qobject_cast<QDialog*>(chooser)->reject();
                qobject_cast<QFileDialog*>(chooser)->selectFile(fileName);
                if (!fileName.startsWith(QLatin1String("/proc")))
                    return static_cast<void>(QMetaObject::invokeMethod(chooser, "accept"));
                answerNextBox("btnBlue");
                QMetaObject::invokeMethod(chooser, "accept");
            });
            box->findChild<QPushButton*>(QStringLiteral("btnBlue"))->click();
        });
        button->click();
    };
    const QString fileName = folder.filePath(QStringLiteral("history.csv"));
    press(fileName);
    QVERIFY(QFile::exists(fileName));
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.at(0).at(0).toInt(), 1045);
    QCOMPARE(requests.at(0).at(1).toMap().value(QStringLiteral("controlValue")).toString(), fileName);
    press(QString());
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.at(1).at(1).toMap().value(QStringLiteral("controlValue")).toString(), QString());
    press(QStringLiteral("/proc/none.csv"));
    QCOMPARE(requests.size(), 2);
}

void tst_vek5View::unknownButtonAndHostThatDeletes()
{
    // A view that goes while its question is open takes the question along.
    auto* doomed = new vek5View;
    doomed->refreshLayout();
    withNextModal([=](QWidget*) { delete doomed; });
    doomed->findChild<QPushButton*>(QStringLiteral("buzzer_on"))->click();

    auto* added = new QPushButton(QStringLiteral("Added"), m_view.get());
    connect(added, &QPushButton::clicked, m_view.get(), &vek5View::pushButtonSlot);
    QVariantMap request;
    connect(m_view.get(), &CollectView::postDEvent, this, [&](int type, const QVariantMap& map) {
        QCOMPARE(type, 2016);
        request = map;
        m_view.release()->deleteLater();
    });
    answerNextBox("btnBlue");
    added->click();
    QCOMPARE(request.value(QStringLiteral("controlValue")).toString(), QStringLiteral("1,300"));
}

void tst_vek5View::settings_data()
{
    const auto row = columns<int, QString, int, bool>("level", "tableName", "row", "opens");
    row("guest, open parameter", 0, "batteryTable", 1, false);
    row("operator, open parameter", 1, "batteryTable", 1, true);
    row("operator, charge current", 1, "adjustTable", 9, true);
    row("operator, closed parameter", 1, "basicTable", 0, false);
    row("engineer", 2, "basicTable", 0, true);
    row("engineer, information", 3, "devinforTable", 18, true);
}

void tst_vek5View::settings()
{
    QFETCH(int, level);
    QFETCH(QString, tableName);
    QFETCH(int, row);
    QFETCH(bool, opens);
    m_view->setUserInfo(QString(), level);
    doubleClick(tableName.toLatin1().constData(), row);
    QCOMPARE(openDialog() != nullptr, opens);
    if (openDialog())
        openDialog()->close();
    SettingsTable* target = table(tableName.toLatin1().constData());
    target->setCurrentCell(row, 0);
    QTest::keyClick(target, Qt::Key_Return);
    QCOMPARE(openDialog() != nullptr, opens);
    emit target->cellDoubleClicked(target->rowCount(), 0); // a row that does not exist
    m_view->setUserInfo(QString(), 0);
    QVERIFY(!openDialog());
}

void tst_vek5View::lastSetTextUntilRefresh()
{
    QSignalSpy requests(m_view.get(), &CollectView::postDEvent);
    doubleClick("batteryTable", 1);
    QVERIFY(openDialog());
    auto* entry = openDialog()->findChild<QLineEdit*>();
    entry->setText(QStringLiteral("77"));
    openDialog()->findChild<QPushButton*>(QStringLiteral("btnBlue"))->click();
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.at(0).at(0).toInt(), 1029);
    const QVariantMap request = requests.at(0).at(1).toMap();
    QCOMPARE(request.value(QStringLiteral("controlId")).toInt(), 2016);
    QCOMPARE(request.value(QStringLiteral("controlValue")).toString(), QStringLiteral("3018,77"));
    QCOMPARE(request.value(QStringLiteral("name")).toString(), QStringLiteral("UPS-A"));
    QCOMPARE(table("batteryTable")->item(1, 1)->text(), QStringLiteral("77"));
    m_view->flushData({{3018, 65}});
    QCOMPARE(table("batteryTable")->item(1, 1)->text(), QStringLiteral("65AH"));
}

void tst_vek5View::guests()
{
    m_view->setUserInfo(QString(), 0);
    auto* control = m_view->findChild<QWidget*>(QStringLiteral("ControlTable"));
    QVERIFY(!control->isEnabled());
    QVERIFY(!tabs()->isTabEnabled(4));
    QCOMPARE(tabs()->tabText(1), QStringLiteral("Alarm"));
    showTab(3);
    SettingsTable* basic = table("basicTable");
    const int firstRow = basic->rowAt(0);
    QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), {}, QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&wheel); // a wheel that nobody turned goes no further than its widget
    qApp->notify(basic->viewport(), &wheel);
    QVERIFY(basic->rowAt(0) > firstRow);
    m_view->setUserInfo(QString(), 1);
    QVERIFY(control->isEnabled());
    QVERIFY(tabs()->isTabEnabled(4));
}

void tst_vek5View::copying()
{
    SettingsTable* basic = table("basicTable");
    m_view->flushData({{3000, 4}});
    showTab(3);
    basic->selectRow(0);
    QTest::keyClick(basic, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("System work mode:\tECO\t-"));
}

void tst_vek5View::manyRefreshesLeakNothing()
{
    const Points some[] = {everyPoint(0), everyPoint(1)};
    const auto flush = [&](int count) {
        for (int i = 0; i < count; ++i) {
            if (i % 100 == 0) // sanitizers make every switch dear, and every change
                showTab(i / 100 % 5);
            m_view->flushData(some[i / 4 % 2]);
        }
        QCoreApplication::processEvents();
    };
    flush(500); // every page once
    const auto objects = m_view->findChildren<QObject*>().size();
    const size_t usedBytes = mallinfo2().uordblks;
    flush(refreshCount);
    QCOMPARE(m_view->findChildren<QObject*>().size(), objects);
    QVERIFY2(mallinfo2().uordblks < usedBytes + 200000,
             qPrintable(QString::number(mallinfo2().uordblks - usedBytes)));
}

QTEST_MAIN(tst_vek5View)
#include "tst_vek5view.moc"
