#include "columns.h"
#include "energyline.h"

#include <QPainter>
#include <QTimer>

namespace {

using Data = QMap<int, QVariant>;

// As agreed with hosts, about the centre; none of it is taken from the diagram.
const QRect inputPanel(-440, 45, 315, 105);
const QRect bypassPanel(-440, -340, 250, 130);
const QRect devicePanel(-175, -340, 315, 155);
const QRect loadPanel(100, 45, 320, 230);
const QRect batteryPanel(-440, 163, 315, 180);
const QRect recInvPanel(145, -340, 300, 130);
const QVector<QRect> allPanels{inputPanel, bypassPanel, devicePanel, loadPanel, batteryPanel, recInvPanel};
const QRect inverterBlock(55, -38, 75, 76);
const QVector<QRect> allBlocks{{-300, -38, 75, 76}, {-300, -188, 75, 76}, {-130, -38, 75, 76},
                               {-25, 80, 50, 75},   inverterBlock,        {225, -38, 75, 76}};
const QRgb panelColor = qRgb(245, 246, 250);

QString warnings;

void keepWarning(QtMsgType, const QMessageLogContext&, const QString& text)
{
    if (text.startsWith(
            QLatin1String("QP"))) // QPainter, QPixmap; the offscreen platform has remarks of its own
        warnings += text + QLatin1Char('\n');
}

Data mainsData()
{
    Data data{{4132, 3}, {4162, 3}, {4191, 3}, {4190, 1},  {4250, 1},      {4248, 2},      {4161, 2},
              {4101, 3}, {4239, 2}, {4240, 2}, {4111, 85}, {4103, 270.4F}, {4104, -270.4F}};
    for (int point : {4219, 4220, 4221, 4222, 4223})
        data.insert(point, 1);
    return data;
}

/// A diagram whose ticks and paints are the test's.
class Diagram : public Energyline
{
public:
    int paints = 0;

    Diagram()
    {
        m_timer->stop();
        resize(1000, 760);
        show();
        QVERIFY(QTest::qWaitForWindowExposed(this));
        settle();
    }

    void tick(int count = 1)
    {
        for (int i = 0; i < count; ++i)
            QMetaObject::invokeMethod(m_timer, "timeout");
        settle();
    }

    void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    void click(const QPoint& fromCentre)
    {
        QTest::mouseClick(this, Qt::LeftButton, Qt::NoModifier, centre() + fromCentre);
        settle();
    }

    QPoint centre() const { return {width() / 2, height() / 2}; }
    QImage picture() { return grab().toImage(); }
    QImage part(const QRect& fromCentre) { return picture().copy(fromCentre.translated(centre())); }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        Energyline::paintEvent(event);
    }

private:
    QTimer* m_timer = findChild<QTimer*>();
};

} // namespace

// The energy-flow diagram: what it reads from a data map, and what becomes of clicks and ticks on the screen.
class tst_Energyline : public QObject
{
    Q_OBJECT

private slots:
    void flows_data();
    void flows();
    void texts_data();
    void texts();
    void clicks_data();
    void clicks();
    void keyboard();
    void flowOffsetWraps();
    void paintsOnlyWhenSomethingShows();
    void longTextsStayInside();
    void imagesAndEmptyWidget();
};

void tst_Energyline::flows_data()
{
    const auto row = columns<Data, QByteArray>("data", "on");
    row("none", {}, "000000");
    row("mains", mainsData(), "100110");
    row("charging", {{4220, 1}, {4224, 1}}, "010000");
    row("discharging", {{4221, 1.0F}, {4224, 1}}, "001000");
    row("bypass", {{4218, 1}, {4223, 1}}, "000001");
    row("bypass without load", {{4218, 1}, {4223, 0}}, "000000");
    row("only 1 is on", {{4219, 2}, {4222, -1}, {4223, 1}}, "000000");
}

void tst_Energyline::flows()
{
    QFETCH(Data, data);
    QByteArray on;
    for (bool flow : flowdata::flows(data))
        on += flow ? '1' : '0';
    QTEST(on, "on");
}

void tst_Energyline::texts_data()
{
    using namespace flowtexts;
    const auto row = columns<Data, int, QString>("data", "text", "expected");
    row("three phases", {{4191, 3.0F}, {4192, 220.04F}, {4193, 221.06F}}, BypassVoltage, "220.0/221.1/0.0 V");
    row("one phase", {{4132, 1}, {4139, 49.96F}, {4140, 7}}, InputFrequency, "50.0 Hz");
    row("reactive", {{4162, 3}, {4181, 1}, {4183, -2.5F}}, ReactivePower, "1.0/0.0/-2.5 kVA");
    row("load", {{4162, 1}, {4184, 104.5F}}, LoadPercentage, "104.5 %");
    row("two phases", {{4191, 2}, {4192, 220}}, BypassVoltage, "kept");
    row("bypass status", {{4190, 1}}, BypassStatus, "Normal");
    row("last of a table", {{4101, 5.0F}}, BatteryState, "volt. equal charge");
    row("behind a table", {{4101, 6}}, BatteryState, "kept");
    row("before a table", {{4240, -1}}, InverterState, "kept");
    row("odd spelling", {{4250, 3}}, SupplyMode, "Conbined supply");
    row("rectifier", {{4241, 36.54F}}, RectifierTemperature, "36.5 ℃");
    row("battery halves", {{4103, 270.44F}, {4104, -270}}, BatteryVoltage, "270.4/-270.0 V");
    row("coldest battery", {{4107, -10.0F}}, BatteryTemperature, "-10.0 ℃");
    row("no sensor", {{4107, -11.0F}}, BatteryTemperature, "-");
    row("no time left", {{4110, 0}}, RemainingTime, "0 Min");
    row("time unknown", {{4110, -1}}, RemainingTime, "-");
    row("capacity", {{4111, 85.0F}}, RemainingCapacity, "85 %");
    row("capacity unknown", {{4111, -1}}, RemainingCapacity, "-");
    // 0x141 is 'A' in its low byte, 0xB5 a Latin-1 letter; what follows the zero is not shown.
    row("identity", {{4016, 0x141}, {4017, 0xB5}, {4018, 0}, {4019, 'x'}}, DeviceType, "Aµ");
    Data full;
    for (int i = 0; i < 17; ++i)
        full.insert(4080 + i, 'a' + i);
    row("full identity", full, DeviceName, "abcdefghijklmnop");
    row("absent", {}, BypassVoltage, "kept");
}

void tst_Energyline::texts()
{
    QFETCH(Data, data);
    QFETCH(int, text);
    flowdata::Texts texts;
    texts[std::size_t(text)] = QStringLiteral("kept");
    flowdata::updateTexts(texts, data, Energyline::textTables());
    QTEST(texts[std::size_t(text)], "expected");
}

void tst_Energyline::clicks_data()
{
    const auto row = columns<QPoint, QVector<QRect>>("position", "opened");
    row("input", {-262, 0}, {inputPanel});
    row("input, upper left edge", {-300, -37}, {inputPanel});
    row("input, right edge", {-225, 37}, {inputPanel});
    row("right of input", {-224, 0}, {});
    row("below input", {-262, 38}, {});
    row("bypass, lower edge", {-262, -113}, {bypassPanel});
    row("load", {300, 0}, {loadPanel});
    row("battery", {25, 155}, {batteryPanel});
    row("above battery", {0, 79}, {});
    row("rectifier", {-92, 0}, {devicePanel, recInvPanel});
    row("inverter", {92, 0}, {devicePanel, recInvPanel});
}

void tst_Energyline::clicks()
{
    QFETCH(QPoint, position);
    QFETCH(QVector<QRect>, opened);
    Diagram diagram;
    const QImage before = diagram.picture();
    const int paints = diagram.paints;
    diagram.click(position);
    QCOMPARE(diagram.paints, paints); // it waits for the tick
    diagram.tick();
    QCOMPARE(diagram.paints, opened.isEmpty() ? paints : paints + 1);
    for (const QRect& panel : allPanels) {
        const QRect place = panel.translated(diagram.centre());
        QCOMPARE(diagram.part(panel) != before.copy(place), opened.contains(panel));
        const QRgb middleOfEdge = diagram.picture().pixel(place.left() + 4, place.center().y());
        QCOMPARE(middleOfEdge == panelColor, opened.contains(panel));
    }
    diagram.flushData(mainsData()); // views survive data
    const bool isPair = opened.contains(recInvPanel);
    diagram.click(isPair ? -position : position); // rectifier and inverter close what the other opened
    diagram.flushData({});
    diagram.set_all_off_Flow();
    diagram.tick();
    for (const QRect& panel : allPanels)
        QCOMPARE(diagram.part(panel), before.copy(panel.translated(diagram.centre())));
}

void tst_Energyline::keyboard()
{
    Diagram diagram;
    diagram.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&diagram));
    diagram.clearFocus(); // which it has from the window
    diagram.setFocus(Qt::TabFocusReason);
    const QImage closed = diagram.part(bypassPanel);
    QTest::keyClick(&diagram, Qt::Key_Right); // from INPUT to BYPASS
    QTest::keyClick(&diagram, Qt::Key_Space);
    QVERIFY(diagram.part(bypassPanel) != closed);
    QTest::keyClick(&diagram, Qt::Key_Return);
    QCOMPARE(diagram.part(bypassPanel), closed);
}

void tst_Energyline::flowOffsetWraps()
{
    int ticksToWrap = 0;
    for (float offset = 0; offset >= -1000.0F; offset -= 0.4F)
        ++ticksToWrap;
    Diagram diagram;
    diagram.hide(); // the offset moves on all the same
    diagram.flushData(mainsData());
    const QImage start = diagram.picture();
    diagram.tick(ticksToWrap - 1);
    QVERIFY(diagram.picture() != start);
    diagram.tick();
    QCOMPARE(diagram.picture(), start);
    diagram.tick();
    QVERIFY(diagram.picture() != start);
}

void tst_Energyline::paintsOnlyWhenSomethingShows()
{
    Diagram diagram;
    int expected = diagram.paints;
    diagram.tick(3);
    QCOMPARE(diagram.paints, expected); // nothing flows
    diagram.flushData({{4111, 50}});
    diagram.tick();
    QCOMPARE(diagram.paints, ++expected); // the charge is new
    diagram.flushData({{4111, 50}});
    diagram.tick();
    QCOMPARE(diagram.paints, expected);
    diagram.flushData(mainsData());
    diagram.tick();
    diagram.tick();
    QCOMPARE(diagram.paints, expected += 2);
    diagram.hide();
    diagram.tick();
    QCOMPARE(diagram.paints, expected);
}

void tst_Energyline::longTextsStayInside()
{
    Data data = mainsData();
    for (int point = 4192; point < 4201; ++point)
        data.insert(point, -123456.7F);
    for (int point = 4133; point < 4187; ++point)
        data.insert(point, -123456.7F);
    data.insert(4132, 3);
    data.insert(4162, 3);
    for (int point = 4000; point < 4096; ++point)
        data.insert(point, 'W');
    Diagram diagram;
    diagram.flushData(data);
    diagram.tick();
    const QImage closed = diagram.picture();
    for (const QRect& block : allBlocks) {
        if (block != inverterBlock) // closes what the rectifier's opened
            diagram.click(block.center());
    }
    const QImage open = diagram.picture();
    QImage outside = open;
    QPainter painter(&outside);
    for (const QRect& panel : allPanels) {
        const QRect place = panel.translated(diagram.centre());
        for (int y = place.top() + 8; y < place.bottom() - 8; ++y) {
            for (int x = 1; x < 10; ++x) {
                QCOMPARE(open.pixel(place.left() + x, y), panelColor);
                QCOMPARE(open.pixel(place.right() - x, y), panelColor);
            }
        }
        painter.drawImage(place, closed, place);
    }
    // The blocks, which show that they are open, are all that differs beside the panels.
    for (const QRect& block : allBlocks)
        painter.drawImage(block.translated(diagram.centre()), closed, block.translated(diagram.centre()));
    QCOMPARE(outside, closed);
}

void tst_Energyline::imagesAndEmptyWidget()
{
    warnings.clear();
    const QtMessageHandler previous = qInstallMessageHandler(keepWarning);
    Diagram diagram;
    diagram.flushData(mainsData());
    diagram.setMinimumSize(0, 0);
    for (const QSize& size : {QSize(0, 0), QSize(1, 1), QSize(40, 0)}) {
        diagram.resize(size);
        diagram.click({});
        diagram.tick();
        diagram.grab();
    }
    qInstallMessageHandler(previous);
    QCOMPARE(warnings, QString());
    for (const QString& ratio : {QString(), QStringLiteral("@2x")}) {
        const int factor = ratio.isEmpty() ? 1 : 2;
        const auto size = [&](const char* name) {
            return QImage(QStringLiteral("://image/%1%2.png").arg(QLatin1String(name), ratio)).size() /
                   factor;
        };
        QCOMPARE(size("INPUT"), QSize(28, 10));
        QCOMPARE(size("LOAD"), QSize(56, 40));
        QCOMPARE(size("REC"), QSize(46, 45));
        QCOMPARE(size("INV"), QSize(48, 46));
    }
}

QTEST_MAIN(tst_Energyline)
#include "tst_energyline.moc"
