#pragma once

#include <QBasicTimer>
#include <QWidget>

class QPainter;

/// The busy indicator: a ring of dots that turns while it can be seen, and costs nothing otherwise.
class Loading : public QWidget
{
    Q_OBJECT

public:
    explicit Loading(QWidget* parent = nullptr);

    /// Draws the indicator as it stands, in the middle of the widget.
    void drawLoading(QPainter* painter);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QBasicTimer m_ticks;
    int m_step = 0; ///< dots by which the ring has turned
};
