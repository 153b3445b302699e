#include "tests/schema/annotatedmof.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <regex>

#include "host/schema/schemacheck.h"
#include "tests/schema/collectorschema.h"
#include "tests/schema/schemastatements.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

constexpr std::string_view kBytes = "with bytes <XX>";
constexpr std::string_view kOpenEnd = "without a last line end";
constexpr std::string_view kOfRegisters = "of registers";
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
    result_.cases.push_back({name, number_, {}, {}, {}, false, false});
    bytes_ = false;
    openEnd_ = false;
    std::string rest = options;
    while (!rest.empty()) {
      const std::string option = rest.substr(2, rest.find(',', 2) - 2);
      rest.erase(0, 2 + option.size());
      bytes_ = bytes_ || option == kBytes;
      openEnd_ = openEnd_ || option == kOpenEnd;
      if (option == kOfRegisters) {
        Case().isOfRegisters = true;
      } else if (option != kBytes && option != kOpenEnd) {
        Malformed("unknown option: " + option);
      }
    }
    BeginText(name + ".mof", true);
  }

  void EndCase() {
    EndFinding();
    if (result_.cases.empty()) return;
    for (TAnnotatedText& text : Case().texts) {
      if (openEnd_ && !text.text.empty()) text.text.pop_back();
    }
    const bool mayState = !Case().hasErrors && !Case().isOfRegisters;
    if (!mayState && !Case().statements.empty())
      Malformed("statements of a case with errors or registers: " + Case().name);
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

namespace {

using TDifferences = std::vector<std::string>;

std::string At(std::size_t line, const std::string& what) { return std::to_string(line) + ": " + what; }

// The text before the first of `ends`.
std::string Head(const std::string& text, const char* ends) { return text.substr(0, text.find_first_of(ends)); }

// The line in the annotated file; the line of the case if the location is not in its texts.
std::size_t LineOf(const TAnnotatedCase& annotated, const TSourceLocation& location) {
  for (const TAnnotatedText& text : annotated.texts) {
    const bool inside = text.path == location.file && location.line > 0 && location.line <= text.at.size();
    if (inside) return text.at[location.line - 1];
  }
  return annotated.at;
}

TDifferences DifferentFindings(const TAnnotatedCase& annotated, const std::vector<TTextDiagnostic>& findings) {
  TDifferences differences;
  std::vector<std::string> left;
  for (const TTextDiagnostic& finding : findings) left.push_back(FormatDiagnostic(finding));
  const std::vector<std::string> shown = left;
  std::vector<std::string> expected;
  for (const TAnnotatedFinding& finding : annotated.findings) {
    expected.push_back(finding.shown);
    const auto found = std::find(left.begin(), left.end(), finding.shown);
    if (found == left.end()) {
      differences.push_back(At(finding.at, "not reported: " + finding.shown));
    } else {
      left.erase(found);
    }
  }
  for (std::size_t i = 0; i < findings.size(); ++i) {
    const auto found = std::find(left.begin(), left.end(), shown[i]);
    if (found == left.end()) continue;
    left.erase(found);
    differences.push_back(At(LineOf(annotated, findings[i].location), "not annotated: " + shown[i]));
  }
  if (differences.empty() && shown != expected) differences.push_back(At(annotated.at, "reported in another order"));
  return differences;
}

void ExpectEqual(const TAnnotatedCase& annotated, const std::string& what, const TStatements& expected,
                 const TStatements& found, TDifferences& differences) {
  if (expected == found) return;
  differences.push_back(At(annotated.at, what + ": annotated " + testing::PrintToString(expected) + ", found " +
                                             testing::PrintToString(found)));
}

// The complete lists of the classes that have a statement, one after the other.
TStatements OfClasses(const TStatements& expected, const std::function<TStatements(const std::string&)>& read) {
  TStatements classes;
  TStatements found;
  for (const std::string& statement : expected) {
    const std::string name = Head(statement, ".");
    if (std::find(classes.begin(), classes.end(), name) != classes.end()) continue;
    classes.push_back(name);
    const TStatements more = read(name);
    found.insert(found.end(), more.begin(), more.end());
  }
  return found;
}

void ExpectComplete(const TAnnotatedCase& annotated, TSchemaStatements& schema, TDifferences& differences) {
  const TStatements properties = annotated.Of("property");
  const TStatements methods = annotated.Of("method");
  const TStatements declarations = annotated.Of("declaration");
  ExpectEqual(annotated, "classes", annotated.Of("class"), schema.Classes(), differences);
  ExpectEqual(annotated, "properties", properties,
              OfClasses(properties, [&](const std::string& name) { return schema.Properties(name); }), differences);
  ExpectEqual(annotated, "methods", methods,
              OfClasses(methods, [&](const std::string& name) { return schema.Methods(name); }), differences);
  if (!declarations.empty()) {
    ExpectEqual(annotated, "declarations", declarations, schema.QualifierTypes(), differences);
  }
  ExpectEqual(annotated, "instances", annotated.Of("instance"), schema.Instances(), differences);
}

bool AnyBeginsWith(const TStatements& statements, const std::string& start) {
  return std::any_of(statements.begin(), statements.end(),
                     [&](const std::string& one) { return one.rfind(start, 0) == 0; });
}

// `text` is "ELEMENT: NAME". A NAME that is not declared is a mistake in the annotation, not an absent qualifier.
bool IsAbsent(const std::string& text, const TStatements& qualifiers, const TStatements& declared) {
  return AnyBeginsWith(declared, text.substr(text.find(": ") + 2) + " ") && !AnyBeginsWith(qualifiers, text + " = ");
}

// Checks the statements that stand for themselves and do not imply a complete list.
void ExpectEach(const TAnnotatedCase& annotated, TSchemaStatements& schema, TDifferences& differences) {
  const TStatements values = schema.Values();
  for (const TAnnotatedStatement& statement : annotated.statements) {
    const std::string& text = statement.text;
    const bool isQualifier = statement.kind == "qualifier" || statement.kind == "no-qualifier";
    if (!isQualifier && statement.kind != "value") continue;
    const TStatements found = isQualifier ? schema.Qualifiers(Head(text, ":")) : values;
    const bool holds = statement.kind == "no-qualifier" ? IsAbsent(text, found, schema.QualifierTypes())
                                                        : std::find(found.begin(), found.end(), text) != found.end();
    if (holds) continue;
    differences.push_back(At(statement.at, statement.kind + " " + text + ", found " + testing::PrintToString(found)));
  }
}

}  // namespace

namespace {

std::vector<TTextDiagnostic> FindingsOfRegisters(std::vector<std::string> paths, TMemoryReader& reader) {
  reader.Add("collector.mof", kCollectorSchema);
  paths.insert(paths.begin(), "collector.mof");
  return CheckSchema(paths, reader).findings;
}

}  // namespace

std::vector<std::string> Differences(const TAnnotatedCase& annotated) {
  TMemoryReader reader;
  std::vector<std::string> paths;
  for (const TAnnotatedText& text : annotated.texts) {
    reader.Add(text.path, text.text);
    if (text.given) paths.push_back(text.path);
  }
  if (annotated.isOfRegisters) return DifferentFindings(annotated, FindingsOfRegisters(paths, reader));
  TDifferences differences = DifferentFindings(annotated, ReadSchema(paths, reader).diagnostics);
  if (annotated.hasErrors || !differences.empty()) return differences;
  TSchemaStatements schema(paths, reader);
  ExpectComplete(annotated, schema, differences);
  ExpectEach(annotated, schema, differences);
  return differences;
}

}  // namespace tests
