#pragma once

#include "porthandle.h"

#include <QMap>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QTimer>

class SerialPort;

/// One device of the port manager: a port handle followed by its kind. The manager leaves the entries null.
struct CommHandle : PortHandle
{
    enum Kind : qint32
    {
        Serial = 0,
        Hid = 2
    };

    qint32 kind = Serial; ///< of `device`: a SerialPort, or an hid_device, which is null while closed
};

/// The one owner of the serial ports and HID devices of a process. All but construction and destruction may
/// be called from any thread.
///
/// Locks: the manager's, then a port's, never the other way round: do not call the manager with a port's lock
/// held. A call for one port waits while another thread's query holds that port, and keeps the manager locked
/// meanwhile: so a long query on one port can make a call for any other port wait until it ends. This is by
/// design; it bounds a wait by one query and keeps every open and close in a single order.
///
/// Construct it in the thread whose event loop is to run the tick, every 30 s, and destroy it there, after
/// all users of its ports and before a plugin whose code opened ports through it is unloaded. Its timer is no
/// child: moveToThread would leave it behind.
///
/// Settings come from "serial.ini" in the current directory, one section per port name with the keys "param"
/// (default "9600,n,8,1") and "timeout" (ms, default 1000). See docs/serial.ini.sample.
class PortManage : public QObject
{
    Q_OBJECT

public:
    /// The process-wide manager, made on the first call in the calling thread; never null.
    static PortManage* instance();

    explicit PortManage(QObject* parent = nullptr);
    ~PortManage() override;

    // The serial calls return the port itself, the HID calls the entry, whose device may be null: deliberate,
    // callers rely on the difference.

    /// The serial port on a device path, opened if need be; the same object for the same name as long as the
    /// manager lives. A port that cannot be opened is returned closed and tried again by the next call.
    SerialPort* getPortHandle(QString portName);
    /// Closes the port and opens it with freshly read settings; waits for a running query.
    SerialPort* ReOpen(QString portName);
    /// Closes the port, which stays known; the next getPortHandle opens it again.
    void Close(QString portName);

    /// The HID device of a vendor and product id (the low 16 bits of each), opened if need be; never null,
    /// but its device is null while there is none. Every call tries again.
    CommHandle* getPortHandle(int vendorId, int productId);
    CommHandle* ReOpen(int vendorId, int productId);
    void Close(int vendorId, int productId);

public slots:
    /// The tick: closes every serial port whose used flag is clear (that is every one), clears the others'.
    void timerProc();

private:
    CommHandle* createSerial(const QString& portName);
    void closeIdle(const QString& key);

    QMap<QString, CommHandle*> m_table; ///< by port name or "vendor.product" in decimal; values are owned
    QMutex m_mutex;                     ///< guards the table and every change of its devices
    QTimer m_timer;
    CommHandle m_noDevice; ///< given for HID ids whose key is the name of a serial port
};
