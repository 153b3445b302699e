// A synthetic schema as large as a published one: 1,600 files, which a main file includes.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

class WholeSchema : public testing::Test {
 protected:
  WholeSchema() {
    const std::string command = VELHOST_MAKESCHEMA " " + folder_.Path().string() + " > /dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
  }

  TTemporaryFolder folder_;
};

TEST_F(WholeSchema, HasNoFindings) {
  TFileReader reader;
  const TSchemaResult result = ReadSchema({folder_.Path() / "schema.mof"}, reader);
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(result.sources->size(), 1600U);
  // All files declare a class, except the main file and the qualifiers.
  EXPECT_EQ(result.cimNamespace->Classes().size(), 1598U);
  const auto file = result.cimNamespace->FindClass("KROSG_DCAPFile");
  ASSERT_TRUE(file);
  EXPECT_EQ(file->SuperClass()->Name(), "CIM_ManagedElement");
  EXPECT_EQ(file->Properties().size(), 12U) << "four are inherited";
}

}  // namespace
}  // namespace tests
