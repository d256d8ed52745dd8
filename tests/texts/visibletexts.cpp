#include "visibletexts.h"

#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QImage>
#include <QPaintEngine>
#include <QTabBar>
#include <QWidget>

namespace {

class TextEngine : public QPaintEngine
{
public:
    TextEngine()
        : QPaintEngine(AllFeatures)
    {}
    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState&) override {}
    void drawPath(const QPainterPath&) override {}
    void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
    void drawTextItem(const QPointF&, const QTextItem& item) override { texts += item.text(); }
    Type type() const override { return User; }

    QStringList texts;
};

/// A canvas that keeps the texts only.
class TextCanvas : public QImage
{
public:
    explicit TextCanvas(const QSize& size)
        : QImage(size, Format_RGB32)
    {}
    QPaintEngine* paintEngine() const override { return &m_engine; }
    QStringList texts() const { return m_engine.texts; }

private:
    mutable TextEngine m_engine;
};

QStringList textsOf(const QAbstractItemModel& model)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row) {
        for (int column = 0; column < model.columnCount(); ++column) {
            for (const int role : {Qt::DisplayRole, Qt::ToolTipRole, Qt::AccessibleTextRole})
                texts += model.index(row, column).data(role).toString();
        }
    }
    for (int column = 0; column < model.columnCount(); ++column)
        texts += model.headerData(column, Qt::Horizontal).toString();
    return texts;
}

QStringList textsOf(const QWidget& widget)
{
    QStringList texts;
    for (const char* name : {"text", "title", "plainText", "placeholderText", "windowTitle", "toolTip",
                             "statusTip", "whatsThis", "accessibleName", "accessibleDescription"})
        texts += widget.property(name).toString();
    const auto actions = widget.actions();
    for (const QAction* action : actions)
        texts += {action->text(), action->toolTip()};
    if (const auto* view = qobject_cast<const QAbstractItemView*>(&widget))
        texts += view->model() ? textsOf(*view->model()) : QStringList();
    if (const auto* box = qobject_cast<const QComboBox*>(&widget))
        texts += textsOf(*box->model());
    if (const auto* bar = qobject_cast<const QTabBar*>(&widget)) {
        for (int i = 0; i < bar->count(); ++i)
            texts += {bar->tabText(i), bar->tabToolTip(i)};
    }
    return texts;
}

} // namespace

QStringList visibleTexts(QWidget& window)
{
    QStringList texts = textsOf(window);
    const auto widgets = window.findChildren<QWidget*>();
    for (const QWidget* widget : widgets)
        texts += textsOf(*widget);
    TextCanvas canvas(window.size());
    window.render(&canvas);
    return texts + canvas.texts();
}
