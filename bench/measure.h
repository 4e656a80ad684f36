// Measuring ours beside a rival: both run interleaved in one process, and the median of the ratios is
// printed, so that what else the machine does meets both.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace morvane::bench {

inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

inline double percentile95(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[(values.size() * 95) / 100];
}

/// Seconds that `work` took.
inline double seconds(const std::function<void()>& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// A piece of work: `prepare`, which may be empty, runs before each measured `run`.
struct Work {
    std::function<void()> run;
    std::function<void()> prepare = {};

    double measure() const {
        if (prepare)
            prepare();
        return seconds(run);
    }
};

/// Runs both `rounds` times, turn about, and prints medians, the median ratio and the goal.
inline void compare(const std::string& name, const Work& ours, const std::string& rivalName,
                    const Work& rival, double goal, std::size_t rounds = 5) {
    std::vector<double> mine;
    std::vector<double> theirs;
    std::vector<double> ratios;
    for (std::size_t round = 0; round < rounds; ++round) {
        mine.push_back(ours.measure());
        theirs.push_back(rival.measure());
        ratios.push_back(mine.back() / theirs.back());
    }
    std::printf("%-34s %10.2f ms   %-28s %10.2f ms   ratio %6.3f   goal %.2f\n", name.c_str(),
                median(mine) * 1e3, rivalName.c_str(), median(theirs) * 1e3, median(ratios), goal);
    std::fflush(stdout);
}

/// Runs alone and prints the median.
inline void measureAlone(const std::string& name, const Work& ours, const std::string& goal,
                         std::size_t rounds = 5) {
    std::vector<double> mine;
    for (std::size_t round = 0; round < rounds; ++round)
        mine.push_back(ours.measure());
    std::printf("%-34s %10.2f ms   goal %s\n", name.c_str(), median(mine) * 1e3, goal.c_str());
    std::fflush(stdout);
}

}  // namespace morvane::bench
