#include "serialport.h"

#include "lineformat.h"
#include "settingstext.h"
#include "trafficlog.h"

#include <QDebug>
#include <QElapsedTimer>

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {
constexpr qint64 ShortestWriteMs = 1000;
constexpr qint64 LongestWriteMs = 30000;
constexpr char commOpen[] = "CommOpen"; // the name that the debug lines carry

// Hosts look for these lines: the wording is a contract.
void reportBadSettings(SettingsError error, const QString& settings)
{
    switch (error) {
    case SettingsError::None:
        break;
    case SettingsError::Empty:
        qDebug("%s    serial settings is null", commOpen);
        break;
    case SettingsError::Form:
        qDebug("%s    error settings %s", commOpen, qUtf8Printable(settings));
        break;
    case SettingsError::Parity:
        qDebug("parity error!");
        break;
    case SettingsError::DataBits:
        qDebug("dataBits error!");
        break;
    case SettingsError::StopBits:
        qDebug("stopBits error!");
        break;
    }
}

// A line without carrier would block a plain open, and a terminal must not become the process's own.
int openTerminal(const QString& portName)
{
    const QByteArray path = QFile::encodeName(portName);
    int descriptor = -1;
    do {
        descriptor = ::open(path.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

void warn(const lineformat::Outcome& outcome)
{
    for (const char* warning : outcome.warnings) {
        if (warning)
            qWarning("%s", warning);
    }
}

bool setBlocking(int descriptor, bool isBlocking = true)
{
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 &&
           ::fcntl(descriptor, F_SETFL, isBlocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK) == 0;
}

// Reads wait in the terminal's own way, so only the write is made not to.
ssize_t writeWithoutBlocking(int descriptor, const char* buffer, qint64 length)
{
    setBlocking(descriptor, false);
    const ssize_t count = ::write(descriptor, buffer, static_cast<std::size_t>(length));
    const int systemError = errno;
    setBlocking(descriptor);
    errno = systemError;
    return count;
}
} // namespace

SerialPort::SerialPort()
{
    init();
}

SerialPort::SerialPort(const QString& portName, QueryMode mode)
    : SerialPort(portName, PortSettings(), mode)
{}

SerialPort::SerialPort(const QString& portName, const PortSettings& settings, QueryMode mode)
    : m_requested(settings)
    , m_inForce(settings)
    , m_queryMode(mode)
{
    setPortName(portName);
}

SerialPort::~SerialPort()
{
    SerialPort::close();
    // An UnLock without Lock has left it locked.
    m_lock.tryLock();
    m_lock.unlock();
}

void SerialPort::init()
{
    SerialPort::close();
    m_requested = PortSettings();
    m_inForce = PortSettings();
    m_lastError = NoError;
    m_usedFlag = 0;
}

bool SerialPort::CommOpen(const QString& portName, const QString& settings, int timeoutMs)
{
    {
        const QMutexLocker locker(&m_textLock);
        m_settingsText = settings;
    }
    const ParsedSettings parsed = parseSettings(settings);
    if (parsed.error != SettingsError::None) {
        reportBadSettings(parsed.error, settings);
        return false;
    }
    close();
    m_requested = parsed.settings;
    m_requested.Timeout = timeoutMs;
    setPortName(portName);
    qDebug("[%s]    打开标准串口%s Setting=%s TimeOut=%d\n", commOpen, qUtf8Printable(portName),
           qUtf8Printable(settings), timeoutMs);
    if (openLine())
        return true;
    qDebug("[%s]    open serial error!", commOpen);
    return false;
}

bool SerialPort::ReOpen()
{
    close();
    m_requested.FlowControl = FlowOff;
    return openLine();
}

// What a fresh open of either kind ends with.
bool SerialPort::openLine()
{
    if (!m_file || !QFile::exists(m_portName) || !open(ReadWrite))
        return false;
    applySettings();
    writeAttributes(TCSANOW);
    setRts(true);
    setDtr(true);
    setObjectName(QStringLiteral("serial"));
    return isOpen();
}

bool SerialPort::open(QIODevice::OpenMode mode)
{
    if (mode == NotOpen || isOpen() || !m_file)
        return isOpen();
    if (!openFile())
        return false;
    QIODevice::open(mode | Unbuffered);
    lineformat::setRaw(m_attributes);
    applySettings();
    writeAttributes(TCSAFLUSH);
    return isOpen();
}

bool SerialPort::openFile()
{
    m_file->setFileName(m_portName);
    const int descriptor = openTerminal(m_portName);
    // The attributes are what only a terminal has.
    if (descriptor >= 0 && ::tcgetattr(descriptor, &m_attributes) == 0 && setBlocking(descriptor) &&
        m_file->open(descriptor, ReadWrite | Unbuffered, QFileDevice::AutoCloseHandle))
        return true;
    translateError(errno);
    if (descriptor >= 0)
        ::close(descriptor);
    return false;
}

void SerialPort::close()
{
    if (!isOpen())
        return;
    m_file->close();
    QIODevice::close();
}

void SerialPort::setPortName(const QString& portName)
{
    const QMutexLocker locker(&m_textLock);
    if (!m_file)
        m_file = std::make_unique<QFile>();
    m_portName = portName;
    m_logFileName = trafficlog::fileName(m_logPrefix, portName);
}

QString SerialPort::getPortName() const
{
    const QMutexLocker locker(&m_textLock);
    return m_portName;
}

QString SerialPort::getPortSettings() const
{
    const QMutexLocker locker(&m_textLock);
    return m_settingsText;
}

void SerialPort::Lock()
{
    m_lock.lock();
}

void SerialPort::UnLock()
{
    if (!m_lock.tryLock())
        m_lock.unlock();
}

qint64 SerialPort::readData(char* buffer, qint64 length)
{
    if (!isOpen() || !buffer || length < 0)
        return -1;
    errno = 0;
    const qint64 count = m_file->read(buffer, length);
    const int systemError = errno;
    if (count > 0) {
        saveLogData(buffer, count, 1);
        return count;
    }
    if (count < 0)
        m_lastError = ReadFailed;
    // A line that has vanished reads as silent, at once and for ever.
    closeIfGone(systemError);
    return count;
}

qint64 SerialPort::writeData(const char* buffer, qint64 length)
{
    if (!isOpen() || !buffer || length < 0)
        return -1;
    errno = 0;
    const qint64 count = writeInTime(buffer, length);
    const int systemError = errno;
    if (count > 0)
        saveLogData(buffer, count, 0);
    if (count < length) {
        m_lastError = WriteFailed;
        closeIfGone(systemError);
    }
    return count;
}

// A line whose other end takes nothing must not hold its caller, and with it the port's lock, for ever. What
// could not go out in the read time-out is thrown away, or closing would wait for it.
qint64 SerialPort::writeInTime(const char* buffer, qint64 length)
{
    const int descriptor = m_file->handle();
    const int timeoutMs =
        static_cast<int>(qBound<qint64>(ShortestWriteMs, m_inForce.Timeout, LongestWriteMs));
    QElapsedTimer timer;
    timer.start();
    qint64 done = 0;
    while (done < length) {
        pollfd line = {descriptor, POLLOUT, 0};
        const int remainingMs = timeoutMs - static_cast<int>(timer.elapsed());
        if (remainingMs <= 0 || ::poll(&line, 1, remainingMs) == 0) {
            ::tcflush(descriptor, TCOFLUSH);
            errno = ETIMEDOUT;
            break;
        }
        const ssize_t count = writeWithoutBlocking(descriptor, buffer + done, length - done);
        if (count < 0 && errno != EAGAIN && errno != EINTR)
            break;
        done += qMax<ssize_t>(count, 0);
    }
    return done > 0 || length == 0 ? done : -1;
}

// Closing makes the port manager open the device again as soon as it is back.
void SerialPort::closeIfGone(int systemError)
{
    if (!isOpen())
        return;
    pollfd line = {m_file->handle(), 0, 0};
    const bool hungUp = ::poll(&line, 1, 0) > 0; // only hang-up, error and bad descriptor are reported
    if (hungUp || systemError == EIO || systemError == ENXIO || systemError == ENODEV || systemError == EBADF)
        close();
}

void SerialPort::saveLogData(const char* bytes, qint64 count, int direction)
{
    if (!bytes || count < 0)
        return;
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    trafficlog::append(m_logFileName, trafficlog::line(now, direction, bytes, count));
}

void SerialPort::applySettings()
{
    m_inForce = m_requested;
    const lineformat::Outcome outcomes[] = {
        lineformat::setBaudRate(m_inForce, m_attributes, m_requested.BaudRate),
        lineformat::setDataBits(m_inForce, m_attributes, m_requested.DataBits),
        lineformat::setParity(m_inForce, m_attributes, m_requested.Parity),
        lineformat::setStopBits(m_inForce, m_attributes, m_requested.StopBits),
        lineformat::setFlowControl(m_inForce, m_attributes, m_requested.FlowControl),
        lineformat::setTimeout(m_inForce, m_attributes, m_requested.Timeout),
    };
    for (const lineformat::Outcome& outcome : outcomes)
        warn(outcome);
}

// A device may refuse a setting that it cannot do, as pseudo-terminals do with character sizes: no reason not
// to use it. One that has vanished is closed.
void SerialPort::writeAttributes(int when)
{
    if (::tcsetattr(m_file->handle(), when, &m_attributes) == 0)
        return;
    const int systemError = errno;
    translateError(systemError);
    closeIfGone(systemError);
}

// What every setter does: a value that its rule takes is kept and reaches an open line.
template <typename Value, typename Rule>
void SerialPort::change(Value PortSettings::*setting, Value value, Rule rule)
{
    const lineformat::Outcome outcome = rule(m_inForce, m_attributes, value);
    if (outcome.taken)
        m_requested.*setting = value;
    if (!isOpen())
        return;
    warn(outcome);
    if (outcome.taken)
        writeAttributes(TCSANOW);
}

void SerialPort::setBaudRate(BaudRateType baudRate)
{
    change(&PortSettings::BaudRate, baudRate, lineformat::setBaudRate);
}

void SerialPort::setDataBits(DataBitsType dataBits)
{
    change(&PortSettings::DataBits, dataBits, lineformat::setDataBits);
}

void SerialPort::setParity(ParityType parity)
{
    const bool hadSpace = m_inForce.Parity == ParitySpace;
    change(&PortSettings::Parity, parity, lineformat::setParity);
    // The bit that stood in for space parity is a data bit from now on, also after the next open.
    if (hadSpace && m_inForce.Parity != ParitySpace)
        m_requested.DataBits = m_inForce.DataBits;
}

void SerialPort::setStopBits(StopBitsType stopBits)
{
    change(&PortSettings::StopBits, stopBits, lineformat::setStopBits);
}

void SerialPort::setFlowControl(FlowType flow)
{
    change(&PortSettings::FlowControl, flow, lineformat::setFlowControl);
}

void SerialPort::setTimeout(qint64 timeoutMs)
{
    change(&PortSettings::Timeout, timeoutMs, lineformat::setTimeout);
}

void SerialPort::setDtr(bool on)
{
    setModemLine(TIOCM_DTR, on);
}

void SerialPort::setRts(bool on)
{
    setModemLine(TIOCM_RTS, on);
}

// Lines without modem signals, such as pseudo-terminals, refuse the calls; that is no failure.
void SerialPort::setModemLine(int bit, bool on)
{
    if (!isOpen())
        return;
    int bits = 0;
    if (::ioctl(m_file->handle(), TIOCMGET, &bits) == 0) {
        bits = on ? bits | bit : bits & ~bit;
        if (::ioctl(m_file->handle(), TIOCMSET, &bits) == 0)
            return;
    }
    closeIfGone(errno);
}

unsigned long SerialPort::lineStatus() const
{
    static constexpr struct
    {
        int bit;
        LineSignal signal;
    } signalRows[] = {{TIOCM_CTS, SignalCts},     {TIOCM_DSR, SignalDsr}, {TIOCM_RNG, SignalRing},
                      {TIOCM_CAR, SignalCarrier}, {TIOCM_RTS, SignalRts}, {TIOCM_DTR, SignalDtr}};
    int bits = 0;
    if (!isOpen() || ::ioctl(m_file->handle(), TIOCMGET, &bits) != 0)
        return 0;
    unsigned long status = 0;
    for (const auto& row : signalRows) {
        if (bits & row.bit)
            status |= row.signal;
    }
    return status;
}

void SerialPort::flush()
{
    if (isOpen())
        ::tcdrain(m_file->handle());
}

qint64 SerialPort::size() const
{
    int waiting = 0;
    if (!isOpen() || ::ioctl(m_file->handle(), FIONREAD, &waiting) != 0)
        return 0;
    return waiting;
}

qint64 SerialPort::bytesAvailable() const
{
    return size() + QIODevice::bytesAvailable();
}

void SerialPort::ungetChar(char)
{
    qWarning("Posix_QextSerialPort: ungetChar() called on an unbuffered sequential device - operation is "
             "meaningless");
}

void SerialPort::translateError(int systemError)
{
    switch (systemError) {
    case EBADF:
    case ENOTTY:
        m_lastError = InvalidPort;
        break;
    case ENOMEM:
        m_lastError = OutOfMemory;
        break;
    case EINTR:
        m_lastError = InterruptedCall;
        break;
    default:
        break;
    }
}
