#include "host/output/summarytext.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

#include "host/output/completioncodes.h"
#include "host/output/tablelayout.h"

namespace velhost {

namespace {

// Sorts groups by the order of their classes, then by their own.
void SortByClass(std::vector<TFailureGroup>& groups) {
  std::map<std::string, std::size_t> places;
  for (const TFailureGroup& group : groups) places.emplace(group.exchange.className, places.size());
  std::stable_sort(groups.begin(), groups.end(), [&places](const TFailureGroup& a, const TFailureGroup& b) {
    return places[a.exchange.className] < places[b.exchange.className];
  });
}

}  // namespace

std::string NodeText(const TFailedExchange& exchange) {
  return fmt::format("{} {}", exchange.kind == "dot" ? "sp" : "node", exchange.node);
}

std::vector<TFailureGroup> GroupFailures(const std::vector<TFailedExchange>& failures) {
  std::vector<TFailureGroup> groups;
  std::map<std::tuple<std::string, int, std::string, int>, std::size_t> places;
  for (const TFailedExchange& failure : failures) {
    const int code = failure.completionCode ? int{*failure.completionCode} : -1;
    const auto [place, isNew] =
        places.emplace(std::tuple(failure.className, failure.node, failure.kind, code), groups.size());
    if (isNew) groups.push_back({failure, 0});
    ++groups[place->second].count;
  }
  SortByClass(groups);
  return groups;
}

std::string ElapsedText(std::int64_t milliseconds) {
  const std::int64_t seconds = milliseconds / 1000;
  if (seconds < 60) return fmt::format("{}.{:03} s", seconds, milliseconds % 1000);
  if (seconds < 3600) return fmt::format("{} min {}.{} s", seconds / 60, seconds % 60, milliseconds % 1000 / 100);
  return fmt::format("{} h {} min {} s", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::string HeaderText(const TCollectionHeader& header) {
  return SafeText(fmt::format("machine type {}, {} {} (interface version {})", header.machineType, header.pluginName,
                              header.pluginVersion, header.pluginInterfaceVersion));
}

std::vector<std::string> SummaryLines(const TCollectionSummary& summary) {
  std::vector<std::string> lines;
  const std::string reason = summary.partialReason.empty() ? std::string() : ": " + SafeText(summary.partialReason);
  lines.push_back(summary.partial ? "partial" + reason : "complete");
  for (const TRequestFailure& failure : summary.failures) {
    lines.push_back(fmt::format("request failed: {}: {}", SafeText(failure.className), SafeText(failure.message)));
  }
  lines.push_back(fmt::format("exchanges: {}, {} failed", summary.exchanges, summary.failedExchanges.size()));
  for (const TFailureGroup& group : GroupFailures(summary.failedExchanges)) {
    lines.push_back(fmt::format("{} x {}, {}, {}: {}", group.count, SafeText(group.exchange.className),
                                NodeText(group.exchange), SafeText(group.exchange.kind),
                                DescribeCompletionCode(group.exchange.completionCode)));
  }
  lines.push_back("elapsed: " + ElapsedText(summary.elapsedMs));
  return lines;
}

}  // namespace velhost
