#pragma once

#include "registerimage.h"
#include "unitreport.h"
#include "unitstate.h"
#include "wander.h"

#include <cstdint>
#include <random>
#include <vector>

namespace simulation {

/// Command codes of a unit. Code 0 is the self-test without an argument and a discharge of so many minutes
/// with one.
enum class Command
{
    Test = 0,
    DischargeToLow = 2,
    CancelTest = 3,
    ShutDown = 4,
    StartUp = 7,
    ShutDownToBypass = 9,
    ToBypass = 10,
    ToInverter = 11,
    ClearFault = 12,
    ClearHistory = 13,
    BuzzerOn = 17,
    BuzzerOff = 18,
    DownloadHistory = 20
};

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

    /// Switches the mains (it feeds rectifier and bypass); takes effect with the next step.
    void setMainsPresent(bool present) { m_state.mainsPresent = present; }

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

    DcSource dcSource() const;
    void stepRectifier(int ms);
    void stepInverter(int ms);
    void stepPath();
    void stepTest(int ms);
    void stepSupply(double seconds);
    void stepLoad(double seconds);
    void stepBattery(double seconds);
    void stepInput();
    void stepTemperatures(double seconds);
    void updateBatteryLimits();
    CommandResult startTest(BatteryTest test, std::int64_t durationMs);
    double dcPowerW() const;
    double chargeCurrentA() const;
    double blockVoltageV() const;

    const UnitIdentity m_identity;
    std::mt19937 m_random;
    UnitState m_state;
    RegisterImage m_image;

    Target m_target = Target::Inverter;
    std::int64_t m_elapsedMs = 0;
    int m_rectifierStartMs = 0; ///< left of its soft start
    int m_inverterStartMs = 0;
    std::int64_t m_testLeftMs = 0;

    std::array<Wander, 3> m_mainsWander;
    std::array<Wander, 3> m_loadWander;
    std::array<Wander, 3> m_inverterWander;
    Wander m_frequencyWander;
};

} // namespace simulation
