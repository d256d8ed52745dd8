#pragma once

#include "flowdata.h"
#include "flowgeometry.h"

#include <QPixmap>
#include <QWidget>

class QTimer;

/// The energy-flow diagram: the unit as six blocks joined by tracks, with moving dashes where power flows. A
/// click on a block opens or closes its information panels. GUI thread only.
class Energyline : public QWidget
{
    Q_OBJECT

public:
    explicit Energyline(QWidget* parent = nullptr);

    /// The texts that points are indices into, in the language at the time of the call.
    static flowdata::Tables textTables();

    /// Takes flows and texts from a data map; the next tick, at most 100 ms later, shows them.
    void flushData(QMap<int, QVariant> values);
    /// Turns all flows off until the next data map.
    void set_all_off_Flow();
    /// Opens or closes the panel of a view flag; the next tick shows it.
    void toggle_view_Flag(bool& flag);

    // The layers of a picture, from the back; each wants an active painter in the widget's coordinates.
    void drawBase(QPainter* painter);
    void drawBattery(QPainter* painter);
    void drawflow(QPainter* painter);
    void drawdate(QPainter* painter);

    QSize sizeHint() const override { return minimumSize(); }

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void tick();
    void findCentre();
    int blockAt(const QPoint& position) const;
    bool isOpen(const flowgeometry::Block& block) const;
    void toggleBlock(int block);
    void chooseBlock(int block);
    QString toolTipText(int block) const;
    QRegion flowRegion() const;
    QPixmap paintedBase(qreal pixelRatio) const;
    void drawMarks(QPainter* painter) const;

    const flowdata::Tables m_tables = textTables();
    flowdata::Texts m_texts;
    flowdata::Flows m_flows{};
    std::array<bool, flowgeometry::viewCount> m_views{};
    int m_chargePercent = -1;
    double m_centreX = 0;
    double m_centreY = 0;
    float m_flowOffset = 0; ///< dash offset, in pen widths
    QTimer* m_timer;
    bool m_isChanged = false; ///< what a picture shows differs from the last picture
    int m_chosenBlock = -1;   ///< by keyboard
    QPixmap m_base;           ///< the layer of drawBase(), for one device pixel ratio
};
