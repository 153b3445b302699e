// Reads one of the shapes, for a test that counts its instructions: readshape NAME SIZE. Without arguments the names.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/schema/schemacheck.h"
#include "tests/schema/schemashapes.h"

int main(int argc, char** argv) {
  using namespace NKROVEL20;
  for (const TSchemaShape& shape : kSchemaShapes) {
    if (argc < 3) {
      std::puts(shape.name);
    } else if (std::strcmp(argv[1], shape.name) == 0) {
      TMemoryReader reader;
      reader.Add("shape.mof", shape.make(std::atoi(argv[2])));
      const TSchemaFindings findings = CheckSchema({"shape.mof"}, reader);
      std::string text;
      for (const TTextDiagnostic& finding : findings.findings) text += FormatDiagnostic(finding);
      std::printf("%zu errors, %zu bytes of messages\n", findings.errors, text.size());
    }
  }
  return 0;
}
