#include "realtimepage.h"

#include "displaytext.h"
#include "pagetext.h"

#include <QGridLayout>
#include <QVBoxLayout>

#include <numeric>

namespace {
constexpr int mostColumns = 3;
constexpr int gap = 12;   // px
constexpr int indent = 8; // px, where no style sheet sets another
} // namespace

RealtimePage::RealtimePage(QWidget* parent)
    : QScrollArea(parent)
{
    setObjectName(QStringLiteral("RTDataTable"));
    setFrameShape(NoFrame);
    setWidgetResizable(true);
}

// From the outside in: a widget that gets a parent takes over its style with everything inside it, once for
// each time.
void RealtimePage::setPanels(const QList<Panel>& panels)
{
    auto* content = new QWidget;
    content->setObjectName(QStringLiteral("RTDataContent"));
    setWidget(content);
    m_grid = new QGridLayout(content);
    m_grid->setContentsMargins(gap, gap, gap, gap);
    m_grid->setSpacing(gap);
    m_grid->setRowStretch(panels.size(), 1); // behind the last row
    for (const Panel& panel : panels)
        m_panels << makePanel(panel, content);
    arrange(mostColumns);
}

// What a row of so many panels needs at least.
int RealtimePage::widthOf(int columns) const
{
    QVector<int> widths(columns, 0);
    for (int i = 0; i < m_panels.size(); ++i)
        widths[i % columns] = qMax(widths[i % columns], m_panels.at(i)->minimumSizeHint().width());
    return std::accumulate(widths.begin(), widths.end(), (columns + 1) * gap);
}

void RealtimePage::arrange(int columns)
{
    while (columns > 1 && widthOf(columns) > viewport()->width())
        --columns;
    if (columns == m_columns)
        return;
    m_columns = columns;
    for (int i = 0; i < m_panels.size(); ++i) {
        m_grid->removeWidget(m_panels.at(i));
        m_grid->addWidget(m_panels.at(i), i / columns, i % columns, Qt::AlignTop);
    }
    for (int column = 0; column < mostColumns; ++column)
        m_grid->setColumnStretch(column, column < columns ? 1 : 0);
}

void RealtimePage::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    if (m_grid)
        arrange(mostColumns);
}

QWidget* RealtimePage::makePanel(const Panel& panel, QWidget* content)
{
    auto* frame = new QFrame(content);
    frame->setObjectName(QStringLiteral("Panel"));
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setAccessibleName(panel.title);
    auto* column = new QVBoxLayout(frame);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    auto* title = new QLabel(panel.title, frame);
    title->setObjectName(QStringLiteral("PanelTitle"));
    title->setFont(pageFont(QFont::Bold));
    title->setIndent(indent);
    column->addWidget(title);

    auto* body = new QWidget(frame);
    body->setObjectName(QStringLiteral("PanelBody"));
    auto* grid = new QGridLayout(body);
    grid->setSpacing(0);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(1, 1);
    for (int row = 0; row < panel.records.size(); ++row) {
        ParameterInformation* record = panel.records.at(row);
        auto* caption = new QLabel(record->label, body);
        caption->setObjectName(QStringLiteral("PanelName"));
        caption->setIndent(indent);
        auto* value = new QLabel(body);
        value->setObjectName(QStringLiteral("PanelValue"));
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        value->setIndent(indent);
        // Not as its name, which screen readers would read instead of the value.
        value->setAccessibleDescription(record->label);
        grid->addWidget(caption, row, 0);
        grid->addWidget(value, row, 1);
        m_records << record;
        m_values << value;
    }
    column->addWidget(body);
    return frame;
}

void RealtimePage::refresh(const QMap<int, QVariant>& points)
{
    for (int i = 0; i < m_records.size(); ++i) {
        const QString text = displaytext::value(*m_records.at(i), points);
        if (m_values.at(i)->text() != text)
            m_values.at(i)->setText(text);
    }
    arrange(m_columns); // longer values may need more room; shorter ones must not make the panels jump back
}
