#include "framelessbox.h"

#include <QApplication>
#include <QBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QStyleOption>
#include <QWindow>

FramelessBox::FramelessBox(QDialog* box, const QSize& smallest)
    : QObject(box)
    , m_box(box)
{
    // Style sheets find the boxes by this name, the property tells them from what cannot be dragged.
    box->setObjectName(QStringLiteral("WhiteDialog"));
    box->setProperty("canMove", true);
    box->setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    box->setAttribute(Qt::WA_QuitOnClose, false); // closing a box never ends a host without other windows
    box->setMinimumSize(smallest);
    box->setBackgroundRole(QPalette::Base);
    box->setAutoFillBackground(true);
    QFont font = box->font();
    font.setFamily(QStringLiteral("Microsoft YaHei"));
    box->setFont(font);
    box->installEventFilter(this);
}

void FramelessBox::fit()
{
    constexpr int widest = 640; // fits every screen that panels have
    // What changed on a page inside would else reach the box's layout with the next round of events only.
    for (QWidget* child : m_box->findChildren<QWidget*>())
        child->updateGeometry();
    QLayout* layout = m_box->layout();
    layout->activate();
    const int width = qMax(qMin(layout->totalSizeHint().width(), widest),
                           qMax(m_box->minimumWidth(), layout->totalMinimumSize().width()));
    const int height =
        layout->hasHeightForWidth() ? layout->totalHeightForWidth(width) : layout->totalSizeHint().height();
    m_box->resize(width, height);
}

QPushButton* FramelessBox::addButton(QBoxLayout* row, const QString& text, const QString& objectName)
{
    auto* button = new QPushButton(text, m_box);
    button->setObjectName(objectName);
    button->setMinimumHeight(32); // operators use touch screens, too
    row->addWidget(button, 1);
    return button;
}

bool FramelessBox::eventFilter(QObject* watched, QEvent* event)
{
    // Mouse events of the labels arrive here too, as labels pass them on; so do keys that the entries leave.
    switch (event->type()) {
    case QEvent::KeyPress: {
        // The key that opened the box, still held down, must not confirm what nobody has read.
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->isAutoRepeat() && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter))
            return true;
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton) {
            m_isPressed = event->type() == QEvent::MouseButtonPress && m_box->property("canMove").toBool();
            m_pressPosition = mouse->globalPos() - m_box->pos();
        }
        break;
    }
    case QEvent::MouseMove:
        if (m_isPressed)
            m_box->move(static_cast<QMouseEvent*>(event)->globalPos() - m_pressPosition);
        break;
    case QEvent::Show:
        if (!event->spontaneous()) {
            m_isPressed = false;
            fit();
            placeOverActiveWindow();
        }
        break;
    case QEvent::Paint:
        paintEdge();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

// Without a frame a box would melt into the page behind it. A style sheet's background and border come last,
// so that they cover this edge.
void FramelessBox::paintEdge()
{
    QPainter painter(m_box);
    painter.setPen(m_box->palette().color(QPalette::Dark));
    painter.drawRect(m_box->rect().adjusted(0, 0, -1, -1));
    QStyleOption option;
    option.initFrom(m_box);
    m_box->style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, m_box);
}

// A box with a parent is placed by QDialog. One without belongs to the window in which the user just asked
// for it: it opens over that window and stays above it.
void FramelessBox::placeOverActiveWindow()
{
    const QWidget* owner = QApplication::activeWindow();
    if (m_box->parentWidget() || !owner || owner == m_box || !owner->windowHandle() || !m_box->windowHandle())
        return;
    m_box->windowHandle()->setTransientParent(owner->windowHandle());
    const QRect screen = owner->windowHandle()->screen()->availableGeometry();
    QRect place(QPoint(), m_box->size());
    place.moveCenter(owner->geometry().center());
    place.moveRight(qMin(place.right(), screen.right()));
    place.moveBottom(qMin(place.bottom(), screen.bottom()));
    m_box->move(qMax(place.left(), screen.left()), qMax(place.top(), screen.top()));
}
