#include "tests/schema/annotatedmof.h"

#include <algorithm>
#include <array>
#include <optional>
#include <regex>

namespace tests {

namespace {

constexpr std::string_view kBytes = "with bytes <XX>";
constexpr std::string_view kOpenEnd = "without a last line end";
constexpr std::array kKinds = {"class",        "property",    "method",   "qualifier",
                               "no-qualifier", "declaration", "instance", "value"};
constexpr std::size_t kWidest = 78;  // a longer line is shown cut

const std::regex kCase("// case: ([a-z0-9-]+)((?:, [^,]+)*)");
const std::regex kText("// (also|included): (\\S+)");
const std::regex kOnLine("(.*?)[ \t]*// (error|warning) ([0-9]+): (.+)");
const std::regex kBelow("//\\^ (error|warning) ([0-9]+): (.+)");
const std::regex kShown("//\\|(.*)");
const std::regex kStatement("//= ([a-z-]+) (.+)");
const std::regex kNote("//: .+");
// Lines that resemble an annotation but are malformed.
const std::regex kNearly("//[\\^|=:].*|// *(case|also|included) *:.*|.*// *(error|warning)\\b.*", std::regex::icase);

// Lines that are shown unchanged; for others an annotation must give the excerpt.
bool ShownAsItIs(const std::string& line) {
  return line.size() <= kWidest && std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// Replaces each "<XX>" with the byte XX.
std::string WithBytes(const std::string& line) {
  static const std::regex kByte("<([0-9A-F]{2})>");
  std::string text;
  std::string rest = line;
  for (std::smatch match; std::regex_search(rest, match, kByte); rest = match.suffix()) {
    text += match.prefix().str() + static_cast<char>(std::stoi(match[1], nullptr, 16));
  }
  return text + rest;
}

class TParser {
 public:
  TAnnotatedMof Parse(std::string_view text) {
    while (!text.empty()) {
      const std::size_t end = text.find('\n');
      ++number_;
      Take(std::string(text.substr(0, end)));
      text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    EndCase();
    if (result_.cases.empty()) Malformed("a file without a case");
    return std::move(result_);
  }

 private:
  // A finding that may still get an excerpt of its line.
  struct TPending {
    std::string line;
    std::size_t column;
    std::string excerpt;
  };

  void Malformed(const std::string& what) { result_.malformed.push_back(std::to_string(number_) + ": " + what); }
  TAnnotatedCase& Case() { return result_.cases.back(); }
  TAnnotatedText& Text() { return Case().texts.back(); }

  void Take(const std::string& line) {
    std::smatch match;
    if (std::regex_match(line, match, kShown)) return TakeShown(match[1]);
    EndFinding();
    if (std::regex_match(line, match, kCase)) return BeginCase(match[1], match[2]);
    if (result_.cases.empty()) return TakeHead(line);
    if (std::regex_match(line, match, kText)) return BeginText(match[2], match[1] == "also");
    if (std::regex_match(line, match, kBelow)) return AddFinding(match[1], match[2], match[3]);
    if (std::regex_match(line, match, kStatement)) return AddStatement(match[1], match[2]);
    if (std::regex_match(line, kNote)) return;
    if (std::regex_match(line, match, kOnLine)) {
      AddLine(match[1]);
      return AddFinding(match[2], match[3], match[4]);
    }
    if (std::regex_match(line, kNearly)) return Malformed("not an annotation: " + line);
    AddLine(line);
  }

  // Only comments may precede the first case.
  void TakeHead(const std::string& line) {
    const bool comment = line.rfind("// ", 0) == 0 && !std::regex_match(line, kNearly);
    if (!line.empty() && !comment) Malformed("before the first case: " + line);
  }

  void BeginCase(const std::string& name, const std::string& options) {
    EndCase();
    result_.cases.push_back({name, number_, {}, {}, {}, false});
    bytes_ = false;
    openEnd_ = false;
    std::string rest = options;
    while (!rest.empty()) {
      const std::string option = rest.substr(2, rest.find(',', 2) - 2);
      rest.erase(0, 2 + option.size());
      bytes_ = bytes_ || option == kBytes;
      openEnd_ = openEnd_ || option == kOpenEnd;
      if (option != kBytes && option != kOpenEnd) Malformed("unknown option: " + option);
    }
    BeginText(name + ".mof", true);
  }

  void EndCase() {
    EndFinding();
    if (result_.cases.empty()) return;
    for (TAnnotatedText& text : Case().texts) {
      if (openEnd_ && !text.text.empty()) text.text.pop_back();
    }
    if (Case().hasErrors && !Case().statements.empty()) Malformed("statements of a case with errors: " + Case().name);
  }

  void BeginText(const std::string& path, bool given) {
    Case().texts.push_back({path, given, {}, {}});
    blanks_ = 0;
  }

  // Blank lines at the end of a text do not belong to it.
  void AddLine(const std::string& line) {
    if (line.empty()) {
      ++blanks_;
      return;
    }
    for (; blanks_ > 0; --blanks_) AddTextLine("", number_ - blanks_);
    AddTextLine(bytes_ ? WithBytes(line) : line, number_);
  }

  void AddTextLine(const std::string& line, std::size_t at) {
    Text().text += line + "\n";
    Text().at.push_back(at);
    line_ = line;
    if (!line_.empty() && line_.back() == '\r') line_.pop_back();
  }

  void AddFinding(const std::string& severity, const std::string& column, const std::string& message) {
    if (Text().at.empty()) return Malformed("an annotation without a line");
    Case().hasErrors = Case().hasErrors || severity == "error";
    Case().findings.push_back({number_, Text().path + ":" + std::to_string(Text().at.size()) + ":" + column + ": " +
                                            severity + ": " + message + "\n"});
    pending_ = TPending{line_, std::stoul(column), {}};
  }

  void TakeShown(const std::string& line) {
    if (!pending_) return Malformed("no annotation above: //|" + line);
    pending_->excerpt += line + "\n";
  }

  void EndFinding() {
    if (!pending_) return;
    if (pending_->excerpt.empty() && !ShownAsItIs(pending_->line))
      Malformed("//| must say how the line above is shown");
    if (pending_->excerpt.empty() && pending_->column > 0) {
      pending_->excerpt = "  " + pending_->line + "\n  " + std::string(pending_->column - 1, ' ') + "^\n";
    }
    Case().findings.back().shown += pending_->excerpt;
    pending_.reset();
  }

  void AddStatement(const std::string& kind, const std::string& text) {
    if (std::find(kKinds.begin(), kKinds.end(), kind) == kKinds.end()) Malformed("unknown statement: " + kind);
    Case().statements.push_back({number_, kind, text});
  }

  TAnnotatedMof result_;
  std::size_t number_ = 0;
  std::size_t blanks_ = 0;
  bool bytes_ = false;
  bool openEnd_ = false;
  std::string line_;  // the last line of the text, without its line end
  std::optional<TPending> pending_;
};

}  // namespace

std::vector<std::string> TAnnotatedCase::Of(std::string_view kind) const {
  std::vector<std::string> found;
  for (const TAnnotatedStatement& statement : statements) {
    if (statement.kind == kind) found.push_back(statement.text);
  }
  return found;
}

TAnnotatedMof ParseAnnotatedMof(std::string_view text) { return TParser().Parse(text); }

}  // namespace tests
