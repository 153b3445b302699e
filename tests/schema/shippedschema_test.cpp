// The schema that is installed with the host.
#include "host/schema/schemacheck.h"
#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

TEST(ShippedSchema, HasNoFindings) {
  TFileReader reader;
  const TCheckFindings result = CheckSchema({VELHOST_SCHEMA_FOLDER}, reader);
  std::string text;
  for (const TTextDiagnostic& finding : result.findings) text += FormatDiagnostic(finding);
  EXPECT_EQ(text, "");
}

}  // namespace
}  // namespace tests
