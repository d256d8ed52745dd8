#pragma once

#include <QByteArray>
#include <QVector>

/// One request and what came back for it.
struct Exchange
{
    QByteArray request; ///< a Modbus RTU frame, as the driver wrote it
    QByteArray answer;  ///< all bytes that came until the next request; empty for silence
    qint64 tookMs = 0;  ///< from the request to the last byte, or to the end of waiting
};

using Exchanges = QVector<Exchange>;
