#include "host/output/resulttext.h"

#include <fmt/format.h>

#include <cstddef>
#include <numeric>
#include <optional>
#include <vector>

#include "host/base/text.h"
#include "host/output/completioncodes.h"
#include "host/output/planturns.h"

namespace velhost {

namespace {

constexpr std::uint32_t kNotPresent = 0xCB;

std::string AddressText(std::uint32_t address) { return fmt::format("0x{:06X}", address & 0xFFFFFF); }

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
    case EHow::kShort: return Counted(how.number, "byte") + " came";
    case EHow::kNotSent: return "not sent: the run was stopped";
    case EHow::kNotRecorded: return "the recording does not have it";
    case EHow::kAnswered: return AnsweredText(how.number);
    case EHow::kLost: break;
  }
  return "lost: no answer";
}

bool IsAbsent(const TMissing& missing) {
  // Once a storage area is open, no answer makes it absent.
  return missing.how == THow{EHow::kCompletionCode, kNotPresent} && !missing.where.offset;
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

}  // namespace velhost
