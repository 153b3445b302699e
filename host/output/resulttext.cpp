#include "host/output/resulttext.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <map>
#include <numeric>
#include <optional>
#include <vector>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/output/planturns.h"
#include "wire/commandbuffer.h"
#include "wire/registerread.h"

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
  return HexByte(*code).append(" ").append(MeaningOfCompletionCode(*code));
}

namespace {

std::string AddressText(std::uint32_t address) { return HexNumber(address, wire::RegisterRead::kAddressSize); }

std::string AddressesText(const std::vector<std::uint32_t>& addresses) {
  if (addresses.empty()) return "no address";
  std::vector<std::string> texts;
  texts.reserve(addresses.size());
  for (const std::uint32_t address : addresses) texts.push_back(AddressText(address));
  return Listed(texts, ", ");
}

std::string AnsweredText(std::uint32_t count) {
  if (count == 0) return "no address answered";
  return fmt::format("{} address{} answered", count, count == 1 ? "" : "es");
}

}  // namespace

std::string HowText(THow how) {
  switch (how.how) {
    case EHow::kCompletionCode: return DescribeCompletionCode(static_cast<std::uint8_t>(how.number));
    case EHow::kShort: return Counted(how.number, "byte") + " received";
    case EHow::kNotSent: return "not sent: the run was stopped";
    case EHow::kNotRecorded: return "not in the recording";
    case EHow::kAnswered: return AnsweredText(how.number);
    case EHow::kLost: break;
  }
  return "lost: no answer";
}

bool IsAbsent(const TMissing& missing) {
  // Once a storage area is open, no answer makes it absent.
  return missing.how == THow{EHow::kCompletionCode, wire::kNotPresent} && !missing.where.offset;
}

std::string WhyText(const TMissing& missing) { return IsAbsent(missing) ? "absent" : HowText(missing.how); }

std::string_view PlaceInKey(std::string_view key) {
  const std::size_t slash = key.find('/');
  return slash == std::string_view::npos ? std::string_view() : key.substr(slash + 1);
}

std::string WhereText(const TWhere& where) {
  if (where.address) return AddressText(*where.address);
  if (where.addresses) return AddressesText(*where.addresses);
  if (where.index) return fmt::format("index {}", *where.index);
  return where.offset ? fmt::format("offset {}", *where.offset) : std::string();
}

std::string MissingText(const TMissing& missing) {
  const std::string where = WhereText(missing.where);
  return SafeText(missing.property) + (where.empty() ? "" : " at " + where) + ": " + HowText(missing.how);
}

std::string ReasonText(const TReason& reason) {
  return SafeText(reason.className.empty() ? reason.message : reason.className + ": " + reason.message);
}

std::string ElapsedText(std::int64_t milliseconds) {
  const std::int64_t seconds = milliseconds / 1000;
  if (seconds < 60) return fmt::format("{}.{:03} s", seconds, milliseconds % 1000);
  if (seconds < 3600) return fmt::format("{} min {}.{} s", seconds / 60, seconds % 60, milliseconds % 1000 / 100);
  return fmt::format("{} h {} min {} s", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::string SimulatedText(const TSourceFacts& source) {
  return "SIMULATED: " + SafeText(source.target) + ", not a real service processor";
}

std::string MachineText(const TResultHeader& header) {
  return SafeText(fmt::format("machine type {}, {} {} (interface version {})", header.machineType, header.plugin.name,
                              header.plugin.version, header.plugin.interfaceVersion));
}

std::string StatusText(const TResultSummary& summary) {
  const std::string name = NameOfStatus(summary.status);
  const bool explains = summary.status == EResultStatus::kFailed || summary.status == EResultStatus::kUnreachable;
  return explains ? name + ": " + SafeText(summary.message) : name;
}

std::string ExchangesText(const TResultSummary& summary) {
  const auto add = [](std::uint64_t sum, const TExchangeFailure& failure) { return sum + failure.repeat; };
  const auto failed = std::accumulate(summary.failed.begin(), summary.failed.end(), std::uint64_t{0}, add);
  return fmt::format("{}, {} failed", summary.exchanges, failed == 0 ? "none" : std::to_string(failed));
}

namespace {

std::string SourceComment(const TSourceFacts& source) {
  std::string text = "source: " + source.target;
  if (!source.recorded.empty()) text += ", recorded " + source.recorded;
  if (!source.serial.empty()) text += ", serial number " + source.serial;
  if (!source.uuid.empty()) text += ", UUID " + source.uuid;
  return SafeText(text);
}

}  // namespace

std::vector<std::string> HeaderComments(const TResultHeader& header, ELabels labels) {
  std::vector<std::string> lines;
  if (header.source.simulated) lines.push_back(SimulatedText(header.source));
  lines.push_back(SafeText(fmt::format("Instances collected by velhost {}, run {}, started {}, on {}",
                                       header.run.velhost, header.run.id, header.run.started, header.run.host)));
  lines.push_back(SourceComment(header.source));
  if (labels == ELabels::kShown) {
    for (const auto& [key, value] : header.run.labels) lines.push_back(SafeText("label " + key + "=" + value));
  }
  lines.push_back(MachineText(header));
  lines.push_back(
      SafeText(fmt::format("schema: {}, SHA-256 {}", Listed(header.schema.paths, ", "), header.schema.sha256)));
  return lines;
}

std::vector<std::string> InstanceComments(const TInstanceFacts& facts) {
  std::vector<std::string> lines = {SafeText(facts.key)};
  for (const TMissing& missing : facts.missing) lines.push_back("missing: " + MissingText(missing));
  return lines;
}

std::vector<std::string> SummaryComments(const TResultSummary& summary) {
  std::vector<std::string> lines = {"status: " + StatusText(summary),
                                    fmt::format("exit status: {}", summary.exitStatus)};
  for (const TReason& reason : summary.reasons) lines.push_back("reason: " + ReasonText(reason));
  const TPlanTurns turns(summary.plan);
  for (const TUnread& unread : summary.unread) {
    lines.push_back(SafeText("unread: " + turns.Key(unread.turn, unread.place) + ": " + NameOfUnread(unread.code)));
  }
  lines.push_back("exchanges: " + ExchangesText(summary));
  lines.push_back("elapsed: " + ElapsedText(summary.elapsedMs));
  return lines;
}

}  // namespace velhost
