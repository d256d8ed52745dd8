#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace simulation {

/// Raises and clears alarms at random, all those that have an event. Within each round every one of
/// them is raised once and cleared once, in an order that follows from the seed alone.
class RandomAlarms
{
public:
    /// Alarms that have an event: 0 to 497.
    static constexpr int alarmCount = 498;

    explicit RandomAlarms(std::uint32_t seed)
        : m_random(seed)
    {}

    struct Toggle
    {
        int index;
        bool active;
    };

    /// Begins to toggle `count` alarms every `periodMs` of virtual time.
    void begin(int count, int periodMs);
    /// Ends it; whoever listens forgets what was raised.
    void end();
    /// Moves on by so much virtual time; the alarms to change, in order, none of them twice.
    std::vector<Toggle> advance(int ms);

private:
    void drawInto(std::vector<Toggle>& toggles);
    void shuffle();

    std::mt19937 m_random;
    int m_count = 0; ///< 0: not running
    int m_periodMs = 0;
    int m_untilNextMs = 0;
    std::vector<int> m_deck; ///< each index twice: the first to come raises, the second clears
    std::vector<bool> m_active;
    std::vector<bool> m_drawn; ///< by the advance under way
};

} // namespace simulation
