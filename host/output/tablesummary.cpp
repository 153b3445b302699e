#include "host/output/tablesummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/output/completioncodes.h"
#include "host/output/summarytext.h"

namespace velhost {

namespace {

constexpr std::size_t kColumn = 13;  // where the text after "  Instances" begins

struct TFailureWidths {
  std::size_t count = 0;
  std::size_t node = 0;
  std::size_t kind = 0;
};

TFailureWidths WidthsOf(const std::vector<TFailureGroup>& groups) {
  TFailureWidths widths;
  for (const TFailureGroup& group : groups) {
    widths.count = std::max(widths.count, std::to_string(group.count).size());
    widths.node = std::max(widths.node, NodeText(group.exchange).size());
    widths.kind = std::max(widths.kind, group.exchange.kind.size());
  }
  return widths;
}

void WriteFailedExchanges(TTableLayout& layout, const std::vector<TFailedExchange>& failures) {
  constexpr std::size_t kIndent = 6;
  const auto groups = GroupFailures(failures);
  const TFailureWidths widths = WidthsOf(groups);
  const std::string* className = nullptr;
  for (const TFailureGroup& group : groups) {
    const TFailedExchange& exchange = group.exchange;
    if (className == nullptr || *className != exchange.className) layout.Paragraph(4, SafeText(exchange.className));
    className = &exchange.className;
    const std::string label = fmt::format("{:>{}} x  {:<{}}  {:<{}}", group.count, widths.count, NodeText(exchange),
                                          widths.node, SafeText(exchange.kind), widths.kind);
    layout.Row(kIndent, label, kIndent + label.size() + 2, DescribeCompletionCode(exchange.completionCode),
               EEmphasis::kFailure);
  }
}

void WriteInstances(TTableLayout& layout, const TInstanceCounts& counts) {
  std::uint64_t total = 0;
  for (const auto& [name, count] : counts) total += count;
  layout.Row(2, "Instances", kColumn, total == 0 ? "none" : std::to_string(total));
  const std::size_t digits = std::to_string(total).size();
  for (const auto& [name, count] : counts)
    layout.Paragraph(4, fmt::format("{:>{}}  {}", count, digits, SafeText(name)));
}

void WriteResult(TTableLayout& layout, const TCollectionSummary& summary) {
  if (!summary.partial) return layout.Row(2, "Result", kColumn, "complete");
  const std::string reason = summary.partialReason.empty() ? std::string() : ": " + SafeText(summary.partialReason);
  layout.Row(2, "Result", kColumn, "partial" + reason, EEmphasis::kFailure);
  for (const TRequestFailure& failure : summary.failures) {
    layout.Paragraph(4, SafeText(failure.className));
    layout.Paragraph(6, SafeText(failure.message), EEmphasis::kFailure);
  }
}

}  // namespace

void WriteTableSummary(TTableLayout& layout, const TCollectionSummary& summary, const TInstanceCounts& counts) {
  layout.Line("Summary", EEmphasis::kHeading);
  WriteInstances(layout, counts);
  const std::size_t failed = summary.failedExchanges.size();
  layout.Row(2, "Exchanges", kColumn,
             fmt::format("{}, {} failed", summary.exchanges, failed == 0 ? "none" : std::to_string(failed)));
  WriteFailedExchanges(layout, summary.failedExchanges);
  layout.Row(2, "Elapsed", kColumn, ElapsedText(summary.elapsedMs));
  WriteResult(layout, summary);
}

}  // namespace velhost
