#include "lineformat.h"
#include "portaccess.h"
#include "serialport.h"
#include "testline.h"

#include <future>

using namespace std::chrono_literals;

class TstSerialPort : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestLine> m_line;
    std::unique_ptr<SerialPort> m_port;

    bool open(const char* settings, int timeoutMs = 1000)
    {
        return m_port->CommOpen(QStringLiteral("line"), QString::fromLatin1(settings), timeoutMs);
    }

    QList<int> inForce() const
    {
        const PortSettings now = m_port->settingsInForce();
        return {now.BaudRate, now.DataBits, now.Parity, now.StopBits};
    }

private slots:
    void init()
    {
        m_line.reset();
        m_line = std::make_unique<TestLine>();
        m_port = std::make_unique<SerialPort>();
    }

    void settingsText()
    {
        // The text, and the debug line or what is stored.
        const std::tuple<const char*, const char*, QList<int>> rows[] = {
            {"", "CommOpen    serial settings is null", {}},
            {"9600,n,8", "CommOpen    error settings 9600,n,8", {}},
            {"12#3#0", "CommOpen    error settings 12#3#0", {}},
            {"9600,x,8,1", "parity error!", {}},
            {"9600,n,80,1", "dataBits error!", {}},
            {"9600,n,8,3", "stopBits error!", {}},
            {"12345,o,5,1", "", {Baud50, DataBits5, ParityOdd, StopBits1}},
            {"115200,E,7,2,more", "", {Baud115200, DataBits7, ParityEven, StopBits2}},
            {"9600,m,8,1", "", {Baud9600, DataBits8, ParityMark, StopBits1}},
            {"12#3#0#0", "", {Baud9600, DataBits8, ParityNone, StopBits1}},
            {"99#-4#77#8", "", {99, -4, 77, 8}},
        };
        for (const auto& [text, problem, stored] : rows) {
            m_port = std::make_unique<SerialPort>();
            if (*problem)
                expect(QtDebugMsg, QString::fromLatin1(problem));
            QCOMPARE(open(text), !*problem);
            QCOMPARE(m_port->getPortSettings(), QString::fromLatin1(text));
            if (*problem)
                QVERIFY(!m_port->ReOpen()); // the callers' next step, with no file there yet
            else
                QCOMPARE(inForce(), stored);
        }
    }

    void opening()
    {
        QCOMPARE(SerialPort::staticMetaObject.methodCount() - QIODevice::staticMetaObject.methodCount(), 23);
        expect(QtDebugMsg, "[CommOpen]    打开标准串口line Setting=19200,n,8,2 TimeOut=1200\n");
        QVERIFY(open("19200,n,8,2", 1200));
        QCOMPARE(m_port->objectName(), QStringLiteral("serial"));
        QVERIFY(m_line->attributes().c_cflag & CSTOPB);
        m_port->setBaudRate(Baud4800);
        QCOMPARE(m_line->speed(), B4800);
        QVERIFY(m_port->ReOpen());
        QCOMPARE(m_line->speed(), B4800); // a setter holds for the next open as well

        const int timeouts[][2] = {{199, 1}, {99, 0}, {-700, 0}, {25500, 255}, {60000, 255}};
        for (const auto& [timeoutMs, tenths] : timeouts) {
            QVERIFY(open("9600,n,8,1", timeoutMs));
            QCOMPARE(m_line->vtime(), tenths);
        }
        m_port->setTimeout(300);
        QCOMPARE(m_line->vtime(), 3);
    }

    void speeds()
    {
        const std::tuple<const char*, speed_t, BaudRateType, QVector<const char*>> rows[] = {
            {"19200,n,8,1", B19200, Baud19200, {}},
            {"56000,n,8,1", B19200, Baud56000, {}}, // the line keeps what it had
            {"134,n,8,1", B134, Baud134, {" Portability Warning: Windows does not support 134.5 baud"}},
            {"14400,n,8,1", B9600, Baud9600, {": POSIX does not support 14400 baud"}},
            {"76800,n,8,1",
             B57600,
             Baud57600,
             {" Portability Warning: Windows and some", ": Posix_QextSerialPort was"}},
            {"256000,n,8,1", B115200, Baud115200, {": POSIX does not support 256000 baud"}},
        };
        for (const auto& [settings, onLine, stored, warnings] : rows) {
            for (const char* warning :
                 warnings + warnings) // by the open, and by the settings applied after it
                expect(QtWarningMsg, QLatin1String("Posix_QextSerialPort") + QLatin1String(warning));
            QVERIFY(open(settings));
            QCOMPARE(m_line->speed(), onLine);
            QCOMPARE(inForce().first(), int(stored));
        }
    }

    void refusals()
    {
        const std::tuple<const char*, std::function<void()>, const char*> rows[] = {
            {"12#2#0#1", [&] { m_port->setDataBits(DataBits5); },
             "5 Data bits cannot be used with 2 stop bits."},
            {"12#2#3#0", [&] { m_port->setDataBits(DataBits8); }, " Space parity is only supported"},
            {"12#3#0#0", [&] { m_port->setParity(ParitySpace); }, " Space parity is only supported"},
            {"12#3#0#0", [&] { m_port->setParity(ParityMark); }, "Mark parity is not supported by POSIX."},
            {"12#0#0#0", [&] { m_port->setStopBits(StopBits2); },
             "2 stop bits cannot be used with 5 data bits"},
            {"12#0#0#0", [&] { m_port->setStopBits(StopBits1_5); },
             "1.5 stop bit operation is not supported"},
        };
        for (const auto& [start, set, warning] : rows) {
            QVERIFY(open(start));
            const QList<int> before = inForce();
            expect(QtWarningMsg, QLatin1String("Posix_QextSerialPort: ") + QLatin1String(warning));
            set();
            QCOMPARE(inForce(), before);
        }
    }

    void spaceParityDoesNotClimb()
    {
        QVERIFY(open("9600,s,6,1"));
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(inForce(), QList<int>({Baud9600, DataBits7, ParitySpace, StopBits1}));
            QVERIFY(m_port->ReOpen());
        }
        // A pseudo-terminal has 8 bits whatever it is asked for: look at the attributes before they get
        // there.
        PortSettings settings;
        settings.DataBits = DataBits6;
        termios attributes = {};
        QVERIFY(lineformat::setParity(settings, attributes, ParitySpace).taken);
        QCOMPARE(attributes.c_cflag & (CSIZE | PARENB), tcflag_t{CS7});
    }

    void bytesPassUnchanged()
    {
        QByteArray all(256, '\0');
        std::iota(all.begin(), all.end(), '\0');
        QVERIFY(open("9600,n,8,1"));
        PortHandle handle{static_cast<QIODevice*>(m_port.get()), CommRead, CommWrite};
        QCOMPARE(CommWrite(&handle, all.data(), 256), 256);
        QCOMPARE(m_line->receive(), all);
        QVERIFY(m_line->send(all));
        QByteArray got(256, 'x');
        QCOMPARE(CommRead(&handle, got.data(), 256), 256);
        QCOMPARE(got, all);
        m_port->close();
        PortHandle none;
        for (PortHandle* dead : {&handle, &none, static_cast<PortHandle*>(nullptr)})
            QVERIFY(CommRead(dead, got.data(), 1) == -1 && CommWrite(dead, got.data(), 1) == -1);
    }

    // The other end takes nothing, as a stopped program or a hung adapter: the caller must come back.
    void writeEndsWhenNothingIsTaken()
    {
        QVERIFY(open("9600,n,8,1", 200));
        const QByteArray block(4096, 'x');
        QElapsedTimer timer;
        qint64 written = block.size();
        for (int i = 0; i < 100 && written == block.size(); ++i) {
            timer.start();
            written = m_port->writeData(block.constData(), block.size());
        }
        QVERIFY(written < block.size());
        QVERIFY(timer.elapsed() < 5000);
        QCOMPARE(m_port->lastError(), 14);
        QVERIFY(m_port->isOpen()); // full is not gone
    }
    void readEndsOnCountOrSilence()
    {
        QVERIFY(open("9600,n,8,1", 600));
        char buffer[16];
        QVERIFY(m_line->send("abcdef"));
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(m_port->readData(buffer, 4), 4LL);
        QVERIFY(clock.elapsed() < 550);
        QCOMPARE(m_port->readData(buffer, 16), 2LL);
        QVERIFY(clock.elapsed() >= 590);
        QCOMPARE(m_port->readData(buffer, 16), 0LL);
        QVERIFY(m_port->isOpen());
        // Bytes that trickle in within the timeout are one read's.
        auto reading = std::async(std::launch::async, [&] { return m_port->readData(buffer, 2); });
        for (const char* byte : {"1", "2"}) {
            QCOMPARE(reading.wait_for(50ms), std::future_status::timeout);
            QVERIFY(m_line->send(byte));
        }
        QCOMPARE(reading.get(), 2LL);
    }

    void notALine()
    {
        QFile file(QStringLiteral("file"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(7));
        QVERIFY(QDir().mkdir(QStringLiteral("directory")) &&
                QFile::link(QStringLiteral("no"), QStringLiteral("to")));
        for (const char* name : {"missing", "file", "directory", "to", "/dev/null", ""}) {
            expect(QtDebugMsg, "[CommOpen]    open serial error!");
            QVERIFY(!m_port->CommOpen(QString::fromLatin1(name), QStringLiteral("9600,n,8,1"), 1000));
            QVERIFY2(!m_port->isOpen() && !m_port->ReOpen(), name);
        }
        QCOMPARE(file.size(), 7LL);
        QVERIFY(open("9600,n,8,1")); // the same object serves once there is a line
    }

    void trafficLog()
    {
        QFile log(QStringLiteral("log_line.log"));
        QFile backup(QStringLiteral("log_line.log.bak.log"));
        QVERIFY(m_port->CommOpen(QDir::current().filePath(QStringLiteral("line")),
                                 QStringLiteral("9600,n,8,1"), 0));
        QCOMPARE(m_port->writeData("\x01\xAF", 2), 2LL);
        m_port->saveLogData("\xFE", 1, 1);
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray line = log.readLine();
        QCOMPARE(line.mid(24), QByteArray("send: 01 af \n"));
        QCOMPARE(log.readLine().mid(24), QByteArray("recv: fe \n"));
        const QString format = QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz ");
        const QDateTime logged = QDateTime::fromString(QString::fromLatin1(line.left(24)), format);
        QVERIFY(qAbs(logged.msecsTo(QDateTime::currentDateTime())) < 60000);

        log.close();
        const qint64 full = 0x500000;
        QVERIFY(log.resize(full - 34)); // one line less
        m_port->saveLogData("x", 1, 1);
        QVERIFY(log.exists()); // full to the last byte, not larger
        m_port->saveLogData("x", 1, 1);
        QVERIFY(!log.exists());
        QCOMPARE(backup.size(), full + 34);

        m_port->saveLogData("x", 1, 1);
        QVERIFY(log.resize(full));
        expect(QtDebugMsg, {}); // why there is no backup
        m_port->saveLogData("xyz", 3, 1);
        QVERIFY(!log.exists());
        QCOMPARE(backup.size(), full + 34); // the first one stays
    }

    void unLockTakesAFreeLock()
    {
        m_port->UnLock();
        auto locking = std::async(std::launch::async, [&] { m_port->Lock(); });
        QCOMPARE(locking.wait_for(100ms), std::future_status::timeout);
        m_port->UnLock();
        QCOMPARE(locking.wait_for(10s), std::future_status::ready);
    }
};

QTEST_GUILESS_MAIN(TstSerialPort)
#include "tst_serialport.moc"
