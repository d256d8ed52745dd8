#include "unitentry.h"

#include <QStringList>

QString unitentry::lineSection(const QString& portName)
{
    QStringList parts = portName.split(QLatin1Char('/'));
    parts.removeAll(QString());
    return parts.join(QLatin1Char('/'));
}
