// Side-by-side measurements: rounds of each candidate in turn, processor time, medians.
#pragma once

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// Processor time of this process in seconds.
inline double ProcessorTime() {
  timespec now = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct TCandidate {
  std::string name;
  std::function<void()> run;  ///< one round
  double units = 1;           ///< what one round counts, to print time per unit
};

/// The median seconds per unit of each candidate, measured in turn over `rounds` rounds.
inline std::vector<double> Measure(const std::vector<TCandidate>& candidates, int rounds) {
  std::vector<std::vector<double>> times(candidates.size());
  for (int round = 0; round <= rounds; ++round) {
    for (std::size_t i = 0; i < candidates.size(); ++i) {
      const double start = ProcessorTime();
      candidates[i].run();
      const double used = ProcessorTime() - start;
      if (round > 0) times[i].push_back(used / candidates[i].units);  // the first round warms up
    }
  }
  std::vector<double> medians;
  for (auto& series : times) {
    std::nth_element(series.begin(), series.begin() + static_cast<std::ptrdiff_t>(series.size() / 2), series.end());
    medians.push_back(series[series.size() / 2]);
  }
  return medians;
}

/// One line of the table: what, the target, the measured ratio, and absolute figures as a guide.
inline void Report(const std::string& what, const std::string& target, double ratio, const std::string& guide) {
  std::printf("| %s | %s | %.1f | %s |\n", what.c_str(), target.c_str(), ratio, guide.c_str());
  std::fflush(stdout);
}

inline std::string Microseconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f us", seconds * 1e6);
  return text;
}

}  // namespace bench
