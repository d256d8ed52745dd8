#include "lineformat.h"
#include "portaccess.h"
#include "serialport.h"
#include "testline.h"

#include <QTemporaryDir>

#include <future>

class TstSerialPort : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void slotsAreTheContract();
    void settingsText_data();
    void settingsText();
    void opening();
    void speed_data();
    void speed();
    void formatRule_data();
    void formatRule();
    void spaceParityDoesNotClimb();
    void timeout_data();
    void timeout();
    void bytesPassUnchanged();
    void readEndsOnCountOrSilence();
    void lineVanishes();
    void notALine_data();
    void notALine();
    void logLines();
    void logRotation();
    void unLockTakesAFreeLock();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TestLine> m_line;
};

void TstSerialPort::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir::setCurrent(m_dir->path()));
    m_line = std::make_unique<TestLine>();
}

void TstSerialPort::cleanup()
{
    m_line.reset();
}

void TstSerialPort::slotsAreTheContract()
{
    const QMetaObject& meta = SerialPort::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 23);
    for (const char* method :
         {"readData(char*,qint64)", "writeData(const char*,qint64)", "init()", "setDtr()", "setRts()",
          "setDtr(bool)", "lineStatus()", "getPortName()", "getPortSettings()"})
        QVERIFY2(meta.indexOfMethod(method) >= meta.methodOffset(), method);
}

void TstSerialPort::settingsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("problem"); // the debug line; empty when good
    QTest::addColumn<QList<int>>("stored");
    const auto row = [](const char* text, const char* problem, QList<int> stored = {}) {
        QTest::newRow(*text ? text : "empty")
            << QString::fromLatin1(text) << QString::fromLatin1(problem) << stored;
    };
    row("", "CommOpen    serial settings is null");
    row("9600", "CommOpen    error settings 9600");
    row("9600,n,8", "CommOpen    error settings 9600,n,8");
    row("12#3#0", "CommOpen    error settings 12#3#0");
    row("9600,x,8,1", "parity error!");
    row("9600,no,8,1", "parity error!");
    row("9600,,8,1", "parity error!");
    row("9600,n,9,1", "dataBits error!");
    row("9600,n,80,1", "dataBits error!");
    row("9600,n,,1", "dataBits error!");
    row("9600,n,8,3", "stopBits error!");
    row("9600,n,8,1.5", "stopBits error!");
    row("9600,n,8,1", "", {Baud9600, DataBits8, ParityNone, StopBits1});
    row("115200,E,7,2,more", "", {Baud115200, DataBits7, ParityEven, StopBits2});
    row("12345,o,5,1", "", {Baud50, DataBits5, ParityOdd, StopBits1});
    row("word,N,6,1", "", {Baud50, DataBits6, ParityNone, StopBits1});
    row("9600,m,8,1", "", {Baud9600, DataBits8, ParityMark, StopBits1});
    row("12#3#0#0", "", {Baud9600, DataBits8, ParityNone, StopBits1});
    row("19#2#2#1#7", "", {Baud115200, DataBits7, ParityEven, StopBits2});
    row("99#-4#77#8", "", {99, -4, 77, 8});
}

void TstSerialPort::settingsText()
{
    QFETCH(QString, text);
    QFETCH(QString, problem);
    QFETCH(QList<int>, stored);
    Messages messages;
    SerialPort port;
    QCOMPARE(port.CommOpen(TestLine::name(), text, 1000), problem.isEmpty());
    QCOMPARE(port.isOpen(), problem.isEmpty());
    QCOMPARE(port.getPortSettings(), text);
    if (!problem.isEmpty()) {
        QCOMPARE(messages.taken(), QStringList(QString(QLatin1String("D: ") + problem)));
        QVERIFY(!port.ReOpen()); // the callers' next step, with no file there yet
        return;
    }
    const PortSettings now = port.settingsInForce();
    QCOMPARE(QList<int>({now.BaudRate, now.DataBits, now.Parity, now.StopBits}), stored);
}

void TstSerialPort::opening()
{
    Messages messages;
    SerialPort port;
    QVERIFY(port.CommOpen(TestLine::name(), QStringLiteral("19200,n,8,2"), 1200));
    QCOMPARE(messages.taken(), QStringList(QStringLiteral(
                                   "D: [CommOpen]    打开标准串口line Setting=19200,n,8,2 TimeOut=1200\n")));
    QCOMPARE(port.objectName(), QStringLiteral("serial"));
    QVERIFY(port.isSequential());
    const termios now = m_line->attributes();
    QVERIFY(now.c_cflag & CSTOPB);
    QCOMPARE(now.c_lflag & (ICANON | ECHO | ISIG), 0U);
    QCOMPARE(now.c_iflag & (IXON | IXOFF | ICRNL), 0U);

    // A setter holds for the next open as well.
    port.setBaudRate(Baud4800);
    QCOMPARE(m_line->speed(), B4800);
    QVERIFY(port.ReOpen());
    QCOMPARE(m_line->speed(), B4800);
}

void TstSerialPort::speed_data()
{
    QTest::addColumn<QString>("baud");
    QTest::addColumn<int>("onLine");
    QTest::addColumn<int>("inForce");
    QTest::addColumn<QStringList>("warnings");
    const auto row = [](const char* baud, speed_t onLine, int inForce, const QStringList& warnings = {}) {
        QTest::newRow(baud) << QString::fromLatin1(baud) << int(onLine) << inForce << warnings;
    };
    const QString portability = QStringLiteral("W: Posix_QextSerialPort Portability Warning: Windows ");
    const QString own = QStringLiteral("W: Posix_QextSerialPort: ");
    row("110", B110, Baud110);
    row("134", B134, Baud134, {portability + QLatin1String("does not support 134.5 baud operation.")});
    row("1800", B1800, Baud1800,
        {portability + QLatin1String("and IRIX do not support 1800 baud operation.")});
    row("14400", B9600, Baud9600,
        {own + QLatin1String("POSIX does not support 14400 baud operation.  Switching to 9600 baud.")});
    row("57600", B57600, Baud57600);
    row("76800", B57600, Baud57600,
        {portability + QLatin1String("and some POSIX systems do not support 76800 baud operation."),
         own + QLatin1String(
                   "Posix_QextSerialPort was compiled without 76800 baud support.  Switching to 57600 "
                   "baud.")});
    row("256000", B115200, Baud115200,
        {own + QLatin1String("POSIX does not support 256000 baud operation.  Switching to 115200 baud.")});
    row("56000", B19200, Baud56000); // the line keeps what it had
}

void TstSerialPort::speed()
{
    QFETCH(QString, baud);
    QFETCH(QStringList, warnings);
    SerialPort port;
    QVERIFY(port.CommOpen(TestLine::name(), QStringLiteral("19200,n,8,1"), 0));
    Messages messages;
    QVERIFY(port.CommOpen(TestLine::name(), baud + QLatin1String(",n,8,1"), 0));
    QTEST(int(m_line->speed()), "onLine");
    QTEST(int(port.settingsInForce().BaudRate), "inForce");
    QStringList heard = messages.taken().filter(QLatin1String("W: "));
    heard.removeDuplicates(); // once by the open, once by the settings applied after it
    QCOMPARE(heard, warnings);
}

void TstSerialPort::formatRule_data()
{
    QTest::addColumn<QString>("start");
    QTest::addColumn<int>("dataBits"); // the setting that is tried; -1 none
    QTest::addColumn<int>("parity");
    QTest::addColumn<int>("stopBits");
    QTest::addColumn<QString>("warning"); // empty: taken
    const auto row = [](const char* start, int dataBits, int parity, int stopBits, const char* warning) {
        QTest::addRow("%s to %d %d %d", start, dataBits, parity, stopBits)
            << QString::fromLatin1(start) << dataBits << parity << stopBits << QString::fromLatin1(warning);
    };
    const char* const space =
        "Posix_QextSerialPort:  Space parity is only supported in POSIX with 7 or fewer data bits";
    row("12#1#0#1", DataBits5, -1, -1, "Posix_QextSerialPort: 5 Data bits cannot be used with 2 stop bits.");
    row("12#0#0#2", DataBits7, -1, -1,
        "Posix_QextSerialPort: 7 Data bits cannot be used with 1.5 stop bits.");
    row("12#2#3#0", DataBits8, -1, -1, space);
    row("12#3#0#0", -1, ParitySpace, -1, space);
    row("12#3#0#0", -1, ParityMark, -1, "Posix_QextSerialPort: Mark parity is not supported by POSIX.");
    row("12#0#0#0", -1, -1, StopBits2, "Posix_QextSerialPort: 2 stop bits cannot be used with 5 data bits");
    row("12#0#0#0", -1, -1, StopBits1_5,
        "Posix_QextSerialPort: 1.5 stop bit operation is not supported by POSIX.");
    row("12#1#0#0", -1, ParityOdd, -1, "");
    row("12#3#0#0", -1, -1, StopBits2, "");
}

void TstSerialPort::formatRule()
{
    QFETCH(QString, start);
    QFETCH(int, dataBits);
    QFETCH(int, parity);
    QFETCH(int, stopBits);
    QFETCH(QString, warning);
    SerialPort port;
    QVERIFY(port.CommOpen(TestLine::name(), start, 0));
    for (const bool open : {true, false}) {
        if (!open)
            port.close();
        const PortSettings before = port.settingsInForce();
        Messages messages;
        if (dataBits >= 0)
            port.setDataBits(static_cast<DataBitsType>(dataBits));
        if (parity >= 0)
            port.setParity(static_cast<ParityType>(parity));
        if (stopBits >= 0)
            port.setStopBits(static_cast<StopBitsType>(stopBits));
        const bool silent = warning.isEmpty() || !open;
        QCOMPARE(messages.taken(),
                 silent ? QStringList() : QStringList(QString(QLatin1String("W: ") + warning)));
        const PortSettings now = port.settingsInForce();
        QCOMPARE(int(now.DataBits), int(before.DataBits));
        QCOMPARE(int(now.Parity), warning.isEmpty() && parity >= 0 ? parity : int(before.Parity));
        QCOMPARE(int(now.StopBits), warning.isEmpty() && stopBits >= 0 ? stopBits : int(before.StopBits));
    }
}

void TstSerialPort::spaceParityDoesNotClimb()
{
    SerialPort port;
    QVERIFY(port.CommOpen(TestLine::name(), QStringLiteral("9600,s,6,1"), 0));
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(int(port.settingsInForce().DataBits), int(DataBits7));
        QCOMPARE(int(port.settingsInForce().Parity), int(ParitySpace));
        QVERIFY(port.ReOpen());
    }
    // A pseudo-terminal has 8 bits whatever it is asked for, so the attributes are looked at before they get
    // there.
    PortSettings settings;
    settings.DataBits = DataBits6;
    termios attributes = {};
    QVERIFY(lineformat::setParity(settings, attributes, ParitySpace).taken);
    QCOMPARE(attributes.c_cflag & (CSIZE | PARENB), tcflag_t{CS7});
    QVERIFY(lineformat::setParity(settings, attributes, ParityOdd).taken);
    QCOMPARE(attributes.c_cflag & (CSIZE | PARENB | PARODD), tcflag_t{CS7 | PARENB | PARODD});
}

void TstSerialPort::timeout_data()
{
    QTest::addColumn<int>("timeoutMs");
    QTest::addColumn<int>("tenths");
    const int cases[][2] = {{1000, 10}, {199, 1}, {99, 0}, {0, 0}, {-700, 0}, {25500, 255}, {60000, 255}};
    for (const auto& values : cases)
        QTest::addRow("%d ms", values[0]) << values[0] << values[1];
}

void TstSerialPort::timeout()
{
    QFETCH(int, timeoutMs);
    SerialPort port;
    QVERIFY(port.CommOpen(TestLine::name(), QStringLiteral("9600,n,8,1"), timeoutMs));
    QTEST(int(m_line->attributes().c_cc[VTIME]), "tenths");
    port.setTimeout(300);
    QCOMPARE(int(m_line->attributes().c_cc[VTIME]), 3);
    QCOMPARE(int(m_line->attributes().c_cc[VMIN]), 0);
}

void TstSerialPort::bytesPassUnchanged()
{
    QByteArray all;
    for (int i = 0; i < 256; ++i)
        all.append(static_cast<char>(i));
    SerialPort port;
    QVERIFY(port.CommOpen(TestLine::name(), QStringLiteral("9600,n,8,1"), 1000));
    PortHandle handle{static_cast<QIODevice*>(&port), CommRead, CommWrite};
    QCOMPARE(handle.writeEntry(&handle, all.data(), 256), 256);
    QCOMPARE(m_line->receive(256), all);
    QVERIFY(m_line->send(all));
    QByteArray got(256, 'x');
    QCOMPARE(handle.readEntry(&handle, got.data(), 256), 256);
    QCOMPARE(got, all);
    port.close();
    QCOMPARE(CommRead(&handle, got.data(), 1), -1);
    QCOMPARE(CommWrite(&handle, got.data(), 1), -1);
    handle.device = nullptr;
    QCOMPARE(CommRead(&handle, got.data(), 1), -1);
    QCOMPARE(CommWrite(nullptr, got.data(), 1), -1);
}

void TstSerialPort::readEndsOnCountOrSilence()
{
    SerialPort port;
    QVERIFY(port.CommOpen(TestLine::name(), QStringLiteral("9600,n,8,1"), 300));
    char buffer[16];
    QVERIFY(m_line->send("abcdef"));
    QTRY_COMPARE(port.bytesAvailable(), 6LL);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(port.readData(buffer, 4), 4LL);
    QVERIFY(clock.elapsed() < 200);
    QCOMPARE(port.readData(buffer, 16), 2LL);
    QVERIFY(clock.elapsed() >= 290);
    QCOMPARE(port.readData(buffer, 16), 0LL);
    QVERIFY(port.isOpen());
    // Bytes that trickle in within the timeout are one read's.
    auto reading = std::async(std::launch::async, [&] { return port.readData(buffer, 3); });
    for (const char* byte : {"1", "2", "3"}) {
        QCOMPARE(reading.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
        QVERIFY(m_line->send(byte));
    }
    QCOMPARE(reading.get(), 3LL);
    QCOMPARE(QByteArray(buffer, 3), QByteArray("123"));
}

void TstSerialPort::lineVanishes()
{
    char buffer[4] = {};
    for (const bool reading : {true, false}) {
        SerialPort port;
        QVERIFY(port.CommOpen(TestLine::name(), QStringLiteral("9600,n,8,1"), 1000));
        m_line.reset();
        if (reading) {
            QVERIFY(port.readData(buffer, 4) <= 0);
        } else {
            QCOMPARE(port.writeData(buffer, 4), -1LL);
            QCOMPARE(port.lastError(), int(SerialPort::WriteFailed));
        }
        QVERIFY(!port.isOpen());
        QVERIFY(!port.ReOpen());
        m_line = std::make_unique<TestLine>();
        QVERIFY(port.ReOpen());
    }
}

void TstSerialPort::notALine_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"missing", "file", "directory", "dangling", "/dev/null", ""})
        QTest::newRow(*name ? name : "empty") << QString::fromLatin1(name);
}

void TstSerialPort::notALine()
{
    QFETCH(QString, name);
    writeFile(QStringLiteral("file"), "content");
    QVERIFY(QDir().mkdir(QStringLiteral("directory")));
    QVERIFY(QFile::link(QStringLiteral("nowhere"), QStringLiteral("dangling")));
    SerialPort port;
    Messages messages;
    QVERIFY(!port.CommOpen(name, QStringLiteral("9600,n,8,1"), 1000));
    QCOMPARE(messages.taken().value(1), QStringLiteral("D: [CommOpen]    open serial error!"));
    QVERIFY(!port.isOpen());
    QVERIFY(!port.ReOpen());
    QCOMPARE(readFile(QStringLiteral("file")), QByteArray("content"));
    // The same object serves once there is a line.
    QVERIFY(port.CommOpen(TestLine::name(), QStringLiteral("9600,n,8,1"), 1000));
}

void TstSerialPort::logLines()
{
    SerialPort port;
    QVERIFY(port.CommOpen(QDir::current().filePath(TestLine::name()), QStringLiteral("9600,n,8,1"), 1000));
    const QDateTime before = QDateTime::currentDateTime();
    char frame[] = {0x01, 0x03, '\xAF'};
    QCOMPARE(port.writeData(frame, 3), 3LL);
    QVERIFY(m_line->send("\xFE"));
    QCOMPARE(port.readData(frame, 1), 1LL);
    const QList<QByteArray> lines = readFile(QStringLiteral("log_line.log")).split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(0).mid(24), QByteArray("send: 01 03 af "));
    QCOMPARE(lines.at(1).mid(24), QByteArray("recv: fe "));
    const QString format = QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz ");
    const QDateTime logged = QDateTime::fromString(QString::fromLatin1(lines.at(0).left(24)), format);
    QVERIFY(logged >= before && logged <= QDateTime::currentDateTime());
}

void TstSerialPort::logRotation()
{
    const QString log = QStringLiteral("log_line.log");
    const QString backup = QStringLiteral("log_line.log.bak.log");
    SerialPort port;
    QVERIFY(port.CommOpen(TestLine::name(), QStringLiteral("9600,n,8,1"), 0));
    const int lineBytes = 24 + 6 + 3 + 1;
    writeFile(log, QByteArray(0x500000 - lineBytes, 'a'));
    port.saveLogData("x", 1, 1);
    QVERIFY(QFile::exists(log)); // full to the last byte, not larger
    port.saveLogData("x", 1, 1);
    QVERIFY(!QFile::exists(log));
    const QByteArray kept = readFile(backup);
    QCOMPARE(kept.size(), 0x500000 + lineBytes);

    writeFile(log, QByteArray(0x500000, 'b'));
    Messages messages;
    port.saveLogData("x", 1, 0);
    QVERIFY(!QFile::exists(log));
    QCOMPARE(readFile(backup), kept);
    QCOMPARE(messages.taken().size(), 1);
}

void TstSerialPort::unLockTakesAFreeLock()
{
    SerialPort port;
    port.UnLock();
    auto locking = std::async(std::launch::async, [&] { port.Lock(); });
    QCOMPARE(locking.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    port.UnLock();
    QCOMPARE(locking.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    port.UnLock();
}

QTEST_GUILESS_MAIN(TstSerialPort)
#include "tst_serialport.moc"
