#pragma once

#include "commandrows.h"
#include "registerimage.h"
#include "site.h"
#include "unitreport.h"
#include "unitstate.h"
#include "wander.h"

#include <cstdint>
#include <random>
#include <vector>

namespace simulation {

enum class CommandResult
{
    Done,
    UnknownCode, ///< no command has this code
    BadArgument, ///< a discharge of 0 minutes or of more than a day
    NotNow       ///< known, but the unit's present state does not allow it
};

/// A three-phase unit as a small physical model: mains, rectifier, battery, inverter, bypass and a load that
/// breathes. Pure: no I/O and no clock of its own, time comes in through step(), chance from the seed; the
/// same calls always give the same course. Not thread-safe: the owner guards it.
class UnitModel
{
public:
    /// `startMs` is the unit's civil time at the start, in milliseconds since the epoch.
    UnitModel(const UnitIdentity& identity, std::uint32_t seed, std::int64_t startMs);

    /// What surrounds the unit; changes take effect with the next step.
    Site& site() { return m_site; }
    /// Puts another charge into the battery, 0 to 100 %, as if time had passed.
    void setBatteryCharge(double percent) { m_state.chargePercent = percent; }

    /// When the battery took over for the last time before the start, in the unit's civil time.
    void setLastDischarge(std::int64_t civilMs);

    /// Moves on by so much virtual time; 10 to 1000 ms keep the integration accurate.
    void step(int ms);

    /// Carries a command out; `argument` is unitmap::noArgument for none. Effects on powers show with the
    /// next step.
    CommandResult command(int code, std::uint16_t argument);

    /// Takes settings that checkSettings() has accepted.
    void writeSettings(int firstRegister, const std::vector<std::uint16_t>& values);

    const UnitState& state() const { return m_state; }
    /// What a reader gets now.
    const RegisterImage& image() const { return m_image; }

private:
    /// Who is to feed the load. "Reserve" keeps the inverter running beside the bypass.
    enum class Target
    {
        Nothing,
        Inverter,
        BypassWithReserve,
        Bypass
    };
    enum class DcSource
    {
        None,
        Rectifier,
        Battery
    };

    // Modes: what runs and who feeds the load.
    void stepFeeds();
    void stepEmergency();
    void stepTest(int ms);
    void stepRectifier(int ms);
    void stepInverter(int ms);
    void stepPath();
    void stepOverload(int ms);
    DcSource dcSource() const;
    bool isBypassUsable() const;
    bool isEco() const;
    CommandResult transfer(Target wanted);
    void aimFor(Target wanted);
    CommandResult startTest(BatteryTest test, std::int64_t durationMs);
    CommandResult startDischarge(std::uint16_t argument);
    void clearFaults();

    // Powers: what flows then.
    void stepVoltages(double seconds);
    void stepLoad(double seconds);
    void stepBattery(double seconds);
    void switchBattery();
    void discharge(double seconds);
    void charge(double seconds);
    void stepBatteryLimits();
    void stepInput();
    void stepTemperatures(double seconds);
    double inverterLoadW() const;
    double rectifierLimitW() const;
    double batteryShare() const;
    double blockVoltageV() const;
    double capacityAh() const { return m_image.value(3018); }
    double endBlockVoltageV(double rate) const;

    const UnitIdentity m_identity;
    std::mt19937 m_random;
    Site m_site;
    UnitState m_state;
    RegisterImage m_image;

    Target m_target = Target::Inverter;
    std::int64_t m_elapsedMs = 0;
    int m_rectifierStartMs = 0; ///< left of its soft start
    int m_inverterStartMs = 0;
    std::int64_t m_testLeftMs = 0;
    double m_overloadUse = 0;  ///< how much of the allowance is used up; 1 is all
    int m_lowLoadMs = 0;       ///< for how long an overload has been over
    double m_demandW = 0;      ///< what the load asks for, supplied or not
    double m_batteryShare = 0; ///< of the inverter's load; 1 is all
    double m_lowAtPercent = 0; ///< the charge at which the battery was found low

    std::array<Wander, 3> m_mainsWander;
    std::array<Wander, 3> m_loadWander;
    std::array<Wander, 3> m_inverterWander;
    Wander m_frequencyWander;
};

} // namespace simulation
