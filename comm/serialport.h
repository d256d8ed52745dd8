#pragma once

#include "portsettings.h"

#include <QFile>
#include <QIODevice>
#include <QMutex>
#include <QString>

#include <memory>
#include <termios.h>

namespace lineformat {
struct Outcome;
}

/// A serial line, read and written without buffers. Apart from Lock, UnLock, getPortName and getPortSettings,
/// which any thread may call, whoever uses a port holds its lock: one user at a time, from any thread. A line
/// that vanishes while open is closed by the read or write that notices it.
class SerialPort : public QIODevice
{
    Q_OBJECT

public:
    /// How the port is to be served; kept for callers that ask for one, both are served alike.
    enum QueryMode
    {
        Polling,
        EventDriven
    };

    enum ErrorCode
    {
        NoError = 0,
        InvalidPort = 1,
        OutOfMemory = 2,
        InterruptedCall = 3,
        ReadFailed = 13,
        WriteFailed = 14
    };

    /// The bits of lineStatus().
    enum LineSignal : unsigned long
    {
        SignalCts = 0x01,
        SignalDsr = 0x02,
        SignalRing = 0x04,
        SignalCarrier = 0x08,
        SignalRts = 0x10,
        SignalDtr = 0x20
    };

    /// A port without a device; CommOpen gives it one.
    SerialPort();
    /// A closed port on the device path portName with 9600 baud, no parity, 8 data bits, 1 stop bit.
    explicit SerialPort(const QString& portName, QueryMode mode = EventDriven);
    /// A closed port on the device path portName.
    SerialPort(const QString& portName, const PortSettings& settings, QueryMode mode = EventDriven);
    ~SerialPort() override;

    /// Opens the device path portName with a settings text, "9600,n,8,1" (baud, parity letter, data bits,
    /// stop bits) or "12#3#0#0" (the enumerations' numbers), and a read timeout in ms. True when open. On
    /// failure a debug line says what is wrong: the settings, or a device that is missing, not a terminal or
    /// not to be opened. An open port is closed first.
    bool CommOpen(const QString& portName, const QString& settings, int timeoutMs);

    /// Closes the port and opens it again with its stored name and settings. True when open.
    bool ReOpen();

    /// Takes the port lock; callers hold it from the first to the last byte of an exchange.
    void Lock();
    /// Gives the port lock back. Called without Lock it takes the lock instead and leaves the port locked:
    /// deliberate, hosts and drivers rely on the call as it is.
    void UnLock();

    /// Appends one line about a transfer to the traffic log in the current directory; direction is non-zero
    /// for received bytes. A log that cannot be written is passed over in silence.
    void saveLogData(const char* bytes, qint64 count, int direction);

    /// The settings text last given to CommOpen, whether it was good or not. Any thread.
    Q_INVOKABLE QString getPortSettings() const;

    /// The settings as the line has them, with substituted speeds and emulated parity.
    PortSettings settingsInForce() const { return m_inForce; }
    /// The last error's code, an ErrorCode; never cleared by success.
    int lastError() const { return m_lastError; }
    QueryMode queryMode() const { return m_queryMode; }

    bool isSequential() const override { return true; }

    /// Cleared by the port manager's tick, which closes ports where it is clear. Nothing sets it: deliberate,
    /// every tick closes every port, so that each is freshly opened afterwards.
    qint32 m_usedFlag = 0;

public slots:
    /// Opens the device on the stored path; the port itself is always unbuffered, so that bytes cannot hide
    /// from callers of the read hook. Does nothing when open already. Returns whether the port is open.
    bool open(QIODevice::OpenMode mode) override;
    void close() override;

    /// Reads until length bytes are there or the line stays silent for the timeout. Returns the count, 0 for
    /// silence, -1 when closed or on an error.
    qint64 readData(char* buffer, qint64 length) override;
    /// Returns the count written, -1 when closed or on an error.
    qint64 writeData(const char* buffer, qint64 length) override;

    // The setters store the value and apply it at once when open. A refused value leaves the stored one as it
    // is, with a warning when open.
    void setBaudRate(BaudRateType baudRate);
    void setDataBits(DataBitsType dataBits);
    void setParity(ParityType parity);
    void setStopBits(StopBitsType stopBits);
    void setFlowControl(FlowType flow);
    void setTimeout(qint64 timeoutMs);
    /// Modem lines; do nothing when closed or where the device has none.
    void setDtr(bool on = true);
    void setRts(bool on = true);

    /// Waits until all that was written has been sent.
    void flush();
    /// The bytes waiting to be read; 0 when closed.
    qint64 size() const override;
    qint64 bytesAvailable() const override;
    /// Warns and does nothing: the port is unbuffered.
    void ungetChar(char c);
    /// Sets the last error from an errno value; one that it does not know leaves the last error unchanged.
    void translateError(int systemError);
    /// LineSignal bits; 0 when closed or where the device has no modem lines.
    unsigned long lineStatus() const;
    /// Puts every setting back to what a new port has; closes the port first.
    void init();
    /// The device path. Any thread.
    QString getPortName() const;

private:
    void setPortName(const QString& portName);
    bool openLine();
    bool openFile();
    void applySettings();
    void writeAttributes(int when);
    template <typename Value, typename Rule>
    void change(Value PortSettings::*setting, Value value, Rule rule);
    void setModemLine(int bit, bool on);
    qint64 writeInTime(const char* buffer, qint64 length);
    void closeIfGone(int systemError);

    QMutex m_lock;
    mutable QMutex m_textLock; ///< guards the two texts below, never held while another lock is taken
    QString m_portName;
    QString m_settingsText;
    QString m_logPrefix; ///< empty; nothing sets it
    QString m_logFileName;
    std::unique_ptr<QFile> m_file;
    // Asked for and in force are kept apart: applying what is in force once more would add a data bit each
    // time where space parity is emulated.
    PortSettings m_requested;
    PortSettings m_inForce;
    termios m_attributes = {};
    int m_lastError = NoError;
    QueryMode m_queryMode = EventDriven;
};
