#pragma once

#include <QByteArray>

/// A frame with its checksum bit by bit: not by the tables that the code under test uses.
inline QByteArray withCrc(QByteArray frame)
{
    quint16 crc = 0xFFFF;
    for (char c : frame) {
        crc ^= quint8(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
    }
    return frame.append(char(crc & 0xFF)).append(char(crc >> 8));
}
