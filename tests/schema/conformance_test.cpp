// MOF as a reader of DSP0004 expects it: the files of conformance/valid and conformance/invalid, and what their
// expected.toml says of each. Both were written without a look at this reader.
#include <gtest/gtest.h>

#include <toml++/toml.h>
#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <set>

#include "tests/schema/schemastatements.h"

namespace NKROVEL20 {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Strings(const toml::table& table, const char* key) {
  std::vector<std::string> strings;
  if (const toml::array* array = table[key].as_array()) {
    for (const toml::node& node : *array) strings.push_back(node.value<std::string>().value());
  }
  return strings;
}

std::string Text(const toml::table& table, const char* key) { return table[key].value_or(std::string()); }

// Up to the first of `ends`.
std::string Head(const std::string& text, const char* ends) { return text.substr(0, text.find_first_of(ends)); }

// The files named by their tables, in order, each with all of its tables of one kind.
class TFolder {
 public:
  explicit TFolder(const std::string& name) : before_(fs::current_path()) {
    fs::current_path(fs::path(VELHOST_CONFORMANCE_FOLDER) / name);
    document_ = toml::parse_file("expected.toml");
  }
  ~TFolder() { fs::current_path(before_); }

  std::vector<std::pair<std::string, std::vector<const toml::table*>>> Tables(const char* kind) const {
    std::vector<std::pair<std::string, std::vector<const toml::table*>>> files;
    const toml::array* tables = document_[kind].as_array();
    if (tables == nullptr) return files;
    for (const toml::node& node : *tables) {
      const std::string file = Text(*node.as_table(), "file");
      if (files.empty() || files.back().first != file) files.push_back({file, {}});
      files.back().second.push_back(node.as_table());
    }
    return files;
  }

  /// Every MOF file of the folder is named by a table of this kind, or read with one that is.
  void ExpectAllNamed(const char* kind) const {
    std::set<std::string> named;
    for (const auto& [file, tables] : Tables(kind)) {
      named.insert(file);
      for (const char* key : {"also", "includes"}) {
        for (const std::string& other : Strings(*tables.front(), key)) named.insert(other);
      }
    }
    for (const auto& entry : fs::recursive_directory_iterator(".")) {
      const std::string path = entry.path().lexically_normal().string();
      if (entry.path().extension() == ".mof") {
        EXPECT_EQ(named.count(path), 1U) << path;
      }
    }
  }

 private:
  fs::path before_;
  toml::table document_;
};

std::vector<std::string> PathsOf(const toml::table& table) {
  std::vector<std::string> paths = Strings(table, "also");
  paths.insert(paths.begin(), Text(table, "file"));
  return paths;
}

// Valid files.

// The names before the first of `ends`, each once, in order.
TStatements Subjects(const TStatements& statements, const char* ends) {
  TStatements subjects;
  for (const std::string& statement : statements) {
    const std::string subject = Head(statement, ends);
    if (std::find(subjects.begin(), subjects.end(), subject) == subjects.end()) subjects.push_back(subject);
  }
  return subjects;
}

// Complete lists of some classes, one after the other.
TStatements OfClasses(const TStatements& expected, const std::function<TStatements(const std::string&)>& read) {
  TStatements found;
  for (const std::string& name : Subjects(expected, ".")) {
    const TStatements more = read(name);
    found.insert(found.end(), more.begin(), more.end());
  }
  return found;
}

void ExpectQualifiers(const toml::table& file, TSchemaStatements& schema) {
  const TStatements expected = Strings(file, "qualifiers");
  for (const std::string& element : Subjects(expected, ":")) {
    const TStatements found = schema.Qualifiers(element);
    for (const std::string& statement : expected) {
      if (Head(statement, ":") != element) continue;
      EXPECT_NE(std::find(found.begin(), found.end(), statement), found.end())
          << statement << "\nfound " << testing::PrintToString(found);
    }
  }
  for (const std::string& absent : Strings(file, "absent_qualifiers")) {
    for (const std::string& statement : schema.Qualifiers(Head(absent, ":"))) {
      EXPECT_NE(statement.substr(0, absent.size() + 3), absent + " = ");
    }
  }
}

void ExpectValues(const toml::table& file, const TSchemaStatements& schema) {
  const TStatements found = schema.Values();
  for (const std::string& value : Strings(file, "values")) {
    EXPECT_NE(std::find(found.begin(), found.end(), value), found.end())
        << value << "\nfound " << testing::PrintToString(found);
  }
}

void ExpectStatements(const toml::table& file) {
  TSchemaStatements schema(PathsOf(file));
  EXPECT_EQ(schema.Result().errors, 0U);
  if (file.contains("qualifier_types")) {
    EXPECT_EQ(schema.QualifierTypes(), Strings(file, "qualifier_types"));
  }
  EXPECT_EQ(schema.Classes(), Strings(file, "classes"));
  const TStatements properties = Strings(file, "properties");
  EXPECT_EQ(OfClasses(properties, [&](const std::string& name) { return schema.Properties(name); }), properties);
  const TStatements methods = Strings(file, "methods");
  EXPECT_EQ(OfClasses(methods, [&](const std::string& name) { return schema.Methods(name); }), methods);
  ExpectQualifiers(file, schema);
  EXPECT_EQ(schema.Instances(), Strings(file, "instances"));
  ExpectValues(file, schema);
  TStatements warnings = Strings(file, "warnings");
  for (std::string& warning : warnings) warning = Head(warning, " ");
  EXPECT_EQ(schema.Warnings(), warnings);
}

TEST(Conformance, ValidFilesMeanWhatIsExpected) {
  const TFolder folder("valid");
  folder.ExpectAllNamed("file");
  std::size_t count = 0;
  for (const auto& [name, tables] : folder.Tables("file")) {
    SCOPED_TRACE(name);
    ASSERT_EQ(tables.size(), 1U);
    ExpectStatements(*tables.front());
    ++count;
  }
  EXPECT_GE(count, 80U);
}

// Invalid files.

std::string Place(const TTextDiagnostic& finding) {
  return std::to_string(finding.location.line) + ":" + std::to_string(finding.location.column);
}

bool Reports(const TTextDiagnostic& finding, const toml::table& fault) {
  std::vector<std::string> places = Strings(fault, "also_at");
  places.push_back(std::to_string(fault["line"].value_or(0)) + ":" + std::to_string(fault["column"].value_or(0)));
  const std::string file = fault.contains("where") ? Text(fault, "where") : Text(fault, "file");
  return finding.location.file == file && std::find(places.begin(), places.end(), Place(finding)) != places.end();
}

// Where the words of a message must be, whatever their case.
void ExpectMentions(const TTextDiagnostic& finding, const toml::table& fault) {
  for (const std::string& word : Strings(fault, "mentions")) {
    EXPECT_NE(FoldName(finding.message).find(FoldName(word)), std::string::npos) << finding.message;
  }
}

void ExpectFaults(const std::vector<TTextDiagnostic>& findings, const std::vector<const toml::table*>& faults) {
  std::size_t reported = 0;
  bool followUps = false;
  for (const toml::table* fault : faults) {
    const auto finding = std::find_if(findings.begin(), findings.end(),
                                      [&](const TTextDiagnostic& candidate) { return Reports(candidate, *fault); });
    ASSERT_NE(finding, findings.end()) << "not found: " << Text(*fault, "about");
    ExpectMentions(*finding, *fault);
    reported += 1;
    followUps = followUps || (*fault)["followups"].value_or(false);
  }
  EXPECT_TRUE(Reports(findings.front(), *faults.front()));
  if (!followUps) {
    EXPECT_EQ(findings.size(), reported);
  }
}

TSchemaResult ReadFiles(const std::vector<std::string>& paths) {
  TFileReader reader;
  return ReadSchema(paths, reader);
}

TEST(Conformance, InvalidFilesAreReportedWhereTheyAreWrong) {
  const TFolder folder("invalid");
  folder.ExpectAllNamed("fault");
  std::size_t count = 0;
  for (const auto& [name, faults] : folder.Tables("fault")) {
    SCOPED_TRACE(name);
    ExpectFaults(ReadFiles(PathsOf(*faults.front())).diagnostics, faults);
    ++count;
  }
  EXPECT_GE(count, 200U);
}

TEST(Conformance, MessagesOfInvalidFiles) {
  const TFolder folder("invalid");
  std::map<std::string, std::string> messages;
  for (const auto& [name, tables] : folder.Tables("message")) messages[name] = Text(*tables.front(), "text");
  for (const auto& [name, faults] : folder.Tables("fault")) {
    std::string shown;
    for (const TTextDiagnostic& finding : ReadFiles(PathsOf(*faults.front())).diagnostics) {
      shown += FormatDiagnostic(finding);
    }
    EXPECT_EQ(shown, messages[name]) << name;
  }
}

}  // namespace
}  // namespace NKROVEL20
