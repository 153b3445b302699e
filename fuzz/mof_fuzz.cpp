// Arbitrary bytes as a schema of two files, the first of which may include the second. Diagnostics must refer
// to existing places, in order. The kind of line ending must affect neither the diagnostics nor the classes
// read.
#include <boost/algorithm/string/replace.hpp>

#include "host/schema/collectorneeds.h"
#include "host/schema/schemareader.h"
#include "tests/support/memoryreader.h"
#include "tests/support/require.h"

using namespace NKROVEL20;
using namespace velhost;
using tests::Require;
using tests::TMemoryReader;

using TTexts = std::map<std::string, std::string>;

static std::string Shown(const std::vector<TTextDiagnostic>& findings, const TTexts& texts) {
  std::string shown;
  for (const auto& [severity, at, message, sourceLine, start, size] : findings) {
    shown += FormatDiagnostic({severity, at, message, sourceLine, start, size});
    if (at.line == 0) continue;  // refers to the schema as a whole
    std::string_view text = texts.at(at.file);
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    const std::string_view line = LineOf(text, at.line);  // NUL and invalid UTF-8 appear as "?"
    const std::string_view part = line.substr(start, 78);
    Require(size == line.size());
    Require(std::equal(part.begin(), part.end(), sourceLine.begin(), sourceLine.end(),
                       [](char byte, char copy) { return byte == copy || (copy == '?' && byte <= 0); }));
    Require(at.line <= 1 + std::count(text.begin(), text.end(), '\n') && at.column - 1 <= line.size());
  }
  return shown;
}

static std::string Read(const TTexts& texts, const TSchemaLimits& limits) {
  TMemoryReader reader;
  std::vector<std::string> paths;
  for (const auto& [path, text] : texts) reader.Add(path, text), paths.push_back(path);
  const TSchemaResult schema = ReadSchema(paths, reader, limits);
  const auto error = [](const TTextDiagnostic& finding) { return finding.severity == EDiagnosticSeverity::kError; };
  Require(schema.HasErrors() == std::any_of(schema.diagnostics.begin(), schema.diagnostics.end(), error));
  std::string shown = Shown(schema.diagnostics, texts);
  shown += Shown(CheckCollectorNeeds(*schema.cimNamespace, "a.mof", schema.sources.get()), texts);
  for (const auto& cimClass : schema.cimNamespace->Classes()) shown += cimClass->Name() + "\n";
  return shown + std::to_string(schema.instances.size());
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string text(data, data + size);
  const bool small = text.ends_with('\x1F');  // selects limits that a short text can reach
  TSchemaLimits limits;
  limits.diagnostics = 6;  // few, so that most of the time is spent reading
  if (small) text.pop_back(), limits = {1000, 250, 2, 1, 40, 32, 4, 3, 2, 4, 12, 60, 4, 6};
  const std::size_t cut = text.find('\x1E');
  TTexts texts = {{"a.mof", text.substr(0, cut)}};
  if (cut != std::string::npos) texts["b.mof"] = text.substr(cut + 1);
  const std::string first = Read(texts, limits);
  if (text.find('\r') == std::string::npos && !small) {
    for (auto& [path, content] : texts) boost::replace_all(content, "\n", "\r\n");
  }
  Require(Read(texts, limits) == first);
  return 0;
}
