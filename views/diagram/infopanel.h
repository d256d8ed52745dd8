#pragma once

#include <QPair>
#include <QString>
#include <QVector>

class QPainter;
class QRectF;

/// A caption and its value.
using InfoRow = QPair<QString, QString>;

/// Draws a titled panel of captions and values. Nothing leaves the box: text becomes smaller when it must,
/// all of it alike, and is elided where even that does not help. An empty value reads "-".
void drawInfoPanel(QPainter* painter, const QRectF& box, const QString& title, const QVector<InfoRow>& rows);
