#include "hoststyle.h"

#include <QApplication>
#include <QFile>
#include <QFont>
#include <QPalette>
#include <QStyleFactory>

namespace {

constexpr double fontPoints = 10;

// Palette of what a style sheet does not reach; the same colours as there.
constexpr QRgb ground = qRgb(238, 240, 247);
constexpr QRgb text = qRgb(31, 36, 55);
constexpr QRgb mutedText = qRgb(86, 93, 120);
constexpr QRgb accent = qRgb(41, 71, 198);
constexpr QRgb selection = qRgb(221, 227, 255);

QPalette makePalette()
{
    QPalette palette{QColor(ground)};
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, QColor(text));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::PlaceholderText, QColor(mutedText));
    palette.setColor(QPalette::Highlight, QColor(selection));
    palette.setColor(QPalette::HighlightedText, QColor(text));
    palette.setColor(QPalette::Link, QColor(accent));
    return palette;
}

} // namespace

// Outside a namespace, as the macro wants it. Without it a static library's resources are not found.
static void initResource()
{
    Q_INIT_RESOURCE(style);
}

void hoststyle::prepareOffscreen()
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!qEnvironmentVariableIsSet("QT_FONT_DPI"))
        qputenv("QT_FONT_DPI", "96"); // that platform's own is 100
}

void hoststyle::apply()
{
    initResource();
    // The pages ask for a typeface that Linux systems lack: these look alike, the first one has every
    // character that the pages use.
    const QString wanted = QStringLiteral("Microsoft YaHei");
    QFont::insertSubstitutions(wanted, {QStringLiteral("Inter"), QStringLiteral("Noto Sans"),
                                        QStringLiteral("Open Sans"), QStringLiteral("DejaVu Sans")});
    QFont font(wanted);
    font.setPointSizeF(fontPoints);
    QApplication::setFont(font);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(makePalette());
    QFile sheet(QStringLiteral(":/style/style.qss"));
    if (sheet.open(QIODevice::ReadOnly))
        qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
}
