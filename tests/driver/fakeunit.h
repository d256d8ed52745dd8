#pragma once

#include "porthandle.h"
#include "withcrc.h"

#include <QByteArrayList>

#include <cstring>
#include <functional>

/// A unit behind a port handle, in memory. Silence takes no time here.
struct FakeUnit : PortHandle
{
    enum class Line
    {
        Serial,   ///< a read returns what was asked for, or what there is
        ByteWise, ///< a read returns one byte
        Tcp       ///< a read returns one whole frame with a fresh CRC, whatever was asked for
    };

    Line line = Line::Serial;
    /// What stands in a register or input of the unit.
    std::function<quint16(int function, int reg)> registers = [](int, int) { return 0; };
    /// Its good reply to a request.
    std::function<QByteArray(const QByteArray& request)> answer = [this](const QByteArray& request) {
        return withCrc(request[1] < 6 ? dataFor(request) : request.left(6));
    };
    /// What the unit sends instead of its good reply; nothing is silence.
    std::function<QByteArrayList(const QByteArray& good)> fault;
    /// Replaces the read entry.
    std::function<int(char* buffer, int length)> reader = [this](char* b, int n) { return read(b, n); };
    QByteArrayList requests;
    QByteArrayList pending; ///< sent and not yet read

    explicit FakeUnit(Line how)
        : PortHandle{this,
                     [](PortHandle* h, char* b, int n) { return static_cast<FakeUnit*>(h)->reader(b, n); },
                     [](PortHandle* h, char* b, int n) {
                         return static_cast<FakeUnit*>(h)->write({b, n});
                     }}
        , line(how)
    {}

    int write(const QByteArray& request)
    {
        requests += request;
        const QByteArray good = answer(request);
        pending += fault ? fault(good) : QByteArrayList{good};
        return request.size();
    }

    QByteArray dataFor(const QByteArray& request) const
    {
        const auto word = [&](int at) { return quint8(request[at]) << 8 | quint8(request[at + 1]); };
        QByteArray bits((word(4) + 7) / 8, '\0');
        QByteArray words;
        for (int i = 0; i < word(4); ++i) {
            const quint16 raw = registers(request[1], word(2) + i);
            words.append(char(raw >> 8)).append(char(raw & 0xFF));
            bits.data()[i / 8] |= char((raw & 1) << i % 8);
        }
        const QByteArray data = request[1] == 2 ? bits : words;
        return request.left(2) + char(data.size()) + data;
    }

    int read(char* buffer, int length)
    {
        if (line == Line::Tcp && pending.isEmpty())
            return -5;
        QByteArray got = line == Line::Tcp ? pending.takeFirst() : pending.join();
        if (line == Line::Tcp) {
            got = withCrc(got.left(got.size() - 2));
        } else {
            pending = QByteArrayList{got.mid(line == Line::Serial ? length : 1)};
            got.truncate(line == Line::Serial ? length : 1);
        }
        std::memcpy(buffer, got.constData(), size_t(got.size()));
        return got.size();
    }
};
