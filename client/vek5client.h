#pragma once

#include "collectthread.h"
#include "controlcommands.h"
#include "cyclegate.h"
#include "deviceinfo.h"
#include "driverlibrary.h"
#include "pointstore.h"
#include "tcpconnection.h"

#include <QList>
#include <QPointer>
#include <QWaitCondition>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class PortManage;
class SerialPort;
class vek5View;

/// The collector of one 10-30 kVA unit: polls it through the model driver library, keeps its values and
/// reports through postDEvent.
///
/// Made, configured and deleted on the host's thread. Cycles run on the collector's own thread after
/// start(), or on the thread that calls poll(). It may be deleted at any moment, except from a slot that
/// one of its own cycles calls directly.
class vek5Client : public CollectThread
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.nalo.Qt.ProInterface")
    Q_INTERFACES(CollectThread)

public:
    /// Loads the driver library, then the history code map.
    explicit vek5Client(CollectThread* parent = nullptr);
    /// Asks the thread to stop, waits for the cycle that runs, then frees the driver.
    ~vek5Client() override;

    int control(int id, QString value) override;
    QStringList getDataLogDesc() override;
    QStringList changeLogData(QMap<int, QVariant> data) override;
    QStringList getEventLogDesc() override;
    /// The unit's pages, made at the first call; every call brings them up to date and names the unit. What
    /// the pages ask for goes out as this collector's postDEvent. They stay the collector's, also as a child
    /// of a host's widget, but a host may delete them. Null without a QApplication or off its thread.
    CollectView* getView() override;
    void loadConfig() override;
    CollectThread* create(void* handle) override;
    using CollectThread::release;
    /// Schedules a collector for deletion on its thread of origin; null is ignored.
    void release(vek5Client* client);
    /// Runs a cycle if the interval is over or a command waits, and returns after it. While the collector's
    /// own thread runs, that thread runs the cycle. Ignored from a slot inside a cycle.
    void poll() override;

    /// Takes a port and its settings text and has the manager reopen the port. Not while a cycle runs
    /// elsewhere.
    void setPort(QString portName, QString settings);
    /// Sets the unit's address on the line.
    void setDevId(int id);
    /// Repairs text whose UTF-8 bytes had been taken for one character each.
    QString utfToChina(QString s);
    /// Loads the driver library unless loaded; always true, a missing driver fails every query instead.
    bool LoadDriver();
    /// Unloads the driver library; always true. Ignored from inside a cycle.
    bool FreeDriver();
    /// Takes one value from the driver. Cycle thread, inside a driver call.
    void parseData(int id, float value);
    /// Reads the texts of history codes from "./PVMX/drovaPanel/db/historycodemap.csv"; without the file
    /// codes show as numbers. Called by the constructor alone.
    void initHistoryInfo();
    /// Converts "./history.txt", which the driver wrote, to a CSV file at path and empties it; an empty path
    /// only empties it. What could not be written is told as a debug line.
    void exportHistoryInfo(QString path);
    /// Carries out the commands that wait. Cycle thread.
    void check_set_command();
    /// Reports changes and the data map to the host. Cycle thread.
    void reportData();

protected:
    void run() override;

private slots:
    /// One cycle of device work.
    void threadTimer();

private:
    void deleteView();
    int commandCount();
    std::optional<ControlCmd> takeCommand();
    bool isStopRequested() const;
    void pollCycle(QMutexLocker& locker);
    void waitForPolls();
    void runCycle();
    bool prepareConnection();
    bool queryUnit();
    void takeAnswer(QMap<QString, QVariant> record);
    void takeFailure(QMap<QString, QVariant> record);
    bool isLocalPort() const { return m_commType == 0; }
    PortManage* portManager() const;
    SerialPort* serialPort() const;
    std::optional<int> callDriver(const std::function<int(PortHandle*)>& call);
    std::optional<int> runCommand(const ControlCmd& command);
    std::optional<int> sendCommand(const ControlCmd& command);
    void downloadHistory(const ControlCmd& command);
    void reportDownload(const ControlCmd& command, int resultIndex);
    QStringList takeHistoryRows();
    bool reportAlarms(QMap<QString, QVariant>& record);
    void reportStatusPoint(QMap<QString, QVariant>& record, int pointId, int eventType);
    void refreshDeviceInfo();

    // Configuration; written on the host's thread, never while a cycle runs.
    QString m_portName;
    QString m_portSettings;
    QString m_languageCode;
    int m_deviceAddress = 1;
    int m_commType = 0;

    QPointer<vek5View> m_view; // GUI thread only; a host may delete it

    // Texts of the history; written by the constructor alone.
    QMap<int, QString> m_historyState;
    QMap<int, QString> m_historyCode;

    // Commands.
    QMutex m_commandLock;
    QList<ControlCmd> m_commands;

    // The cycle. Only the thread inside the gate touches these.
    CycleGate m_gate;
    std::unique_ptr<DriverLibrary> m_driver;
    vek5Client* m_driverContext = this; // its address is what a driver gets as context
    PointStore m_points;
    DeviceInfo m_infoUpdate;
    TcpConnection m_tcp;
    int m_tickCount = 0;       // cycles since the command queue was last non-empty
    int m_portReopened = 0;    // set by setPort
    bool m_holdReopen = false; // keeps a failing port from being reopened; nothing sets it

    // Between poll(), the collector's own thread and the destructor.
    std::atomic<bool> m_isStopping{false};
    QMutex m_pollLock;
    QWaitCondition m_cycleEnded;
    QWaitCondition m_pollEnded;
    int m_pollsUnderWay = 0; // calls of poll() that have begun a cycle or wait for one
    bool m_isRunActive = false;
    quint64 m_cyclesBegun = 0;
    quint64 m_cyclesEnded = 0;
    qint64 m_nextPollTimeS = 0;
};
