#include "host/output/tablesummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <string_view>

#include "host/base/text.h"
#include "host/output/resulttext.h"

namespace velhost {

namespace {

constexpr std::size_t kColumn = 16;  // where the text after "  Machine type" begins

void Row(TTableLayout& layout, std::string_view label, const std::string& text, EEmphasis emphasis = EEmphasis::kNone) {
  layout.Row(2, label, kColumn, text, emphasis);
}

void WriteSource(TTableLayout& layout, const TSourceFacts& source) {
  const EEmphasis emphasis = source.simulated ? EEmphasis::kFailure : EEmphasis::kNone;
  Row(layout, "Source", SafeText(source.target) + (source.simulated ? " (simulated)" : ""), emphasis);
  if (!source.recorded.empty()) Row(layout, "Recorded", SafeText(source.recorded));
  if (!source.serial.empty()) Row(layout, "Serial", SafeText(source.serial));
  if (!source.uuid.empty()) Row(layout, "UUID", SafeText(source.uuid));
}

void WriteLabels(TTableLayout& layout, const std::map<std::string, std::string>& labels) {
  std::vector<std::string> texts;
  for (const auto& [key, value] : labels) texts.push_back(SafeText(key + "=" + value));
  if (!texts.empty()) Row(layout, "Labels", Listed(texts, ", "));
}

void WriteInstances(TTableLayout& layout, const TInstanceCounts& counts) {
  std::uint64_t total = 0;
  for (const auto& [name, count] : counts) total += count;
  Row(layout, "Instances", total == 0 ? "none" : std::to_string(total));
  const std::size_t digits = std::to_string(total).size();
  for (const auto& [name, count] : counts)
    layout.Paragraph(4, fmt::format("{:>{}}  {}", count, digits, SafeText(name)));
}

void WriteResult(TTableLayout& layout, const TResultSummary& summary) {
  const bool isComplete = summary.status == EResultStatus::kComplete;
  const EEmphasis emphasis = isComplete ? EEmphasis::kNone : EEmphasis::kFailure;
  Row(layout, "Result", StatusText(summary), emphasis);
  std::string_view className;
  for (const TReason& reason : summary.reasons) {
    if (!reason.className.empty() && reason.className != className) layout.Paragraph(4, SafeText(reason.className));
    className = reason.className;
    layout.Paragraph(className.empty() ? 4 : 6, SafeText(reason.message), emphasis);
  }
}

}  // namespace

void WriteTableSummary(TTableLayout& layout, const TResultHeader& header, const TResultSummary& summary,
                       const TInstanceCounts& counts) {
  layout.Line("Summary", EEmphasis::kHeading);
  WriteSource(layout, header.source);
  Row(layout, "Machine type", header.machineType.empty() ? "unknown" : SafeText(header.machineType));
  WriteLabels(layout, header.run.labels);
  WriteInstances(layout, counts);
  Row(layout, "Exchanges", ExchangesText(summary));
  Row(layout, "Elapsed", ElapsedText(summary.elapsedMs));
  WriteResult(layout, summary);
}

}  // namespace velhost
