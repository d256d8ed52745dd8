#pragma once

#include "readerthread.h"
#include "trendreader.h"

#include <QTimer>
#include <QWidget>

#include <optional>

class QComboBox;
class QFrame;
class QLabel;
class QPushButton;
class QScrollArea;
class TrendPlot;

/// What one unit's data log says over time: voltages, load, battery. Shows an hour to a week, up to now and
/// going on with it, or an earlier time. The journal is read on a thread of this widget, and only while the
/// widget can be seen.
///
/// Keys within the plots: left and right move a cursor, with Ctrl in larger steps, Home and End take it to
/// the ends, Escape puts it away; Page Up shows an earlier time, Page Down a later one.
class Trends : public QWidget
{
    Q_OBJECT

public:
    /// An empty name says that no journal is kept; a file may also come into being later.
    explicit Trends(const QString& journalFile, QWidget* parent = nullptr);

    /// Shows this unit, at the times that are shown now.
    void setUnit(const QString& unit);
    const QString& unit() const { return m_request.unit; }
    /// One of the spans that the user can choose; others are refused.
    void setSpan(qint64 spanMs);
    qint64 spanMs() const { return m_request.spanMs; }
    /// Whether the unit answers now: if not, its last values are not shown as the present ones.
    void setUnitAnswering(bool isAnswering);
    /// Shows what was around a time, with the cursor there.
    void showTime(qint64 utcMs);
    /// What the plots show now.
    const TrendData& shown() const { return m_data; }

signals:
    /// The user chose another one.
    void spanChanged(qint64 spanMs);
    // To the reader, on its thread.
    void readWanted(int order, const TrendRequest& request);
    void pauseWanted(bool isPaused);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeControls();
    void makePlots();
    void layOut();
    void connectAll();
    void request();
    void requestEnd(qint64 endMs);
    void move(int halfSpans);
    void takeData(const TrendData& trend);
    void alignPlots();
    void setCursor(std::optional<double> timeMs);
    bool moveCursor(const QKeyEvent& event);
    void showProblem(const QString& line);
    void showState();
    void showPresent();

    TrendRequest m_request;
    bool m_isAnswering = true;
    int m_order = 0; // what comes for an earlier one is dropped
    TrendData m_data;
    std::optional<double> m_cursorMs;
    QLabel* m_title = nullptr;
    QLabel* m_time = nullptr; // of the cursor
    QComboBox* m_spans = nullptr;
    QPushButton* m_earlier = nullptr;
    QPushButton* m_later = nullptr;
    QPushButton* m_now = nullptr;
    QLabel* m_problem = nullptr;
    QLabel* m_state = nullptr;
    QScrollArea* m_area = nullptr;
    QFrame* m_board = nullptr;
    QVector<TrendPlot*> m_plots;
    QTimer m_resizeTimer;
    ReaderThread<TrendReader> m_thread; // ends first: nothing is delivered to a half-deleted widget
};
