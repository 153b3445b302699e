#include "host/output/tablesummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/output/planturns.h"
#include "host/output/resulttext.h"
#include "wire/registerread.h"

namespace velhost {

namespace {

constexpr std::size_t kIndent = 4;
constexpr std::size_t kLeastReason = 20;

std::size_t TextColumn(const std::vector<TMissingLine>& lines, std::size_t width) {
  std::size_t longest = 0;
  for (const TMissingLine& line : lines) longest = std::max(longest, ColumnsOf(line.place));
  return std::min(kIndent + longest + 2, width / 2);
}

// The columns that the lines of a class take for what is missing and where it is.
struct TWidths {
  std::size_t what = 0;
  std::size_t where = 0;
};

std::map<std::string, TWidths> WidthsOf(const std::vector<TMissingLine>& lines) {
  std::map<std::string, TWidths> widths;
  for (const TMissingLine& line : lines) {
    TWidths& ofClass = widths[line.className];
    ofClass.what = std::max(ofClass.what, ColumnsOf(line.what));
    ofClass.where = std::max(ofClass.where, ColumnsOf(line.where));
  }
  return widths;
}

std::string Padded(const std::string& text, std::size_t width) {
  if (width == 0) return {};
  const std::size_t columns = ColumnsOf(text);
  return text + std::string(columns < width ? width - columns + 2 : 2, ' ');
}

// In columns if they leave room for the reason, otherwise one after the other.
std::string TextOf(const TMissingLine& line, TWidths widths, std::size_t room) {
  if (widths.what + widths.where + kLeastReason > room) widths = {ColumnsOf(line.what), ColumnsOf(line.where)};
  return Padded(line.what, widths.what) + Padded(line.where, widths.where) + line.why;
}

std::vector<TMissingLine> WithoutAbsent(const std::vector<TMissingLine>& lines) {
  std::vector<TMissingLine> failed;
  std::copy_if(lines.begin(), lines.end(), std::back_inserter(failed), [](const auto& line) { return !line.isAbsent; });
  return failed;
}

// Writes a section of the lines, what failed before what is absent, under their classes.
void WriteLines(TTableLayout& layout, std::string_view title, const std::vector<TMissingLine>& lines,
                EAbsent absence = EAbsent::kShown) {
  if (absence == EAbsent::kLeftOut) return WriteLines(layout, title, WithoutAbsent(lines));
  if (lines.empty()) return;
  const std::size_t column = TextColumn(lines, layout.Width());
  const auto widths = WidthsOf(lines);
  layout.Line(title, EEmphasis::kHeading);
  for (const bool absent : {false, true}) {
    const std::string* className = nullptr;
    for (const TMissingLine& line : lines) {
      if (line.isAbsent != absent) continue;
      if (className == nullptr || *className != line.className) layout.Paragraph(2, line.className);
      className = &line.className;
      const std::string text = TextOf(line, widths.at(line.className), layout.Width() - column);
      layout.Row(kIndent, line.place, column, text, absent ? EEmphasis::kNone : EEmphasis::kFailure);
    }
  }
  layout.BlankLine();
}

// What an exchange was for.
struct TSubject {
  static constexpr int kBlock = -1;
  static constexpr int kOther = -2;

  std::uint32_t turn;
  int owner;
  int number;  // of the place; kBlock for a register block, kOther if no instance depends on it or none is known
  std::optional<std::uint32_t> address{};  // of a register whose instance is not known
  bool operator<(const TSubject& other) const {
    return std::tie(turn, owner, number, address) < std::tie(other.turn, other.owner, other.number, other.address);
  }
};

TSubject SubjectOf(const TExchangeFailure& failure) {
  const EExchangeKind kind = failure.kind;
  if (kind == EExchangeKind::kDot) return {failure.turn, failure.owner, TSubject::kBlock};
  const bool isUseless = kind == EExchangeKind::kClose || kind == EExchangeKind::kOther;
  if (failure.isPlaced && !isUseless) return {failure.turn, failure.owner, failure.place.number};
  return {failure.turn, failure.owner, TSubject::kOther, failure.address};
}

// The failed exchanges, equal ones counted.
class TFailures {
 public:
  explicit TFailures(const std::vector<TExchangeFailure>& failed) {
    for (const TExchangeFailure& failure : failed) Add(failure);
  }

  // "open: lost: no answer", "2 x register: 0xC3 ...; register: 9 bytes received"; empty if none failed.
  std::string Of(const TSubject& subject) const {
    const auto found = endings_.find(subject);
    if (found == endings_.end()) return {};
    std::string text;
    for (const TEnding& ending : found->second) {
      if (!text.empty()) text += "; ";
      if (ending.count > 1) text += fmt::format("{} x ", ending.count);
      text += fmt::format("{}: {}", NameOfKind(ending.kind), HowText(ending.how));
    }
    return text;
  }
  std::vector<TSubject> Others() const {
    std::vector<TSubject> others;
    for (const auto& [subject, endings] : endings_) {
      if (subject.number == TSubject::kOther) others.push_back(subject);
    }
    return others;
  }

 private:
  struct TEnding {
    EExchangeKind kind;
    THow how;
    std::uint64_t count;
  };

  void Add(const TExchangeFailure& failure) {
    auto& endings = endings_[SubjectOf(failure)];
    const auto same = std::find_if(endings.begin(), endings.end(), [&failure](const TEnding& ending) {
      return ending.kind == failure.kind && ending.how == failure.how;
    });
    if (same != endings.end()) {
      same->count += failure.repeat;
    } else {
      endings.push_back({failure.kind, failure.how, failure.repeat});
    }
  }

  std::map<TSubject, std::vector<TEnding>> endings_;
};

const char* WordsOf(EUnread code) {
  switch (code) {
    case EUnread::kRegisterUnread: return "no register was delivered";
    case EUnread::kFileUnread: return "the file was not read";
    case EUnread::kBlockUnread: return "the register block was not received";
    case EUnread::kBlockUndecodable: return "the register block has no valid time";
    case EUnread::kDiscarded: return "discarded because another register block has no valid time";
    case EUnread::kAbsent: break;
  }
  return "absent";
}

std::string UnreadText(const TUnread& unread, const TFailures& failures) {
  const std::string words = WordsOf(unread.code);
  std::string why;
  if (unread.code == EUnread::kRegisterUnread || unread.code == EUnread::kFileUnread) {
    why = failures.Of({unread.turn, unread.place.owner, unread.place.number});
  } else if (unread.code == EUnread::kBlockUnread) {
    why = failures.Of({unread.turn, unread.place.owner, TSubject::kBlock});
  }
  return why.empty() ? words : words + "; " + why;
}

}  // namespace

void TMissingList::Add(const std::string& className, const TInstanceFacts& facts) {
  const std::string place = SafeText(PlaceInKey(facts.key));
  for (const TMissing& missing : facts.missing) {
    lines_.push_back({SafeText(className), place, SafeText(missing.property), WhereText(missing.where),
                      WhyText(missing), IsAbsent(missing)});
  }
}

std::size_t TMissingList::Failed() const {
  return static_cast<std::size_t>(
      std::count_if(lines_.begin(), lines_.end(), [](const TMissingLine& line) { return !line.isAbsent; }));
}

void TMissingList::Write(TTableLayout& layout, EAbsent absent) const { WriteLines(layout, "Missing", lines_, absent); }

void WriteUnread(TTableLayout& layout, const TResultSummary& summary, EAbsent absent) {
  const TPlanTurns turns(summary.plan);
  const TFailures failures(summary.failed);
  std::vector<TMissingLine> lines;
  lines.reserve(summary.unread.size());
  for (const TUnread& unread : summary.unread) {
    lines.push_back({SafeText(turns.ClassName(unread.turn)), SafeText(PlaceInKey(turns.Key(unread.turn, unread.place))),
                     "", "", UnreadText(unread, failures), unread.code == EUnread::kAbsent});
  }
  WriteLines(layout, "Unread", lines, absent);
  lines.clear();
  for (const TSubject& other : failures.Others()) {
    const std::string address = other.address ? HexNumber(*other.address, wire::RegisterRead::kAddressSize) : "";
    lines.push_back(
        {SafeText(turns.ClassName(other.turn)), fmt::format("node {}", other.owner), "", address, failures.Of(other)});
  }
  WriteLines(layout, "Other failed exchanges", lines);
}

namespace {

void Row(TTableLayout& layout, std::string_view label, const std::string& text, EEmphasis emphasis = EEmphasis::kNone) {
  layout.Row(2, label, kSummaryColumn, text, emphasis);
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
  if (header.onlyFindings) Row(layout, "Shown", "only instances with a finding");
  Row(layout, "Exchanges", ExchangesText(summary));
  Row(layout, "Elapsed", ElapsedText(summary.elapsedMs));
  WriteResult(layout, summary);
}

}  // namespace velhost
