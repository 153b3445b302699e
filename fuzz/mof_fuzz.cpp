// Reads arbitrary bytes as a schema of two files, of which the first may include the second, and
// checks what the collector needs of it.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/core/sourcereader.h"
#include "host/schema/collectorneeds.h"
#include "host/schema/schemareader.h"

using namespace NKROVEL20;

namespace {

// Few, so that inputs soon reach what happens beyond the limit, and most of the time goes into reading.
constexpr std::size_t kShown = 6;

void Format(const std::vector<TTextDiagnostic>& diagnostics) {
  const std::size_t count = std::min(diagnostics.size(), kShown);
  for (std::size_t i = 0; i < count; ++i) FormatDiagnostic(diagnostics[i]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string text(data, data + size);
  TSchemaLimits limits;
  limits.diagnostics = kShown;
  if (text.ends_with('\x1F')) {  // asks for limits that a short text can reach
    text.pop_back();
    limits = {.totalSize = 250,
              .files = 2,
              .includeDepth = 1,
              .tokenSize = 40,
              .classes = 4,
              .inheritanceDepth = 3,
              .qualifiersPerElement = 2,
              .propertiesPerClass = 4,
              .modelEntries = 12,
              .instanceValues = 4};
  }
  const std::size_t cut = text.find('\x1E');
  TMemoryReader reader;
  reader.Add("a.mof", text.substr(0, cut));
  std::vector<std::string> paths = {"a.mof"};
  if (cut != std::string::npos) {
    reader.Add("b.mof", text.substr(cut + 1));
    paths.emplace_back("b.mof");
  }
  const TSchemaResult schema = ReadSchema(paths, reader, limits);
  Format(schema.diagnostics);
  Format(CheckCollectorNeeds(*schema.cimNamespace, "a.mof", schema.sources.get()));
  return 0;
}
