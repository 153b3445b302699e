#include "host/output/tablefindings.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/meaning/words.h"
#include "host/output/fieldtext.h"
#include "host/output/resulttext.h"
#include "host/output/tablesummary.h"

namespace velhost {

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kColumn = 13;  // after the longest label, "CORRECTED"
constexpr std::size_t kNarrow = 60;  // with fewer columns the text begins below the label
constexpr std::size_t kNarrowColumn = 4;
// In the summary.
constexpr std::size_t kWorst = 3;
constexpr std::size_t kWorstIndent = 4;
constexpr std::size_t kWorstColumn = 15;

EEmphasis EmphasisOf(const TFinding& finding) {
  return finding.isMasked ? EEmphasis::kDim : EmphasisOf(finding.severity);
}

// "Malformed TLP (occurred first)"
std::string TitleOf(const TFinding& finding) {
  std::vector<std::string> notes;
  if (finding.isFirst) notes.emplace_back("occurred first");
  if (finding.isMasked) notes.push_back(std::string(SeverityName(finding.severity)) + ", but masked: does not count");
  if (finding.isKnown) notes.emplace_back("known");
  const std::string text = FindingText(finding);
  return notes.empty() ? text : text + " (" + Listed(notes, ", ") + ")";
}

// "KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance2, chip 3"
std::string PlaceText(const TErrorRegister& place) {
  std::string text = SafeText(place.className) + " " + SafeText(PlaceInKey(place.key));
  if (place.origin.chip) text += fmt::format(", chip {}", *place.origin.chip);
  return text;
}

std::string RegisterText(const TFinding& finding) {
  const TErrorRegister& place = *finding.place;
  const bool isOneBit = finding.bits.find(':') == std::string::npos;
  return SafeText(place.name) + (isOneBit ? " bit " : " bits ") + SafeText(finding.bits) + " of " +
         HexNumber(place.value, place.isNarrow ? 4 : 8);
}

// What the findings cannot say because it was not read.
std::string UncertaintyText(const TResultSummary& summary, std::size_t unreadValues) {
  const auto unread = static_cast<std::size_t>(std::count_if(
      summary.unread.begin(), summary.unread.end(), [](const TUnread& one) { return one.code != EUnread::kAbsent; }));
  std::vector<std::string> texts;
  if (unreadValues > 0) texts.push_back(Counted(unreadValues, "value"));
  if (unread > 0) texts.push_back(Counted(unread, "instance"));
  const char* const more = summary.findings.empty() ? "there may be errors" : "there may be more errors";
  if (!texts.empty()) return Listed(texts, " and ") + " could not be read: " + more + ".";
  return summary.status == EResultStatus::kComplete ? std::string()
                                                    : std::string("Not everything was collected: ") + more + ".";
}

bool IsNarrow(const TTableLayout& layout) { return layout.Width() < kNarrow; }

void WriteLabelled(TTableLayout& layout, std::size_t indent, std::size_t column, const TFinding& finding,
                   const std::string& text) {
  const EEmphasis emphasis = EmphasisOf(finding);
  const std::string label(LabelOf(finding));
  if (IsNarrow(layout)) {
    layout.Paragraph(indent, label + "  " + text, emphasis);
  } else {
    layout.LabelledRow(indent, label, column, text, emphasis);
  }
}

}  // namespace

EEmphasis EmphasisOf(ESeverity severity) {
  switch (severity) {
    case ESeverity::kFatal: return EEmphasis::kFatal;
    case ESeverity::kError: return EEmphasis::kFailure;
    case ESeverity::kCorrected: break;
  }
  return EEmphasis::kCorrected;
}

void TFindingList::Add(const TInstance& instance, const TInstanceFacts& facts) {
  if (!facts.registers) return;
  std::set<std::string_view> evidence;
  const TErrorRegister* last = nullptr;
  for (const TFinding& finding : facts.findings) {
    if (finding.place.get() == last) continue;
    last = finding.place.get();
    for (const TEvidence& one : last->evidence) evidence.insert(one.registerName);
  }
  registers_ += facts.registers->size();
  for (const TRegisterFacts& one : *facts.registers) {
    if (one.meaning != nullptr && one.meaning->role == ERole::kErrors) ++errorRegisters_;
    const std::string& name = instance.Class().Properties().at(one.property)->Definition().name;
    if (evidence.count(name) > 0) fields_[{facts.key, name}] = FieldTexts(one);
  }
}

void TFindingList::Write(TTableLayout& layout, const TResultSummary& summary, std::size_t unreadValues) const {
  layout.Paragraph(0, summary.findings.empty() ? "Findings" : "Findings: " + CountsText(summary.findings),
                   EEmphasis::kHeading);
  // The registers whose evidence is shown, which is the same for all findings of a register.
  std::set<std::pair<std::string_view, std::string_view>> shown;
  for (const TFinding& finding : summary.findings) {
    const TErrorRegister& place = *finding.place;
    WriteFinding(layout, finding, finding.showsEvidence && shown.emplace(place.key, place.name).second);
  }
  if (summary.findings.empty()) layout.Paragraph(kIndent, NoneText());
  const std::string uncertainty = UncertaintyText(summary, unreadValues);
  if (!uncertainty.empty()) layout.Paragraph(kIndent, uncertainty, EEmphasis::kFailure);
  layout.BlankLine();
}

std::string TFindingList::NoneText() const {
  if (errorRegisters_ == 1) return "No error is set in the one error register that was read.";
  if (errorRegisters_ > 1)
    return fmt::format("No error is set in the {} error registers that were read.", errorRegisters_);
  if (registers_ == 0) return "Unknown: no register was read.";
  return "Unknown: no register was read that the schema describes as one of errors.";
}

void TFindingList::WriteShort(TTableLayout& layout, const std::vector<TFinding>& findings) const {
  const bool isUnknown = findings.empty() && errorRegisters_ == 0;
  layout.Row(kIndent, "Findings", kSummaryColumn, isUnknown ? "unknown" : CountsText(findings));
  const auto end = std::find_if(findings.begin(), findings.end(), [](const TFinding& one) { return one.isMasked; });
  const auto count = static_cast<std::size_t>(end - findings.begin());
  for (std::size_t i = 0; i < std::min(count, kWorst); ++i) {
    const std::string text = FindingText(findings[i]) + ": " + PlaceText(*findings[i].place);
    WriteLabelled(layout, kWorstIndent, kWorstColumn, findings[i], text);
  }
  if (count > kWorst) layout.Paragraph(kWorstIndent, fmt::format("and {} more, listed above", count - kWorst));
}

void TFindingList::WriteFinding(TTableLayout& layout, const TFinding& finding, bool withEvidence) const {
  const std::size_t column = IsNarrow(layout) ? kNarrowColumn : kColumn;
  WriteLabelled(layout, kIndent, kColumn, finding, TitleOf(finding));
  layout.Paragraph(column, PlaceText(*finding.place));
  layout.Paragraph(column, RegisterText(finding));
  if (withEvidence) WriteEvidence(layout, finding, column);
  if (finding.place->unknown.empty()) return;
  std::vector<std::string> names;
  for (const std::string& name : finding.place->unknown) names.push_back(SafeText(name));
  layout.Paragraph(column, "judged without " + Listed(names, " and ") + ", which could not be read",
                   EEmphasis::kFailure);
}

void TFindingList::WriteEvidence(TTableLayout& layout, const TFinding& finding, std::size_t column) const {
  const TErrorRegister& place = *finding.place;
  std::size_t longest = 0;
  for (const TEvidence& one : place.evidence) longest = std::max(longest, ColumnsOf(SafeText(one.registerName)));
  const std::size_t valueColumn = column + longest + 2;
  const std::size_t room = layout.Width() - layout.TextColumn(column, valueColumn);
  for (const TEvidence& one : place.evidence) {
    const std::string value = one.value ? HexNumber(*one.value, one.isNarrow ? 4 : 8) : "not read";
    const auto found = fields_.find({place.key, one.registerName});
    const auto lines = LinesOf(value, found == fields_.end() ? std::vector<std::string>() : found->second, room);
    layout.Rows(column, SafeText(one.registerName), valueColumn, lines);
  }
}

}  // namespace velhost
