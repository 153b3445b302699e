// The format `table`: one block for each instance, what is wrong, what is missing, and a summary, for people.
#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/output/capturefiles.h"
#include "host/output/fieldtext.h"
#include "host/output/propertytext.h"
#include "host/output/resulttext.h"
#include "host/output/tablefindings.h"
#include "host/output/tablelayout.h"
#include "host/output/tablesummary.h"
#include "host/output/writers.h"

namespace velhost {

namespace {

/// Every block is flushed at once, so that a slow collection can be watched.
class TTableWriter : public IResultWriter {
 public:
  TTableWriter(ITextSink& sink, const TTableOptions& options) : layout_(sink, options), dumpLines_(options.dumpLines) {}
  void Begin(const TResultHeader& header) override;
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

 private:
  void Count(const std::string& className);
  void Heading(const TInstance& instance, const TInstanceFacts& facts);
  void Properties(const TInstance& instance, const TInstanceFacts& facts);
  void Dump(const TCaptureFile& capture);

  TTableLayout layout_;
  std::size_t dumpLines_;
  TResultHeader header_;
  TInstanceCounts counts_;
  TMissingList missing_;
  TFindingList findings_;
};

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;
constexpr std::size_t kNarrow = 56;

// The column of the values: after the longest name, but never beyond the middle. If half of a line is too little for a
// register, values are below their names.
std::size_t ValueColumn(const std::vector<TPropertyText>& properties, std::size_t width) {
  std::size_t longest = 0;
  for (const TPropertyText& property : properties) longest = std::max(longest, ColumnsOf(property.name));
  const std::size_t column = kIndent + longest + kGap;
  if (column <= width / 2) return column;
  return width < kNarrow ? 2 * kIndent : width / 2;
}

}  // namespace

void TTableWriter::Begin(const TResultHeader& header) {
  header_ = header;
  if (!header.source.simulated) return;
  layout_.Paragraph(0, SimulatedText(header.source), EEmphasis::kFailure);
  layout_.BlankLine();
  layout_.Flush();
}

void TTableWriter::Count(const std::string& className) {
  const auto known = std::find_if(counts_.begin(), counts_.end(),
                                  [&className](const auto& entry) { return entry.first == className; });
  if (known == counts_.end()) {
    counts_.emplace_back(className, 1);
  } else {
    ++known->second;
  }
}

void TTableWriter::Instance(const TInstance& instance, const TInstanceFacts& facts) {
  Count(instance.Class().Name());
  missing_.Add(instance.Class().Name(), facts);
  findings_.Add(instance, facts);
  if (header_.onlyFindings && facts.findings.empty()) return;
  Heading(instance, facts);
  Properties(instance, facts);
  layout_.BlankLine();
  layout_.Flush();
}

void TTableWriter::Heading(const TInstance& instance, const TInstanceFacts& facts) {
  const std::string name = SafeText(instance.Class().Name());
  const std::string place = SafeText(PlaceInKey(facts.key));
  const std::string both = place.empty() ? name : name + "  " + place;
  if (ColumnsOf(both) <= layout_.Width()) return layout_.Line(both, EEmphasis::kHeading);
  layout_.Line(name, EEmphasis::kHeading);
  layout_.Paragraph(kIndent, place, EEmphasis::kHeading);
}

void TTableWriter::Properties(const TInstance& instance, const TInstanceFacts& facts) {
  const auto capture = CaptureFileOf(instance);
  const auto properties = PropertyTexts(instance, facts, capture ? &*capture : nullptr);
  const std::size_t column = ValueColumn(properties, layout_.Width());
  const std::size_t room = layout_.Width() - layout_.TextColumn(kIndent, column);
  for (const TPropertyText& property : properties) {
    const EEmphasis ofLabel = property.emphasis == EEmphasis::kDim ? EEmphasis::kDim : EEmphasis::kNone;
    layout_.Rows(kIndent, property.name, column, LinesOf(property.text, property.fields, room), ofLabel,
                 property.emphasis);
    if (property.isCapture) Dump(*capture);
  }
}

void TTableWriter::Dump(const TCaptureFile& capture) {
  const std::size_t perLine = layout_.Width() >= kIndent + DumpColumns(16) ? 16 : 8;
  const std::string indent(kIndent, ' ');
  std::size_t lines = 0;
  DumpBytes(capture.data, perLine, [&](std::string_view line) {
    if (lines++ < dumpLines_) layout_.Line(indent + std::string(line));
  });
  if (lines <= dumpLines_) return;
  layout_.Paragraph(kIndent, "... " + Counted(lines - dumpLines_, "more line") + "; --capture-dir writes the file");
}

void TTableWriter::End(const TResultSummary& summary) {
  const EAbsent absent = header_.onlyFindings ? EAbsent::kLeftOut : EAbsent::kShown;
  findings_.Write(layout_, summary, missing_.Failed());
  missing_.Write(layout_, absent);
  WriteUnread(layout_, summary, absent);
  WriteTableSummary(layout_, header_, summary, counts_);
  findings_.WriteShort(layout_, summary.findings);
  layout_.Flush();
}

std::unique_ptr<IResultWriter> MakeTableWriter(ITextSink& sink, const TTableOptions& options) {
  return std::make_unique<TTableWriter>(sink, options);
}

}  // namespace velhost
