#pragma once

#include "trenddata.h"
#include "trendrows.h"

#include <QWidget>

#include <optional>

class QFrame;
class QLabel;
class QwtPlot;
class SilenceItem;
class TrendCurve;

/// One quantity over time: a title, a legend with the values at the cursor or else the last ones, and the
/// curves. GUI thread.
class TrendPlot : public QWidget
{
    Q_OBJECT

public:
    /// The title is translated already.
    TrendPlot(const trendrows::Row& row, const QString& title, QWidget* parent = nullptr);
    ~TrendPlot() override;

    /// The curves are those of this plot alone.
    void setData(const TrendData& trend, const QVector<TrendCurveData>& curves);
    /// A time that is not shown puts the cursor away.
    void setCursor(std::optional<double> timeMs);
    /// When not, the last values are not shown as those at the end of the time.
    void setEndKnown(bool isKnown);
    void setTimeAxisVisible(bool isVisible);

    /// In pixels: plots below each other take the same.
    double valueAxisWidth() const;
    void setValueAxisWidth(double width);
    int canvasWidth() const;

signals:
    /// The mouse is over the plot at this time.
    void pointed(double timeMs);
    void left();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makePlot();
    void makeCurves();
    QLayout* makeLegend();
    void showTimes(const TrendData& trend);
    void showRange(const QVector<TrendCurveData>& curves);
    void placeCursor();
    void showReadings();

    const trendrows::Row& m_row;
    const QString m_title;
    QwtPlot* m_plot;
    QFrame* m_cursorLine = nullptr;
    SilenceItem* m_silences = nullptr; // this and the curves are the plot's
    QVector<TrendCurve*> m_curves;
    QVector<QLabel*> m_readings;
    double m_fromMs = 0;
    double m_toMs = 0;
    bool m_isSilentAtEnd = false; // an old value is never shown as the present one
    bool m_isEndKnown = true;
    std::optional<double> m_cursorMs;
};
