#include "host/output/completioncodes.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>

namespace velhost {

namespace {

constexpr std::uint8_t kFirstGeneric = 0xC0;
constexpr std::array<std::string_view, 23> kGeneric = {
    "node busy",
    "invalid command",
    "command invalid for the given LUN",
    "timeout while processing command",
    "out of space",
    "reservation canceled or invalid reservation ID",
    "request data truncated",
    "request data length invalid",
    "request data field length limit exceeded",
    "parameter out of range",
    "cannot return number of requested data bytes",
    "requested sensor, data, or record not present",
    "invalid data field in request",
    "command illegal for specified sensor or record type",
    "command response could not be provided",
    "cannot execute duplicated request",
    "command response could not be provided: SDR repository in update mode",
    "command response could not be provided: device in firmware update mode",
    "command response could not be provided: BMC initialization in progress",
    "destination unavailable",
    "insufficient privilege level or other security restriction",
    "command or request parameter not supported in present state",
    "parameter illegal: sub-function disabled or unavailable"};

}  // namespace

std::string_view MeaningOfCompletionCode(std::uint8_t code) {
  if (code == 0x00) return "completed normally";
  if (code == 0xFF) return "unspecified error";
  if (code >= kFirstGeneric && code < kFirstGeneric + kGeneric.size()) {
    return kGeneric.at(static_cast<std::size_t>(code - kFirstGeneric));
  }
  if (code >= 0x01 && code <= 0x7E) return "device-specific (OEM) error";
  if (code >= 0x80 && code <= 0xBE) return "command-specific error";
  return "reserved completion code";
}

std::string DescribeCompletionCode(std::optional<std::uint8_t> code) {
  if (!code) return "lost: no answer";
  return fmt::format("0x{:02X} {}", *code, MeaningOfCompletionCode(*code));
}

}  // namespace velhost
