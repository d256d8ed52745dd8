#pragma once

#include <QWidget>

class QLabel;

/// What lies over the pages of a unit whose values are not live: it dims them and says why. It takes neither
/// mouse nor keys, so that the pages below stay open to those who want to look.
class Veil : public QWidget
{
    Q_OBJECT

public:
    enum class Ground
    {
        Dimming,
        Solid
    };

    explicit Veil(QWidget* parent, Ground ground = Ground::Dimming);

    /// The reason as a title, and a line below it. A warning stands out.
    void setTexts(const QString& title, const QString& details, bool isWarning);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Ground m_ground;
    QLabel* m_title;
    QLabel* m_details;
};
