#include "portaccess.h"
#include "reframing.h"
#include "withcrc.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <climits>
#include <random>

namespace {
QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

unsigned char* raw(QByteArray& bytes)
{
    return reinterpret_cast<unsigned char*>(bytes.data());
}
} // namespace

class TstFrames : public QObject
{
    Q_OBJECT

    QTcpServer m_server;
    QTcpSocket m_socket; // the side of the handle
    std::unique_ptr<QTcpSocket> m_peer;
    PortHandle m_handle{static_cast<QIODevice*>(&m_socket), TcpCommRead, TcpCommWrite};

    void connectLoopback()
    {
        m_socket.abort();
        QVERIFY(m_server.isListening() || m_server.listen(QHostAddress::LocalHost));
        m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), m_server.serverPort());
        QVERIFY(m_socket.waitForConnected(10000));
        QVERIFY(m_server.waitForNewConnection(10000));
        m_peer.reset(m_server.nextPendingConnection());
    }

private slots:
    // Frames and their CRCs as published elsewhere, not made by the code under test.
    void crcVectors()
    {
        for (const char* digits :
             {"01030000000ac5cd", "1103006b00037687", "02074112", "313233343536373839374b"}) {
            QByteArray frame = hex(digits);
            QByteArray built = frame.left(frame.size() - 2) + "??";
            QCOMPARE(setModbusCRC(raw(built), built.size()), 0);
            QCOMPARE(built, frame);
            QCOMPARE(checkModbufCRC(raw(frame), frame.size()), 0);
            std::swap(*(frame.end() - 1), *(frame.end() - 2));
            QCOMPARE(checkModbufCRC(raw(frame), frame.size()), -1);
        }
        QByteArray small = hex("02071122");
        for (const int length : {3, 0, INT_MIN})
            QVERIFY(setModbusCRC(raw(small), length) == -1 && checkModbufCRC(raw(small), length) == -1);
        QVERIFY(setModbusCRC(nullptr, 8) == -1 && checkModbufCRC(nullptr, 8) == -1);
        QCOMPARE(small, hex("02071122"));
    }

    void randomFrames()
    {
        std::mt19937 random(20);
        const auto bytes = [&](int count) {
            QByteArray result(count, '\0');
            std::generate(result.begin(), result.end(), [&] { return static_cast<char>(random()); });
            return result;
        };
        for (int round = 0; round < 2000; ++round) {
            const QByteArray body = bytes(static_cast<int>(2 + random() % 993));
            QByteArray frame = body + "??";
            QCOMPARE(setModbusCRC(raw(frame), frame.size()), 0);
            QCOMPARE(frame, withCrc(body));

            QByteArray tcp(reframing::BufferBytes, 'x');
            QCOMPARE(reframing::rtuToTcp(raw(frame), frame.size(), raw(tcp)), frame.size() + 4);
            QCOMPARE(tcp.left(6), QByteArray(5, '\0').append(static_cast<char>(body.size())));
            QCOMPARE(tcp.mid(6, body.size()), body);
            tcp.replace(0, 6, bytes(6)); // a unit may answer with any header
            QCOMPARE(reframing::tcpToRtu(raw(tcp), frame.size() + 4), frame.size());
            QCOMPARE(tcp.left(frame.size()), frame);
        }
    }

    void requests()
    {
        // Address, function, start, count; the frame without its CRC; the length of the reply.
        const std::tuple<int, int, int, int, const char*, int> rows[] = {
            {1, 1, 0, 16, "010100000010", 0},
            {1, 2, 0x1234, 16, "010212340010", 7},
            {1, 2, 0, 10, "01020000000a", 6},
            {1, 2, 0, -9, "01020000fff7", 4},
            {1, 3, 0, 10, "01030000000a", 25},
            {1, 3, 0, INT_MAX, "01030000ffff", 3},
            {0x1F7, 4, 0x54321, 125, "f7044321007d", 255},
            {1, 5, 3, 0xFF00, "01050003ff00", 0},
            {1, 6, 3, -1, "01060003ffff", 8},
            {1, 16, 3, 2, "011000030002", 0},
        };
        for (const auto& [address, function, start, count, frame, replyBytes] : rows) {
            QByteArray built(9, 'x');
            QCOMPARE(buildCmd(raw(built), address, function, start, count), replyBytes);
            QCOMPARE(built, withCrc(hex(frame)) + 'x');
        }
    }

    void writeRequestsAndValues()
    {
        const unsigned char data[] = {0xAB, 0xCD, 0x12, 0x34};
        // Registers, supplied ones, their data; the result; the frame without its CRC.
        const std::tuple<int, int, const unsigned char*, int, const char*> rows[] = {
            {2, 2, data, 13, "01100102000204ABCD1234"},
            {2, 1, data, 13, "01100102000204ABCD0000"},
            {1, 5, data, 11, "01100102000102ABCD"},
            {1, 0, nullptr, 11, "011001020001020000"},
            {0, 0, nullptr, 9, "01100102000000"},
            {-3, 0, data, -1, ""},
            {INT_MIN, 0, data, -1, ""},
            {INT_MAX, 0, data, -1, ""},
            {1, 1, nullptr, -1, ""},
        };
        for (const auto& [count, supplied, values, result, frame] : rows) {
            QByteArray built(14, 'x');
            QCOMPARE(buildCmd16(raw(built), 1, 0x0102, count, supplied, values), result);
            QVERIFY(result < 0 || built == withCrc(hex(frame)).leftJustified(14, 'x'));
        }
        QByteArray buffer(9, 'x');
        QCOMPARE(mod_Set_SetBuf(raw(buffer), 1, 0x0203, 0x10405), 0);
        QCOMPARE(buffer, withCrc(hex("010602030405")) + 'x');
        QVERIFY(buildCmd16(nullptr, 1, 0, 1, 0, data) == -1 && buildCmd(nullptr, 1, 3, 0, 1) == -1);
        QCOMPARE(mod_Set_SetBuf(nullptr, 1, 0, 1), -1);

        QCOMPARE(UINT8_2_to_UINT16(data), static_cast<unsigned short>(0xABCD));
        QCOMPARE(UINT8_4_to_UINT32(data), 0xABCD1234U);
        char text[] = "  \tab ";
        QVERIFY(FiltSpace(text) == text + 2 && FiltSpace(text + 2) == text + 2);
    }

    void tcpRequest()
    {
        connectLoopback();
        QByteArray frame = hex("01030000000ac5cd");
        QCOMPARE(TcpCommWrite(&m_handle, frame.data(), frame.size()), 8);
        QByteArray longest(997, 'q');
        for (const int refused : {997, INT_MAX, -1, INT_MIN})
            QCOMPARE(TcpCommWrite(&m_handle, longest.data(), refused), -1);
        QCOMPARE(TcpCommWrite(&m_handle, longest.data(), 996), 996);
        QTRY_COMPARE(m_peer->bytesAvailable(), 1012LL);
        QCOMPARE(m_peer->read(12), hex("00000000000601030000000a"));
        QCOMPARE(m_peer->read(1000), hex("0000000000e2") + QByteArray(994, 'q'));
    }

    void tcpAnswers()
    {
        const QByteArray whole = hex("00000000000701030400010002");
        // What comes, the frame made of it; null: no answer.
        const std::pair<QByteArray, QByteArray> rows[] = {
            {whole, withCrc(whole.mid(6))},
            {hex("123456789abc") + whole.mid(6), withCrc(whole.mid(6))}, // any header will do
            {whole.left(10), withCrc(whole.mid(6, 4))},                  // the first of two pieces
            {whole.left(7), hex("010000")},                              // no CRC where there is no function
            {whole.left(6), {}},
            {{}, {}}, // silence for a second
            {QByteArray(1500, 'f'), withCrc(QByteArray(994, 'f'))},
        };
        for (const auto& [sent, frame] : rows) {
            connectLoopback();
            m_peer->write(sent);
            m_peer->flush();
            QByteArray buffer(1000, 'x');
            QCOMPARE(TcpCommRead(&m_handle, buffer.data(), 1), frame.isNull() ? -5 : frame.size());
            QCOMPARE(buffer, frame.leftJustified(1000, 'x'));
        }
        char buffer[1000] = {};
        connectLoopback();
        m_peer->abort();
        QCOMPARE(TcpCommRead(&m_handle, buffer, 1000), -5);
        m_socket.abort();
        PortHandle none;
        for (PortHandle* dead : {&m_handle, &none, static_cast<PortHandle*>(nullptr)})
            QVERIFY(TcpCommRead(dead, buffer, 1000) == -5 && TcpCommWrite(dead, buffer, 8) == -1);
    }
};

QTEST_GUILESS_MAIN(TstFrames)
#include "tst_frames.moc"
