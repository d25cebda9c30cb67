#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

/// What the benchmarks measure with: wall-clock milliseconds, the median of several runs.

template<typename Work>
double millisecondsOf(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count();
}

template<typename Work>
double medianMilliseconds(int runs, const Work& work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i)
        times.push_back(millisecondsOf(work));
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

/// A line of the table that bench/run prints: what, how long, and what it is compared with.
inline void printRow(const char* what, double value, const char* unit, const char* baseline,
                     double baselineValue)
{
    std::printf("%-44s %10.2f %-6s %-30s %10.2f   x%.2f\n", what, value, unit, baseline,
                baselineValue, value / baselineValue);
    std::fflush(stdout);
}
