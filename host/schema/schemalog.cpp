#include "host/schema/schemalog.h"

#include <algorithm>

#include "host/base/text.h"
#include "host/base/utf8.h"

namespace velhost {

TSchemaSource::TSchemaSource(std::string name, std::string text) : name_(std::move(name)), text_(std::move(text)) {
  if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0) text_.erase(0, 3);
  // The second NUL is that of the string itself. The first replaces the last line end if there is one, because
  // appending would copy the text.
  if (text_.empty() || text_.back() != '\n') text_ += '\n';
  text_.back() = '\0';
  size_ = text_.size() - 1;
}

void TSchemaSource::FindLines() const {
  const std::string_view text = Text();
  starts_.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
  starts_.push_back(0);
  for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n', end + 1)) {
    starts_.push_back(static_cast<std::uint32_t>(end + 1));
  }
}

TSourceLocation TSchemaSource::Locate(std::uint32_t offset) const {
  if (starts_.empty()) FindLines();
  auto from = starts_.begin() + static_cast<std::ptrdiff_t>(hint_);
  auto to = starts_.end();
  if (*from > offset) {
    to = from;
    from = starts_.begin();
  } else if (to - from > 32 && from[32] > offset) {
    to = from + 32;
  }
  const auto line = std::upper_bound(from, to, offset) - 1;
  hint_ = static_cast<std::size_t>(line - starts_.begin());
  return {name_, static_cast<std::uint32_t>(hint_ + 1), offset - *line + 1};
}

std::uint32_t TSchemaSource::OffsetOf(const TSourceLocation& location) const {
  if (starts_.empty()) FindLines();
  return starts_.at(location.line - 1) + location.column - 1;
}

std::string_view TSchemaSource::Line(std::uint32_t number) const {
  if (starts_.empty()) FindLines();
  if (hidden_ || number == 0 || number > starts_.size()) return {};
  const std::size_t start = starts_[number - 1];
  const std::size_t end = number < starts_.size() ? starts_[number] - 1 : size_;
  std::string_view line = Text().substr(start, end - start);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

std::string HiddenSyntaxMessage(const std::string& message) {
  constexpr std::string_view kExpected = ", expected ";
  const std::size_t start = message.rfind(kExpected);
  if (start == std::string::npos) return kHiddenMessage;
  const std::size_t end = std::min(message.find("; ", start), message.size());
  return message.substr(start + 2, end - start - 2) +
         "; what was found is not shown, because the file is outside the folders of the schema";
}

void TSchemaLog::Add(TList& list, TEntry entry) {
  ++list.count;
  if (list.kept.size() == list.limit) return;
  const auto hidden = unsaid_.find(entry.place.unit);
  if (hidden != unsaid_.end()) {
    const bool isError = entry.severity == EDiagnosticSeverity::kError;
    bool& unsaid = isError ? hidden->second.error : hidden->second.warning;
    if (!unsaid) return;
    unsaid = false;
  }
  std::string& message = entry.message;
  if (message.size() > kLongestMessage) {
    message = std::string(WholeCharacters(message, kLongestMessage)) + "...";
  }
  list.kept.push_back(std::move(entry));
}

void TSchemaLog::TList::AppendRest(std::vector<TTextDiagnostic>& diagnostics, EDiagnosticSeverity severity) const {
  const std::size_t rest = count - kept.size();
  if (rest == 0) return;
  const std::string noun = severity == EDiagnosticSeverity::kError ? "more error" : "more warning";
  TTextDiagnostic last;
  last.severity = severity;
  last.location.file = diagnostics.empty() ? std::string() : diagnostics.back().location.file;
  last.message = "and " + Counted(rest, noun);
  diagnostics.push_back(std::move(last));
}

std::vector<TTextDiagnostic> TSchemaLog::Finish(const TSchemaSources& sources) const {
  std::vector<TEntry> entries = errors_.kept;
  entries.insert(entries.end(), warnings_.kept.begin(), warnings_.kept.end());
  std::stable_sort(entries.begin(), entries.end(), [](const TEntry& a, const TEntry& b) {
    return a.place.unit != b.place.unit ? a.place.unit < b.place.unit : a.place.offset < b.place.offset;
  });
  std::vector<TTextDiagnostic> diagnostics;
  for (TEntry& entry : entries) {
    const TSchemaSource& source = *sources.at(entry.place.unit);
    TTextDiagnostic diagnostic;
    diagnostic.severity = entry.severity;
    diagnostic.location.file = source.Name();
    diagnostic.message = std::move(entry.message);
    if (entry.place.offset != kWholeFile) {
      diagnostic.location = source.Locate(entry.place.offset);
      SetSourceLine(diagnostic, source.Line(diagnostic.location.line));
      if (source.IsHidden()) {
        diagnostic.message =
            entry.source == ESource::kGrammar ? HiddenSyntaxMessage(diagnostic.message) : kHiddenMessage;
      }
    }
    diagnostics.push_back(std::move(diagnostic));
  }
  errors_.AppendRest(diagnostics, EDiagnosticSeverity::kError);
  warnings_.AppendRest(diagnostics, EDiagnosticSeverity::kWarning);
  return diagnostics;
}

}  // namespace velhost
