#include "tests/schema/casejudge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "tests/schema/schemastatements.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {

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

std::vector<std::string> Differences(const TAnnotatedCase& annotated) {
  TMemoryReader reader;
  std::vector<std::string> paths;
  for (const TAnnotatedText& text : annotated.texts) {
    reader.Add(text.path, text.text);
    if (text.given) paths.push_back(text.path);
  }
  TDifferences differences = DifferentFindings(annotated, ReadSchema(paths, reader).diagnostics);
  if (annotated.hasErrors || !differences.empty()) return differences;
  TSchemaStatements schema(paths, reader);
  ExpectComplete(annotated, schema, differences);
  ExpectEach(annotated, schema, differences);
  return differences;
}

}  // namespace tests
