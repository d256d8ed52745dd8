#include "portaccess.h"
#include "reframing.h"

#include <QRandomGenerator>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <climits>

namespace {
// The CRC by bits, straight from its definition.
QByteArray bitwiseCrc(const QByteArray& bytes)
{
    unsigned crc = 0xFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? (crc >> 1) ^ 0xA001 : crc >> 1;
    }
    QByteArray result;
    result.append(static_cast<char>(crc & 0xFF));
    result.append(static_cast<char>(crc >> 8));
    return result;
}

QByteArray randomBytes(QRandomGenerator& random, int count)
{
    QByteArray bytes(count, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random.bounded(256));
    return bytes;
}

unsigned char* raw(QByteArray& bytes)
{
    return reinterpret_cast<unsigned char*>(bytes.data());
}
} // namespace

class TstFrames : public QObject
{
    Q_OBJECT

private slots:
    void crcVector_data();
    void crcVector();
    void crcLengths();
    void randomFrames();
    void request_data();
    void request();
    void writeRequests();
    void bytesAndTexts();
    void tcpRequest();
    void tcpAnswer_data();
    void tcpAnswer();
    void tcpWithoutConnection();

private:
    // A connection over the loopback; m_socket is the unit's side of the handle, m_peer the far end.
    void connectLoopback();

    QTcpServer m_server;
    QTcpSocket m_socket;
    std::unique_ptr<QTcpSocket> m_peer;
    PortHandle m_handle{static_cast<QIODevice*>(&m_socket), TcpCommRead, TcpCommWrite};
};

void TstFrames::connectLoopback()
{
    m_peer.reset();
    m_socket.abort();
    QVERIFY(m_server.isListening() || m_server.listen(QHostAddress::LocalHost));
    m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), m_server.serverPort());
    QVERIFY(m_socket.waitForConnected(10000));
    QVERIFY(m_server.hasPendingConnections() || m_server.waitForNewConnection(10000));
    m_peer.reset(m_server.nextPendingConnection());
    m_peer->setParent(nullptr);
}

// Frames and their CRCs as published elsewhere, not made by the code under test.
void TstFrames::crcVector_data()
{
    QTest::addColumn<QByteArray>("frame");
    for (const char* hex : {"01030000000ac5cd", "1103006b00037687",
                            "0207"
                            "4112",
                            "313233343536373839374b"})
        QTest::newRow(hex) << QByteArray::fromHex(hex);
}

void TstFrames::crcVector()
{
    QFETCH(QByteArray, frame);
    QByteArray built = frame;
    built.replace(frame.size() - 2, 2, "??");
    QCOMPARE(setModbusCRC(raw(built), built.size()), 0);
    QCOMPARE(built, frame);
    QCOMPARE(checkModbufCRC(raw(frame), frame.size()), 0);
    std::swap(*(frame.end() - 1), *(frame.end() - 2));
    QCOMPARE(checkModbufCRC(raw(frame), frame.size()), -1);
}

void TstFrames::crcLengths()
{
    QByteArray frame = QByteArray::fromHex("02071122");
    for (const int length : {3, 0, -1, INT_MIN}) {
        QCOMPARE(setModbusCRC(raw(frame), length), -1);
        QCOMPARE(checkModbufCRC(raw(frame), length), -1);
    }
    QCOMPARE(setModbusCRC(nullptr, 8), -1);
    QCOMPARE(checkModbufCRC(nullptr, 8), -1);
    QCOMPARE(frame, QByteArray::fromHex("02071122"));
}

void TstFrames::randomFrames()
{
    QRandomGenerator random(20);
    for (int round = 0; round < 2000; ++round) {
        const QByteArray body = randomBytes(random, random.bounded(2, 995));
        QByteArray frame = body + "??";
        QCOMPARE(setModbusCRC(raw(frame), frame.size()), 0);
        QCOMPARE(frame, QByteArray(body + bitwiseCrc(body)));

        QByteArray tcp(reframing::BufferBytes, 'x');
        const int sent = reframing::rtuToTcp(raw(frame), frame.size(), raw(tcp));
        QCOMPARE(sent, frame.size() + 4);
        QCOMPARE(tcp.left(5), QByteArray(5, '\0'));
        QCOMPARE(int(static_cast<unsigned char>(tcp.at(5))), body.size() & 0xFF);
        QCOMPARE(tcp.mid(6, body.size()), body);
        tcp.replace(0, 6, randomBytes(random, 6)); // a unit may answer with any header
        QCOMPARE(reframing::tcpToRtu(raw(tcp), sent), frame.size());
        QCOMPARE(tcp.left(frame.size()), frame);
    }
}

void TstFrames::request_data()
{
    QTest::addColumn<QList<int>>("fields"); // address, function, start, count
    QTest::addColumn<QByteArray>("frame");  // without the CRC
    QTest::addColumn<int>("replyBytes");
    const auto row = [](const char* name, QList<int> fields, const char* hex, int replyBytes) {
        QTest::newRow(name) << fields << QByteArray::fromHex(hex) << replyBytes;
    };
    row("1 draws 0", {1, 1, 0, 16}, "010100000010", 0);
    row("2, whole bytes", {1, 2, 0x1234, 16}, "010212340010", 7);
    row("2, one byte short", {1, 2, 0, 10}, "01020000000a", 6);
    row("2, negative", {1, 2, 0, -9}, "01020000fff7", 4);
    row("3", {1, 3, 0, 10}, "01030000000a", 25);
    row("3, largest count", {1, 3, 0, INT_MAX}, "01030000ffff", 3);
    row("4, cut to 16 bits", {0x1F7, 4, 0x54321, 125}, "f7044321007d", 255);
    row("5", {1, 5, 3, 0xFF00}, "01050003ff00", 0);
    row("6", {1, 6, 3, -1}, "01060003ffff", 8);
    row("16", {1, 16, 3, 2}, "011000030002", 0);
}

void TstFrames::request()
{
    QFETCH(QList<int>, fields);
    QFETCH(QByteArray, frame);
    QByteArray built(9, 'x');
    QTEST(buildCmd(raw(built), fields.at(0), fields.at(1), fields.at(2), fields.at(3)), "replyBytes");
    QCOMPARE(built, QByteArray(frame + bitwiseCrc(frame) + "x"));
}

void TstFrames::writeRequests()
{
    QByteArray buffer(32, 'x');
    const QByteArray data = QByteArray::fromHex("ABCD1234");
    const auto withCrc = [](const char* hex) {
        const QByteArray bytes = QByteArray::fromHex(hex);
        return QByteArray(bytes + bitwiseCrc(bytes) + "x");
    };
    const auto write = [&](int count, int supplied, const QByteArray& values) {
        buffer.fill('x');
        return buildCmd16(raw(buffer), 1, 0x0102, count, supplied,
                          values.isNull() ? nullptr
                                          : reinterpret_cast<const unsigned char*>(values.constData()));
    };
    QCOMPARE(write(2, 2, data), 13);
    QCOMPARE(buffer.left(14), withCrc("01100102000204ABCD1234"));
    QCOMPARE(write(2, 1, data), 13);
    QCOMPARE(buffer.left(14), withCrc("01100102000204ABCD0000"));
    QCOMPARE(write(1, 5, data), 11);
    QCOMPARE(buffer.left(12), withCrc("01100102000102ABCD"));
    QCOMPARE(write(1, 0, {}), 11);
    QCOMPARE(buffer.left(12), withCrc("011001020001020000"));
    QCOMPARE(write(0, 0, {}), 9);
    QCOMPARE(buffer.left(10), withCrc("01100102000000"));
    QCOMPARE(write(-2, 0, {}), 5);
    for (const int count : {-3, INT_MIN, INT_MAX})
        QCOMPARE(write(count, 0, {}), -1);
    QCOMPARE(write(1, 1, {}), -1);
    QCOMPARE(buildCmd16(nullptr, 1, 0, 1, 0, nullptr), -1);
    QCOMPARE(buildCmd(nullptr, 1, 3, 0, 1), -1);
    QCOMPARE(mod_Set_SetBuf(nullptr, 1, 0, 1), -1);

    buffer.fill('x');
    QCOMPARE(mod_Set_SetBuf(raw(buffer), 1, 0x0203, 0x10405), 0);
    QCOMPARE(buffer.left(9), withCrc("010602030405"));
}

void TstFrames::bytesAndTexts()
{
    const unsigned char bytes[] = {0xFE, 0xDC, 0xBA, 0x98};
    QCOMPARE(UINT8_2_to_UINT16(bytes), static_cast<unsigned short>(0xFEDC));
    QCOMPARE(UINT8_4_to_UINT32(bytes), 0xFEDCBA98U);
    char text[] = "  ab ";
    QCOMPARE(FiltSpace(text), text + 2);
    char tab[] = "\t a";
    QCOMPARE(FiltSpace(tab), tab);
    char blanks[] = "  ";
    QCOMPARE(FiltSpace(blanks), blanks + 2);
    QVERIFY(!FiltSpace(nullptr));
}

void TstFrames::tcpRequest()
{
    connectLoopback();
    QByteArray frame = QByteArray::fromHex("01030000000ac5cd");
    QCOMPARE(TcpCommWrite(&m_handle, frame.data(), frame.size()), 8);
    QByteArray longest(996, 'q');
    QCOMPARE(TcpCommWrite(&m_handle, longest.data(), 996), 996);
    QByteArray tooLong(2000, 'q');
    for (const int length : {997, 2000, INT_MAX, -1, INT_MIN})
        QCOMPARE(TcpCommWrite(&m_handle, tooLong.data(), length), -1);
    QTRY_VERIFY(m_peer->waitForReadyRead(10) || m_peer->bytesAvailable() >= 1012);
    QTRY_COMPARE(m_peer->bytesAvailable(), 1012LL);
    QCOMPARE(m_peer->read(12), QByteArray::fromHex("00000000000601030000000a"));
    QCOMPARE(m_peer->read(1000), QByteArray(QByteArray::fromHex("0000000000e2") + QByteArray(994, 'q')));
}

void TstFrames::tcpAnswer_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("body"); // of the frame: what stands before its CRC
    const auto row = [](const char* name, const QByteArray& sent, int result, const QByteArray& body) {
        QTest::newRow(name) << sent << result << body;
    };
    const QByteArray answer = QByteArray::fromHex("00000000000701030400010002");
    row("whole", answer, 9, answer.mid(6));
    row("other ids", QByteArray::fromHex("123456789abc01030400010002"), 9, answer.mid(6));
    row("first piece", answer.left(10), 6, answer.mid(6, 4));
    row("8 bytes", answer.left(8), 4, answer.mid(6, 2));
    row("6 bytes", answer.left(6), -5, {});
    row("nothing for a second", {}, -5, {});
    const QByteArray flood(1500, 'f');
    row("more than fits", flood, 996, flood.left(994));
}

void TstFrames::tcpAnswer()
{
    QFETCH(QByteArray, sent);
    QFETCH(int, result);
    QFETCH(QByteArray, body);
    connectLoopback();
    m_peer->write(sent);
    m_peer->flush();
    QByteArray buffer(1000, 'x');
    QCOMPARE(TcpCommRead(&m_handle, buffer.data(), 1), result);
    QCOMPARE(buffer,
             QByteArray(result > 0 ? body + bitwiseCrc(body) : QByteArray()).leftJustified(1000, 'x'));
}

void TstFrames::tcpWithoutConnection()
{
    connectLoopback();
    QByteArray buffer(1000, 'x');
    // A lone header is no frame, yet passed on: the unit id and two zeros.
    m_peer->write(QByteArray::fromHex("00000000000111"));
    m_peer->flush();
    QCOMPARE(TcpCommRead(&m_handle, buffer.data(), 1000), 3);
    QCOMPARE(buffer.left(4), QByteArray::fromHex("11000078"));

    m_peer.reset();
    QCOMPARE(TcpCommRead(&m_handle, buffer.data(), 1000), -5);
    m_socket.abort();
    QCOMPARE(TcpCommRead(&m_handle, buffer.data(), 1000), -5);
    QCOMPARE(TcpCommWrite(&m_handle, buffer.data(), 8), -1);
    PortHandle none{};
    QCOMPARE(TcpCommRead(&none, buffer.data(), 1000), -5);
    QCOMPARE(TcpCommWrite(&none, buffer.data(), 8), -1);
    QCOMPARE(TcpCommRead(nullptr, buffer.data(), 1000), -5);
    QCOMPARE(TcpCommWrite(&m_handle, nullptr, 8), -1);
    QCOMPARE(CommOpen(), 0);
}

QTEST_GUILESS_MAIN(TstFrames)
#include "tst_frames.moc"
