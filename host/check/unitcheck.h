#pragma once

#include "checksettings.h"
#include "diagnosis.h"
#include "driverentries.h"

#include <functional>

class LineOutput;
class PortManage;

/// One look at one unit, step by step, told line by line: settings, driver, port or host, then one query
/// with every request and answer. Blocks for as long as that takes; any thread.
class UnitCheck
{
public:
    /// All references must outlive the check. ports belongs to the calling thread. isStopped is asked before
    /// every read and write; true ends the query soon, with whatever result.
    UnitCheck(
        const QString& unitName, const CheckSettings& settings, const DriverEntries& driver,
        PortManage& ports, LineOutput& output, std::function<bool()> isStopped = [] { return false; });

    /// Runs the check; true when the unit answered everything.
    bool run();

private:
    diagnosis::Finding find();
    diagnosis::Finding findOnLine();
    diagnosis::Finding findOnTcp();
    diagnosis::Finding whyNotOpen();
    diagnosis::Finding query(const PortHandle& handle, const std::function<bool()>& isConnected);
    void printExchanges(const Exchanges& exchanges);
    void print(const QString& label, const QString& text);

    QString m_unitName;
    CheckSettings m_settings;
    const DriverEntries& m_driver;
    PortManage& m_ports;
    LineOutput& m_output;
    const std::function<bool()> m_isStopped;
    diagnosis::Facts m_facts;
    Exchanges m_exchanges; ///< of the query, once there was one
};
