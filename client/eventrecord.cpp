#include "eventrecord.h"

#include <QDateTime>

QMap<QString, QVariant> eventrecord::begin(const QString& deviceName, int protocol, const QString& portName)
{
    QMap<QString, QVariant> record;
    record.insert(QStringLiteral("name"), deviceName);
    record.insert(QStringLiteral("protocol"), protocol);
    record.insert(QStringLiteral("port"), portName);
    record.insert(QStringLiteral("timeStr"),
                  QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
    return record;
}
