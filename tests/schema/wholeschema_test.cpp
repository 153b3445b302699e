// A synthetic schema as large as a published one: 1,600 files that a main file includes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

class WholeSchema : public testing::Test {
 protected:
  WholeSchema() {
    std::string name = (std::filesystem::temp_directory_path() / "wholeschema_XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
    folder_ = name;
    const std::string command = VELHOST_MAKESCHEMA " " + folder_ + " > /dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
  }
  ~WholeSchema() override { std::filesystem::remove_all(folder_); }

  std::string folder_;
};

TEST_F(WholeSchema, IsReadWithoutAFinding) {
  TFileReader reader;
  const TSchemaResult result = ReadSchema({folder_ + "/schema.mof"}, reader);
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(result.sources->size(), 1600U);
  // All files but the main one and that of the qualifiers have a class.
  EXPECT_EQ(result.cimNamespace->Classes().size(), 1598U);
  const auto file = result.cimNamespace->FindClass("KROSG_DCAPFile");
  ASSERT_TRUE(file);
  EXPECT_EQ(file->SuperClass()->Name(), "CIM_ManagedElement");
  EXPECT_EQ(file->Properties().size(), 12U) << "four are inherited";
}

}  // namespace
}  // namespace tests
