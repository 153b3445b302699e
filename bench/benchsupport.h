// Comparative measurements: runs the candidates in alternating rounds, takes medians, and prints the
// resulting row.
#pragma once

#include <fmt/format.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// Whether "--quick" is on the command line: everything runs once and small, for a test that only checks that
/// it runs.
inline bool IsQuick(int argc, char** argv) {
  return std::any_of(argv + 1, argv + argc, [](const char* argument) { return !std::strcmp(argument, "--quick"); });
}

/// Processor time of this process, in seconds.
inline double ProcessorTime() {
  timespec now = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Processor time, in seconds, of the terminated child processes of this process.
inline double ChildrenTime() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Wall-clock time in seconds; on a busy machine it includes the time of other programs.
inline double ElapsedTime() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Peak memory of this process, in bytes.
inline long PeakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss * 1024;
}

struct TCandidate {
  std::function<void()> run;  ///< one round
  double units = 1;           ///< number of units in one round, for the time per unit
};

inline double Median(std::vector<double> numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

/// The seconds per unit of each candidate in each of `rounds` rounds; the candidates alternate.
inline std::vector<std::vector<double>> MeasureRounds(const std::vector<TCandidate>& candidates, int rounds,
                                                      const std::function<double()>& clock = &ProcessorTime) {
  std::vector<std::vector<double>> times(candidates.size());
  for (int round = 0; round <= rounds; ++round) {
    for (std::size_t i = 0; i < candidates.size(); ++i) {
      const double start = clock();
      candidates[i].run();
      const double used = clock() - start;
      if (round > 0) times[i].push_back(used / candidates[i].units);  // the first round warms up
    }
  }
  return times;
}

/// The median seconds per unit of each candidate.
inline std::vector<double> Measure(const std::vector<TCandidate>& candidates, int rounds,
                                   const std::function<double()>& clock = &ProcessorTime) {
  std::vector<double> medians;
  for (const auto& series : MeasureRounds(candidates, rounds, clock)) medians.push_back(Median(series));
  return medians;
}

/// The median of the rounds' ratios: when rounds are long, a change in the machine's speed affects both sides of
/// a ratio alike.
inline double MedianRatio(const std::vector<double>& above, const std::vector<double>& below) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < above.size(); ++i) ratios.push_back(above[i] / below[i]);
  return Median(ratios);
}

/// One line of the table in docs/performance.md.
struct TRow {
  std::string number;    ///< number of the row, with a letter if several share one
  std::string what;      ///< what is measured, and what it is compared with
  std::string target;    ///< empty if there is none
  std::string measured;  ///< the ratio
  bool met = true;
  std::string absolute;  ///< times and rates on this machine, for orientation
};

inline void Print(const TRow& row) {
  const char* const met = row.target.empty() ? "" : row.met ? "yes" : "**no**";
  fmt::print("| {} | {} | {} | {} | {} | {} |\n", row.number, row.what, row.target, row.measured, met, row.absolute);
  std::fflush(stdout);
}

inline std::string Microseconds(double seconds) { return fmt::format("{:.2f} µs", seconds * 1e6); }

}  // namespace bench
