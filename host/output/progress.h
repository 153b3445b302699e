// The progress line of a long collection.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "host/bmc/supervision.h"

namespace velhost {

/// Where the line is drawn, and the clock that times it.
struct TProgressTarget {
  using TClock = std::chrono::steady_clock;

  std::function<void(std::string_view)> write;
  std::function<int()> width;  ///< columns; called for each drawing, since a window may be resized
  std::function<TClock::time_point()> now;

  /// Standard error and the system clock. Failed writes are ignored.
  static TProgressTarget StandardError(std::function<int()> width);
};

/// One line, redrawn in place after an exchange, at most ten times a second:
///
///   [3/7] KROSG_VO_MEMCTL_StatisticData  reads 60 of 84, 1234 exchanges, 56/s, 0:22
///   [7/7] KROSG_DCAPFile  node 0 cpu_err 12.0 of 64.0 kB, 0:41 left  reads 84 of 84, 1234 exchanges, 56/s, 0:22
///
/// A capture file counts as being read from the response to its size request until the response to its close request.
/// If the terminal is too narrow, whole parts are left out and the class name is cut, but figures are never cut. Uses
/// only blanks and carriage returns to redraw, so that it is harmless in a file.
class TProgressLine : public IExchangeObserver {
 public:
  explicit TProgressLine(TProgressTarget target);
  /// Clears the line.
  ~TProgressLine() override;

  /// How many reads are planned in all, and how many of them have been made, which is asked for at each drawing.
  void SetPlanned(std::uint64_t total, std::function<std::uint64_t()> made);
  /// Class `number` (from 1) of `count` is collected from now on.
  void BeginClass(std::size_t number, std::size_t count, const std::string& name);
  void OnIpmi(const TIpmiExchange& exchange) override;
  void OnDot(const TDotExchange& exchange) override;
  /// Removes the line: at the end, and before anything else is written to the same place. The next exchange may draw
  /// it again.
  void Clear();
  /// Removes the line until Resume, because something else is being written there.
  void Hold();
  /// Lets the next exchange draw the line again.
  void Resume();

 private:
  struct TCapture {
    std::string name;
    std::uint64_t size;  ///< 0 if the service processor did not report it
    std::uint64_t read = 0;
    TProgressTarget::TClock::time_point start;
  };

  void Count();
  void DrawWhenDue();
  std::string Line(TProgressTarget::TClock::time_point now, std::size_t room) const;
  std::string CaptureText() const;
  std::string PlannedText() const;
  std::string TimeLeftText(TProgressTarget::TClock::time_point now) const;
  void BeginCapture(const TIpmiExchange& exchange);

  TProgressTarget target_;
  TProgressTarget::TClock::time_point start_;
  std::optional<TProgressTarget::TClock::time_point> drawn_;
  std::size_t columns_ = 0;  ///< that the line occupies
  bool held_ = false;
  std::string place_;  ///< "[3/7]"
  std::string class_;
  std::uint64_t planned_ = 0;  ///< 0 if nothing is planned, or the plan is not known
  std::function<std::uint64_t()> plannedMade_;
  std::uint64_t exchanges_ = 0;
  std::optional<TCapture> capture_;
};

}  // namespace velhost
