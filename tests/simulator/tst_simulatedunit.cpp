#include "columns.h"
#include "endpoint.h"
#include "simulatedunit.h"

using namespace simulation;

namespace {

// 2024-05-06 12:30:00
constexpr std::int64_t startMs = 1714998600000;

/// The frame around a unit's part of a TCP message.
QByteArray tcpFrame(const QByteArray& hex)
{
    const QByteArray body = QByteArray::fromHex(hex);
    return "000700000" + QByteArray::number(body.size(), 16).rightJustified(3, '0') + body.toHex();
}

} // namespace

/// Requests and replies as bytes written by hand, so that no encoder of ours vouches for itself.
class TestSimulatedUnit : public QObject
{
    Q_OBJECT

private slots:
    void tcp_data()
    {
        const QByteArray illegalFunction = "01";
        const QByteArray illegalAddress = "02";
        const QByteArray illegalValue = "03";
        // From the unit's number on; an empty reply is silence.
        const auto row = columns<QByteArray, QByteArray>("request", "reply");
        row("reads a setting", "0503001100 01", "05030200 28");
        row("reads reserved inputs", "0504007000 02", "050404000000 00");
        row("reads the clock", "0503006700 03", "0503060018000500 06");
        row("reads past the end", "050300A300 02", "0583" + illegalAddress);
        row("reads too much", "0504000000 7E", "0584" + illegalValue);
        row("command register is write-only", "0503100000 02", "0583" + illegalAddress);
        row("coils", "0501000000 01", "0581" + illegalFunction);
        row("function with a body of its own", "052B0E010 0", "05AB" + illegalFunction);
        row("request too long", "0503001100 0100", "0583" + illegalValue);
        row("request too short", "05030011", "0583" + illegalValue);
        row("another unit", "0603001100 01", "");
        row("unit 0 is nobody", "0003001100 01", "");

        row("option not offered", "0506000000 03", "0586" + illegalValue);
        row("below range", "0506001100 0F", "0586" + illegalValue);
        row("above range", "0506001100 B5", "0586" + illegalValue);
        row("charge current between options", "0506001701 2C01", "0586" + illegalValue);
        row("reserved", "0506000900 00", "0586" + illegalAddress);
        row("unknown", "050600A400 00", "0586" + illegalAddress);
        row("control character in a text", "0506005700 0A", "0586" + illegalValue);
        row("byte count does not fit", "0510001100020200 20", "0590" + illegalValue);
        row("second of two out of range", "051000110002040020 0000", "0590" + illegalValue);
        row("half a date", "0510006700 03060018000500 06", "0590" + illegalAddress);
        row("no such day", "0510006700060C00180002001E000C001E0000", "0590" + illegalValue);
        row("single date field", "0506006700 18", "0586" + illegalAddress);

        row("command with an argument", "05061000000A", "05061000000A");
        row("buzzer", "05061011FFFF", "05061011FFFF");
        row("unknown command", "05061005FFFF", "0586" + illegalValue);
        row("command by function 16", "05101011000102FFFF", "0590" + illegalAddress);
        row("behind the commands", "05061020FFFF", "0586" + illegalAddress);
    }
    void tcp()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, reply);
        SimulatedUnit unit({5, "Test"}, startMs, nullptr);
        Endpoint endpoint(Framing::Tcp, unit);
        const QByteArray settings = tcpFrame("050300000057");
        const QByteArray before = ask(endpoint, settings);
        QCOMPARE(ask(endpoint, tcpFrame(request)), reply.isEmpty() ? QByteArray() : tcpFrame(reply));
        // Nothing of a refused write has landed, and what was left of a bad request does not spoil the next.
        QCOMPARE(ask(endpoint, settings), before);
    }

    void commandRefusedForNow()
    {
        SimulatedUnit unit({5, "Test"}, startMs, nullptr);
        Endpoint endpoint(Framing::Tcp, unit);
        const QByteArray shutDown = tcpFrame("05061004FFFF");
        QCOMPARE(ask(endpoint, shutDown), shutDown);
        QCOMPARE(ask(endpoint, tcpFrame("0506100BFFFF")), tcpFrame("058606")); // to the inverter: busy
    }

    void writesReadBack_data()
    {
        const auto row = columns<QByteArray, QByteArray, QByteArray>("write", "read", "reply");
        row("single", "050600110020", "050300110001", "0503020020");
        row("shows in a live value", "050600120064", "0504006D0001", "0504020064");
        row("charge current", "050600170032", "050300170001", "0503020032");
        row("text", "05100057000306004E00C300A4", "050300570004", "050308004E00C300A40064");
        row("clock", "0510006700060C0019000C001F0017003B003B", "050300670006",
            "05030C0019000C001F0017003B003B");
    }
    void writesReadBack()
    {
        QFETCH(QByteArray, write);
        QFETCH(QByteArray, read);
        QFETCH(QByteArray, reply);
        SimulatedUnit unit({5, "Test"}, startMs, nullptr);
        Endpoint endpoint(Framing::Tcp, unit);
        QCOMPARE(ask(endpoint, tcpFrame(write)), tcpFrame(write.left(12)));
        QCOMPARE(ask(endpoint, tcpFrame(read)), tcpFrame(reply));
        unit.advance(100);
        QCOMPARE(ask(endpoint, tcpFrame(read)), tcpFrame(reply));
    }

    void rtu_data()
    {
        const auto row =
            columns<QByteArray, QByteArray>("request", "reply"); // checksums made by another program
        row("read", "0103001100 01D40F", "0103020028b85a");
        row("wrong checksum", "010300110001D50F", "");
        row("noise behind", "010300110001D40FFF", "");
        row("another unit", "020300110001D43C", "");
        row("function with a body of its own", "01080000A537DA8D", "018801 87c0");
        row("too short", "0103", "");
    }
    void rtu()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, reply);
        SimulatedUnit unit({1, "Test"}, startMs, nullptr);
        Endpoint endpoint(Framing::Rtu, unit);
        QCOMPARE(ask(endpoint, request), QByteArray::fromHex(reply).toHex());
        QCOMPARE(ask(endpoint, "010300110001D40F"), QByteArray("0103020028b85a"));
        QCOMPARE(ask(endpoint, "000600110020D9C6"), QByteArray()); // a broadcast lands unanswered
        QCOMPARE(ask(endpoint, "010300110001D40F"), QByteArray("0103020020b99c"));
    }

private:
    static QByteArray ask(Endpoint& endpoint, const QByteArray& requestHex)
    {
        const QByteArray request = QByteArray::fromHex(requestHex);
        const Bytes reply = endpoint.answer(Bytes(request.begin(), request.end()));
        return QByteArray(reinterpret_cast<const char*>(reply.data()), int(reply.size())).toHex();
    }
};

QTEST_APPLESS_MAIN(TestSimulatedUnit)
#include "tst_simulatedunit.moc"
