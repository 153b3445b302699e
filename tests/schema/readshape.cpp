// Reads one of the shapes, for a test that counts instructions: readshape NAME SIZE. Without arguments lists the
// names.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/profile/collectorprofile.h"
#include "host/schema/collectorneeds.h"
#include "host/schema/schemareader.h"
#include "tests/schema/schemaattacks.h"
#include "tests/support/memoryreader.h"

namespace {

using namespace tests;

void Read(const TSchemaShape& shape, int size) {
  TMemoryReader reader;
  reader.Add("shape.mof", shape.make(size));
  const TSchemaResult schema = ReadSchema({"shape.mof"}, reader);
  std::string text;
  for (const TTextDiagnostic& finding : schema.diagnostics) text += FormatDiagnostic(finding);
  for (const TTextDiagnostic& finding : CheckCollectorNeeds(*schema.cimNamespace, "shapes", schema.sources.get())) {
    text += FormatDiagnostic(finding);
  }
  const auto classes = CollectorProfile::CollectableClasses(*schema.cimNamespace, "6203");
  std::printf("%zu errors, %zu bytes of messages, %zu classes to collect\n", schema.errors, text.size(),
              classes.size());
}

}  // namespace

int main(int argc, char** argv) {
  for (const auto* shapes : {&kSchemaShapes, &kSchemaAttacks}) {
    for (const TSchemaShape& shape : *shapes) {
      if (argc < 3) {
        std::puts(shape.name);
      } else if (std::strcmp(argv[1], shape.name) == 0) {
        Read(shape, std::atoi(argv[2]));
      }
    }
  }
  return 0;
}
