// The lines of a recording. Only this module uses the JSON library.
#pragma once
#include "host/base/api.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/bmc/record/recording.h"
#include "nkrovel20/tcimdatetime.h"

namespace velhost {

// Limits of one line.
inline constexpr std::size_t kLongestRecordingLine = std::size_t{4} << 20U;
inline constexpr int kDeepestRecordedValue = 4;
inline constexpr std::size_t kMostRecordedValues = 10'000;
inline constexpr int kMostRecordedNodes = 1024;
inline constexpr int kMostRecordedServiceProcessors = 65535;
inline constexpr int kLargestRecordedBlock = 1 << 20;
inline constexpr int kLargestUtcOffset = 24 * 60 - 1;
inline constexpr std::int64_t kLongestRecordedUs = 86'400'000'000;  // a day

/// How every recording begins; the first line is written with a single write.
inline constexpr std::string_view kRecordingStart = R"({"format":"velhost-recording","version":)";

struct TRecordedLine {
  enum class EKind { kIpmi, kDot, kClock };

  EKind kind = EKind::kIpmi;
  std::uint32_t number = 0;           ///< of the line, from 1
  int node = 0;                       ///< BMC node, or service processor
  std::vector<std::uint8_t> request;  ///< of kIpmi: the command buffer without trailing zeros
  std::uint8_t command = 0;           ///< this and the next two: of kDot
  std::vector<std::uint8_t> identifier;
  std::vector<std::uint8_t> parameters;
  bool answered = false;
  std::vector<std::uint8_t> response;  ///< possibly without trailing zeros
  int length = 0;
  std::int64_t us = 0;
  std::optional<TCIMDateTime> localTime;  ///< of kClock
};

/// The first line of a recording, without its newline: of version 2, or 1 if the header does not describe its run.
std::string FormatRecordingHeader(const TRecordingHeader& header);

/// Parses a line (without its newline). Anything unexpected throws TDiagnosedError (kMalformed) at its place in
/// line `number` of `file`.
TRecordingHeader ParseRecordingHeader(const std::string& file, std::string_view line);
TRecordedLine ParseRecordedLine(const std::string& file, std::string_view line, std::uint32_t number);

/// Parses ISO 8601 with an offset, as in recordings, or the 25 characters of a CIM datetime. Empty if the text is
/// neither.
VELHOST_API std::optional<TCIMDateTime> ParseMoment(const std::string& text);

}  // namespace velhost
