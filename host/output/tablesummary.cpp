#include "host/output/tablesummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/output/planturns.h"
#include "host/output/resulttext.h"

namespace velhost {

namespace {

constexpr std::size_t kColumn = 13;  // where the text after "  Instances" begins

void WriteInstances(TTableLayout& layout, const TInstanceCounts& counts) {
  std::uint64_t total = 0;
  for (const auto& [name, count] : counts) total += count;
  layout.Row(2, "Instances", kColumn, total == 0 ? "none" : std::to_string(total));
  const std::size_t digits = std::to_string(total).size();
  for (const auto& [name, count] : counts)
    layout.Paragraph(4, fmt::format("{:>{}}  {}", count, digits, SafeText(name)));
}

void WriteResult(TTableLayout& layout, const TResultSummary& summary) {
  const bool isComplete = summary.status == EResultStatus::kComplete;
  const std::string message = summary.message.empty() ? std::string() : ": " + SafeText(summary.message);
  layout.Row(2, "Result", kColumn, NameOfStatus(summary.status) + message,
             isComplete ? EEmphasis::kNone : EEmphasis::kFailure);
  for (const TReason& reason : summary.reasons) layout.Paragraph(4, ReasonText(reason), EEmphasis::kFailure);
}

}  // namespace

void WriteTableSummary(TTableLayout& layout, const TResultSummary& summary, const TInstanceCounts& counts) {
  layout.Line("Summary", EEmphasis::kHeading);
  WriteInstances(layout, counts);
  layout.Row(2, "Exchanges", kColumn, ExchangesText(summary));
  layout.Row(2, "Elapsed", kColumn, ElapsedText(summary.elapsedMs));
  WriteResult(layout, summary);
}

}  // namespace velhost
