#include "randomalarms.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace simulation {

void RandomAlarms::begin(int count, int periodMs)
{
    m_count = count;
    m_periodMs = periodMs;
    m_untilNextMs = periodMs;
    m_active.resize(alarmCount, false);
}

void RandomAlarms::end()
{
    m_count = 0;
    m_deck.clear();
    m_active.clear();
}

std::vector<RandomAlarms::Toggle> RandomAlarms::advance(int ms)
{
    std::vector<Toggle> toggles;
    if (m_count == 0)
        return toggles;
    m_drawn.assign(alarmCount, false);
    for (m_untilNextMs -= ms; m_untilNextMs <= 0; m_untilNextMs += m_periodMs) {
        for (int i = 0; i < m_count; ++i)
            drawInto(toggles);
    }
    return toggles;
}

/// Passes over an alarm that is already among the toggles: raised and cleared at once, nobody would see it.
void RandomAlarms::drawInto(std::vector<Toggle>& toggles)
{
    if (m_deck.empty())
        shuffle();
    const auto drawn = std::find_if(m_deck.rbegin(), m_deck.rend(),
                                    [this](int index) { return !m_drawn[static_cast<std::size_t>(index)]; });
    if (drawn == m_deck.rend())
        return;
    const int index = *drawn;
    m_deck.erase(std::next(drawn).base());
    const auto place = static_cast<std::size_t>(index);
    m_drawn[place] = true;
    m_active[place] = !m_active[place];
    toggles.push_back({index, m_active[place]});
}

/// By hand: what the library's shuffle makes of a seed differs from machine to machine.
void RandomAlarms::shuffle()
{
    for (int i = 0; i < alarmCount; ++i)
        m_deck.insert(m_deck.end(), 2, i);
    for (std::size_t i = m_deck.size() - 1; i > 0; --i)
        std::swap(m_deck[i], m_deck[m_random() % (i + 1)]);
}

} // namespace simulation
