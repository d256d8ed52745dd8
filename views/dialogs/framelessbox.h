#pragma once

#include <QDialog>
#include <QPoint>

class QBoxLayout;
class QPushButton;

/// What the frameless boxes share: look, size, place and dragging. A box makes one for itself and owns it.
class FramelessBox : public QObject
{
    Q_OBJECT

public:
    /// Makes the dialog a frameless box of at least this size.
    FramelessBox(QDialog* box, const QSize& smallest);

    /// Resizes the box to its contents; long texts wrap before they widen it. Done whenever the box opens.
    void fit();

    /// Appends a button; style sheets know it by its object name.
    QPushButton* addButton(QBoxLayout* row, const QString& text, const QString& objectName);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void paintEdge();
    void placeOverActiveWindow();

    QDialog* m_box;
    bool m_isPressed = false;
    QPoint m_pressPosition; ///< within the box
};
