// A stopped run does not finish reading.
#include <gtest/gtest.h>

#include "host/schema/schemareader.h"
#include "tests/support/namespaces.h"
#include "tests/support/stoppingreader.h"

namespace tests {
namespace {

TEST(StopReading, EndsASchemaBetweenTokensClassesAndInstances) {
  tests::TStoppingReader reader;
  std::string text;
  // 2 classes of 605 tokens: 1 check between tokens, then 2 for the classes and 2 for the declarations.
  for (const std::string name : {"A", "B"}) {
    text += "class " + name + " {";
    for (int i = 0; i < 200; ++i) text += "string P" + std::to_string(i) + ";";
    text += "};\n";
  }
  reader.Add("schema.mof", "#pragma include(\"included.mof\")\n");
  reader.Add("included.mof", text);
  const std::size_t looks = tests::LooksThatEnd(reader, [&reader] { ReadSchema({"schema.mof"}, reader); });
  EXPECT_EQ(looks, 1U + 2U + 2U);
}

}  // namespace
}  // namespace tests
