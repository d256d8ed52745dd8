#include "blockwatch.h"
#include "curvethinner.h"
#include "gapfinder.h"
#include "generatedjournal.h"
#include "trends.h"
#include "trendvalue.h"

#include <QDateTime>
#include <QLabel>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <cmath>
#include <memory>

namespace {

constexpr qint64 hourMs = 60 * 60 * 1000;
constexpr qint64 dayMs = 24 * hourMs;
const QString a = QStringLiteral("A");

QString textOf(const QVector<double>& values)
{
    QStringList texts;
    for (const double value : values)
        texts += QString::number(value);
    return texts.join(QLatin1Char(' '));
}

LogRow rowAt(qint64 utcMs, double volts = 230)
{
    const QString phases = QString::asprintf("%.1f/%.1f/%.1f", volts, volts + 1, volts + 2);
    return generatedjournal::row(utcMs, a, phases, phases, QStringLiteral("40.0/nan/41.0"),
                                 QStringLiteral("270.0-269.5"), QStringLiteral("100.0"));
}

} // namespace

class TrendsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        m_file = m_folder->filePath(QStringLiteral("journal.sqlite"));
    }
    void cleanup() { m_trends.reset(); }

    void parses_data()
    {
        QTest::addColumn<QString>("phases");
        QTest::addColumn<QString>("halves");
        const auto row = [](const char* text, const char* phases, const char* halves) {
            QTest::newRow(text) << QString::fromLatin1(phases) << QString::fromLatin1(halves);
        };
        row("230.9/231.2/229.9", "230.9 231.2 229.9", "nan nan");
        row("230.9", "230.9", "nan nan");
        row("1.0/nan/inf", "1 nan nan", "nan nan");
        row("1/2/3/4", "1 2 3", "nan nan");
        row("//", "nan nan nan", "nan nan");
        row("", "nan", "nan nan");
        row("230,9", "nan", "nan nan");
        row("270.0-268.5", "nan", "270 268.5");
        row("0.0-0.0", "nan", "0 0");
        row("-0.1268.5", "nan", "0.1 268.5");
        row("270.0-268.5-1.0", "nan", "nan nan");
        row("270.0-nan", "nan", "nan nan");
    }
    void parses()
    {
        const QString text = QString::fromLatin1(QTest::currentDataTag());
        QTEST(textOf(trendvalue::phases(text)), "phases");
        QTEST(textOf(trendvalue::halves(text)), "halves");
    }

    // "|" before a row: a gap was found there.
    void findsGaps_data()
    {
        QTest::addColumn<QVector<int>>("seconds");
        QTest::addColumn<QVector<int>>("beginnings");
        QTest::addColumn<QString>("expected");
        using Numbers = QVector<int>;
        QTest::newRow("regular") << Numbers{0, 10, 21, 29} << Numbers{0} << QStringLiteral("0 10 21 29");
        QTest::newRow("rows missing")
            << Numbers{0, 10, 70, 80} << Numbers{0} << QStringLiteral("0 10 |70 80");
        QTest::newRow("short loss") << Numbers{0, 10, 15, 25} << Numbers{0, 14}
                                    << QStringLiteral("0 10 |15 25");
        QTest::newRow("slower run") << Numbers{0, 10, 70, 130, 190} << Numbers{0, 69}
                                    << QStringLiteral("0 10 |70 |130 190");
        QTest::newRow("irregular, fast") << Numbers{0, 1, 5, 6} << Numbers{} << QStringLiteral("0 1 5 6");
        QTest::newRow("first two far apart")
            << Numbers{0, 3600, 3610} << Numbers{} << QStringLiteral("0 |3600 3610");
    }
    void findsGaps()
    {
        QFETCH(QVector<int>, seconds);
        QFETCH(QVector<int>, beginnings);
        GapFinder finder;
        QVector<qint64> beginningsMs;
        for (const int second : beginnings)
            beginningsMs += second * 1000LL;
        finder.setPeriodBeginnings(beginningsMs);
        QStringList found;
        for (const int second : seconds)
            found +=
                (finder.takeRow(second * 1000LL) ? QStringLiteral("|%1") : QStringLiteral("%1")).arg(second);
        QTEST(found.join(QLatin1Char(' ')), "expected");
        QVERIFY(!finder.isSilentAt(seconds.last() * 1000LL + 1000));
        QVERIFY(finder.isSilentAt(seconds.last() * 1000LL + hourMs));
    }

    // No peak is lost, nothing is out of order, and the size depends on the slices alone.
    void thins()
    {
        CurveThinner thinner(1000);
        for (int i = 0; i < 100000; ++i)
            thinner.add(i, i == 54321 ? 999 : i == 54322 ? -999 : i == 70000 ? qQNaN() : 230 + i % 7);
        TrendCurveData data = thinner.data();
        QVERIFY2(data.points.size() <= 2 * 101, qPrintable(QString::number(data.points.size())));
        QVERIFY(data.points.contains({54321, 999}) && data.points.contains({54322, -999}));
        QVERIFY(
            std::is_sorted(data.points.cbegin(), data.points.cend(),
                           [](const QPointF& left, const QPointF& right) { return left.x() < right.x(); }));
        QCOMPARE(data.starts.size(), 2);
        QVERIFY(data.points[data.starts[1]].x() > 70000);
    }

    void showsGapsAndGoesOn()
    {
        const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
        std::vector<JournalRecord> records{
            CommunicationPeriod{a, nowMs - 2 * hourMs, {}, PeriodEnding::Open}};
        const qint64 lostMs = nowMs - hourMs / 2;
        const qint64 backMs = lostMs + 10 * 60000;
        for (qint64 timeMs = nowMs - 2 * hourMs; timeMs <= nowMs; timeMs += 10000) {
            if (timeMs < lostMs || timeMs > backMs)
                records.emplace_back(rowAt(timeMs));
        }
        generatedjournal::write(m_file, records);
        open();
        const TrendData first = latest([](const TrendData& data) { return data.isComplete; });
        QCOMPARE(first.curves.size(), 12);
        QCOMPARE(first.silences.size(), 1);
        QVERIFY(qAbs(first.silences[0].fromMs - lostMs) <= 10000);
        QVERIFY(qAbs(first.silences[0].toMs - backMs) <= 10000);
        QCOMPARE(first.curves[0].starts.size(), 2);
        QVERIFY(first.curves[7].points.isEmpty()); // a phase that gives no number
        QVERIFY(first.curves[0].points.first().x() <=
                static_cast<double>(first.fromMs)); // no hole at the edge

        generatedjournal::write(m_file, {rowAt(nowMs + 1, 111)});
        const TrendData next =
            latest([&](const TrendData& data) { return data.curves.value(0).points.last().y() == 111; });
        QVERIFY(next.toMs > first.toMs);
        QCOMPARE(reading(0), QStringLiteral("111.0"));
        QTest::keyClick(board(), Qt::Key_Home); // the cursor, at an hour ago
        QCOMPARE(reading(0), QStringLiteral("230.0"));
        QTest::keyClick(board(), Qt::Key_Escape);
        QCOMPARE(reading(0), QStringLiteral("111.0"));
    }

    // A week of a row every two seconds, read and thinned with the loop free all the time.
    void readsManyRows()
    {
        const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
        std::vector<JournalRecord> records;
        for (qint64 timeMs = nowMs - 7 * dayMs; timeMs < nowMs + 60000; timeMs += 2000 * fewerBy)
            records.emplace_back(rowAt(timeMs, 230 + 5 * std::sin(static_cast<double>(timeMs) / 1e7)));
        generatedjournal::write(m_file, records);
        open();
        latest([](const TrendData& data) { return data.isComplete; });
        const BlockWatch watch;
        QElapsedTimer clock;
        clock.start();
        m_trends->setSpan(7 * dayMs);
        const TrendData data = latest([](const TrendData& trend) {
            return trend.isComplete && trend.toMs - trend.fromMs == 7 * dayMs;
        });
        qInfo("%zu rows in %lld ms; longest block %.1f ms, of which processor %.1f ms", records.size(),
              clock.elapsed(), watch.longestMs(), watch.longestCpuMs());
        QVERIFY(data.silences.isEmpty());
        QVERIFY(data.curves[0].points.size() < 2 * 1000);
        m_trends->setSpan(dayMs); // while a longer one may still be read
        m_trends->setSpan(7 * dayMs);
        m_trends->setSpan(hourMs);
        latest(
            [](const TrendData& trend) { return trend.isComplete && trend.toMs - trend.fromMs == hourMs; });
        QVERIFY2(watch.longestCpuMs() < longestBlockMs, qPrintable(QString::number(watch.longestCpuMs())));
    }

    // What was before a unit or a file was changed is never shown under the new name.
    void tellsTroubleAndStartsAnew()
    {
        open();
        const auto* problem = m_trends->findChild<QLabel*>(QStringLiteral("TrendsProblem"));
        QTRY_VERIFY(problem->text().contains(QLatin1String("There is no file")));
        generatedjournal::write(m_file, {rowAt(QDateTime::currentMSecsSinceEpoch() - 60000)});
        QTRY_COMPARE(reading(0), QStringLiteral("230.0"));
        QVERIFY(!problem->isVisible());
        m_trends->setUnit(QStringLiteral("B"));
        QCOMPARE(reading(0), QStringLiteral("--"));
        const auto* state = m_trends->findChild<QLabel*>(QStringLiteral("TrendsState"));
        QTRY_VERIFY(state->text().contains(QLatin1String("Nothing was recorded")));
    }

private:
    void open()
    {
        m_trends.reset(new Trends(m_file));
        m_trends->resize(900, 600);
        m_trends->setUnit(a);
        m_trends->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_trends.get()));
    }
    QWidget* board() const { return m_trends->findChild<QWidget*>(QStringLiteral("TrendsBoard")); }
    /// What is shown, once a condition holds for it.
    template <typename Condition>
    TrendData latest(const Condition& condition) const
    {
        const auto isMet = [&] { return condition(m_trends->shown()); };
        [&] { QTRY_VERIFY_WITH_TIMEOUT(isMet(), 30000); }();
        return m_trends->shown();
    }
    /// A curve's number in the legend.
    QString reading(int index) const
    {
        const QString text =
            m_trends->findChildren<QLabel*>(QStringLiteral("TrendReading")).value(index)->text();
        return text.section(QStringLiteral("<b>"), 1).section(QStringLiteral("</b>"), 0, 0);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file;
    std::unique_ptr<Trends> m_trends;
};

QTEST_MAIN(TrendsTest)
#include "tst_trends.moc"
