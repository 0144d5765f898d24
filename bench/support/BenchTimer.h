// Timing for benchmarks that compare two ways of doing one thing in the same
// run: each is repeated and its best time is kept, which filters out noise
// from the other processes of the machine.
#pragma once

#include <chrono>
#include <cstdio>
#include <functional>

namespace benchsupport {

inline double BestSeconds(const std::function<void()>& work, int repeats) {
    double best = 1e30;
    for (int i = 0; i < repeats; ++i) {
        auto start = std::chrono::steady_clock::now();
        work();
        double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (seconds < best) best = seconds;
    }
    return best;
}

// Prints one comparison line: ours against the reference, as a ratio of
// times, with the target the ratio must meet.
inline bool ReportRatio(const char* what, double ours, double reference, double target) {
    const double ratio = ours / reference;
    const bool met = ratio <= target;
    std::printf("%-40s ours %9.3f ms  reference %9.3f ms  ratio %5.2f  (target <= %.2f) %s\n", what,
                ours * 1e3, reference * 1e3, ratio, target, met ? "met" : "MISSED");
    return met;
}

}  // namespace benchsupport
