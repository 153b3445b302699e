// Reads arbitrary bytes as a schema of two files, of which the first may include the second, and
// checks what the collector needs of it.
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/core/sourcereader.h"
#include "host/schema/collectorneeds.h"
#include "host/schema/schemareader.h"

using namespace NKROVEL20;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string text(data, data + size);
  const std::size_t cut = text.find('\x1E');
  TMemoryReader reader;
  reader.Add("b.mof", cut == std::string::npos ? std::string() : text.substr(cut + 1));
  reader.Add("a.mof", text.substr(0, cut));
  const TSchemaResult schema = ReadSchema({"a.mof", "b.mof"}, reader);
  for (const TTextDiagnostic& diagnostic : schema.diagnostics) FormatDiagnostic(diagnostic);
  CheckCollectorNeeds(*schema.cimNamespace, "a.mof", schema.sources.get());
  return 0;
}
