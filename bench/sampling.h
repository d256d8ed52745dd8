#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <functional>
#include <vector>

/// The middle of the samples; the upper one of two.
inline double median(std::vector<double> samples)
{
    const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return *middle;
}

/// Something that is done once, and the us that it took.
using Action = std::function<double()>;

template <typename Work>
double timeUs(Work work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1000;
}

/// The median time in us of each action. They take turns, so that whatever else the machine does meets all of
/// them alike; the first rounds are not counted.
inline std::vector<double> medianTimesUs(const std::vector<Action>& actions, int rounds, int warmUpRounds)
{
    std::vector<std::vector<double>> samples(actions.size());
    for (int round = -warmUpRounds; round < rounds; ++round) {
        for (std::size_t i = 0; i < actions.size(); ++i) {
            const double us = actions[i]();
            if (round >= 0)
                samples[i].push_back(us);
        }
    }
    std::vector<double> medians;
    for (const auto& of : samples)
        medians.push_back(median(of));
    return medians;
}
