#pragma once

#include <QCoreApplication>
#include <QFont>

/// Everything that the pages say is translated in the context of vek5View, whichever file says it.
inline QString pageText(const char* text)
{
    return QCoreApplication::translate("vek5View", text);
}

/// The pages' typeface; where it is not installed the system substitutes its own.
inline QFont pageFont(QFont::Weight weight = QFont::Normal)
{
    QFont font(QStringLiteral("Microsoft YaHei"));
    font.setWeight(weight);
    return font;
}
