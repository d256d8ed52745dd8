// The modes of a unit: which of its parts run, and who feeds the load.

#include "overload.h"
#include "unitmodel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace simulation {

namespace {

constexpr int rectifierSoftStartMs = 2000;
constexpr int inverterSoftStartMs = 3000;

/// How far a feed may be off.
struct Tolerance
{
    double belowPercent;
    double abovePercent;
    double hz;
};

constexpr Tolerance rectifierTolerance = {20, 20, 5};
// What the raw values of the bypass settings stand for.
constexpr double bypassAbovePercents[] = {15, 10, 20, 25};
constexpr double bypassBelowPercents[] = {20, 10, 15, 30, 40};
constexpr double bypassHz[] = {5, 1, 3, std::numeric_limits<double>::infinity()};

Feed feedOf(double voltagePercent, double offsetHz, const Tolerance& tolerance)
{
    Feed feed;
    feed.voltagePercent = voltagePercent;
    feed.offsetHz = offsetHz;
    feed.tooLow = voltagePercent < 100 - tolerance.belowPercent;
    feed.tooHigh = voltagePercent > 100 + tolerance.abovePercent;
    feed.tooSlow = feed.isPresent() && offsetHz < -tolerance.hz;
    feed.tooFast = feed.isPresent() && offsetHz > tolerance.hz;
    return feed;
}

} // namespace

/// The bypass is measured by what the load is to get, the mains by what the rectifier is set for.
void UnitModel::stepFeeds()
{
    const double voltageV = m_site.mainsOn ? m_site.mainsVoltageV.value_or(m_image.value(3039)) : 0;
    const double frequencyHz = m_site.mainsFrequencyHz.value_or(m_image.value(3040));
    const Tolerance bypassTolerance = {bypassBelowPercents[m_image.raw(3006)],
                                       bypassAbovePercents[m_image.raw(3005)], bypassHz[m_image.raw(3007)]};
    m_state.mainsFeed =
        feedOf(100 * voltageV / m_image.value(3039), frequencyHz - m_image.value(3040), rectifierTolerance);
    m_state.bypassFeed = feedOf(m_site.bypassConnected ? 100 * voltageV / m_image.value(3041) : 0,
                                frequencyHz - m_image.value(3042), bypassTolerance);
}

/// The button cuts everything off, at once and for good: coming back takes a person who clears the faults
/// and starts the unit up.
void UnitModel::stepEmergency()
{
    const bool isButtonEnabled = m_image.raw(3012) == 1;
    if (!m_site.emergencyPressed || !isButtonEnabled)
        return;
    m_state.emergencyOff = true;
    aimFor(Target::Nothing);
}

/// What the inverter can draw from. A test blocks the rectifier, so that the battery has to prove itself.
UnitModel::DcSource UnitModel::dcSource() const
{
    if (m_state.emergencyOff)
        return DcSource::None;
    const bool rectifierReady = m_state.mainsFeed.isGood() && m_rectifierStartMs == 0;
    const bool blocked = m_state.test != BatteryTest::None;
    if (rectifierReady && !blocked)
        return DcSource::Rectifier;
    return m_site.batteryConnected && !m_state.batteryEmpty ? DcSource::Battery : DcSource::None;
}

bool UnitModel::isBypassUsable() const
{
    const bool isForbidden = m_image.raw(3011) == 0; // this switch reads 0 as "enable"
    return m_state.bypassFeed.isGood() && !isForbidden && !m_state.emergencyOff;
}

/// In the economy modes the bypass feeds the load as long as it is good, with the inverter in reserve.
bool UnitModel::isEco() const
{
    return m_image.raw(3000) == 4 || m_image.raw(3000) == 6;
}

void UnitModel::stepTest(int ms)
{
    if (m_state.test == BatteryTest::None)
        return;
    if (m_testLeftMs != std::numeric_limits<std::int64_t>::max())
        m_testLeftMs -= ms;
    if (m_state.test == BatteryTest::SelfTest && m_state.batteryLow)
        m_state.selfTestFailed = true;
    const bool isOver = m_testLeftMs <= 0 || m_state.batteryLow;
    if (isOver || m_state.path != OutputPath::Inverter || !m_site.batteryConnected)
        m_state.test = BatteryTest::None;
}

void UnitModel::stepRectifier(int ms)
{
    const bool mayRun = m_state.mainsFeed.isGood() && !m_state.emergencyOff;
    m_rectifierStartMs = mayRun ? std::max(0, m_rectifierStartMs - ms) : rectifierSoftStartMs;
    if (dcSource() == DcSource::Rectifier)
        m_state.rectifier = Rectifier::Pfc;
    else if (mayRun && m_rectifierStartMs > 0)
        m_state.rectifier = Rectifier::SoftStart;
    else
        m_state.rectifier = dcSource() == DcSource::Battery && m_state.inverter != Inverter::Off
                                ? Rectifier::Battery
                                : Rectifier::Off;
}

void UnitModel::stepInverter(int ms)
{
    const bool wanted = m_target == Target::Inverter || m_target == Target::BypassWithReserve ||
                        (m_target == Target::Bypass && !isBypassUsable());
    if (!wanted || dcSource() == DcSource::None) {
        m_state.inverter = Inverter::Off;
        m_inverterStartMs = inverterSoftStartMs;
        return;
    }
    m_inverterStartMs = std::max(0, m_inverterStartMs - ms);
    m_state.inverter = m_inverterStartMs == 0 ? Inverter::Run : Inverter::SoftStart;
}

/// An inverter that carries too much for too long hands over, and comes back when the load has been low for
/// a while.
void UnitModel::stepOverload(int ms)
{
    const int allowedMs = allowedOverloadMs(m_state.demandPercent);
    const bool carries = m_state.path == OutputPath::Inverter;
    if (allowedMs == 0)
        m_overloadUse = 0;
    else if (carries)
        m_overloadUse += static_cast<double>(ms) / allowedMs;
    if (m_overloadUse >= 1)
        m_state.overloadLatched = true;

    m_lowLoadMs = m_state.demandPercent < overloadEndPercent ? m_lowLoadMs + ms : 0;
    if (m_lowLoadMs >= overloadEndMs)
        m_state.overloadLatched = false;
}

/// The bypass also bridges the inverter's soft start; the inverter stands in for a bypass that failed.
void UnitModel::stepPath()
{
    const bool inverterReady = m_state.inverter == Inverter::Run && !m_state.overloadLatched;
    const bool prefersInverter = m_target == Target::Inverter && !isEco();
    if (m_target == Target::Nothing)
        m_state.path = OutputPath::None;
    else if (inverterReady && (prefersInverter || !isBypassUsable()))
        m_state.path = OutputPath::Inverter;
    else
        m_state.path = isBypassUsable() ? OutputPath::Bypass : OutputPath::None;
}

} // namespace simulation
