#include "flowfont.h"

namespace flowfont {

QFont make(double points, int weight)
{
    QFont font(QStringLiteral("Microsoft YaHei"));
    font.setPointSizeF(points);
    font.setWeight(weight);
    return font;
}

} // namespace flowfont
