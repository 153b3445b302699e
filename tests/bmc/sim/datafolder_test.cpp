// Data files come from the server file's folder or below it, whatever links exist.
#include "host/bmc/sim/datafolder.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/support/bmclanguage.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {

namespace {

namespace fs = std::filesystem;

class TTree {
 public:
  TTree() {
    fs::create_directories(root_ / "servers/sub");
    Write("outside", "secret");
    Write("servers/in", "abc");
    Write("servers/sub/below", "def");
  }
  void Write(const std::string& name, const std::string& content) const { folder_.Write(name, content); }
  void Link(const std::string& name, const fs::path& target) const { fs::create_symlink(target, root_ / name); }
  std::string Path(const std::string& name) const { return (root_ / name).string(); }

 private:
  TTemporaryFolder folder_;
  const fs::path& root_ = folder_.Path();
};

class DataFolder : public testing::TestWithParam<TDataFolder::EWay> {
 protected:
  TBytes Read(const std::string& name) { return AllOf(folder_.Open(name, 6)); }
  void ExpectRefusal(const std::string& name, const std::string& message, EFailure kind = EFailure::kMalformed) {
    ExpectHostError(kind, message, [&] { folder_.Open(name, 6); });
  }
  static constexpr const char* kExpected = ", expected a file in the server file's folder or below";

  TTree tree_;
  TDataFolder folder_{tree_.Path("servers/s.toml"), GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Ways, DataFolder, testing::Values(TDataFolder::EWay::kKernel, TDataFolder::EWay::kStepByStep));

TEST_P(DataFolder, HasItsFilesAndThoseBelowIt) {
  EXPECT_EQ(Read("in"), (TBytes{'a', 'b', 'c'}));
  EXPECT_EQ(Read("./in"), (TBytes{'a', 'b', 'c'}));
  EXPECT_EQ(Read("sub/below"), (TBytes{'d', 'e', 'f'}));
  EXPECT_EQ(Read("sub//below"), (TBytes{'d', 'e', 'f'}));
}

TEST_P(DataFolder, FollowsNoLinkThatLeadsOut) {
  const bool kernel = GetParam() == TDataFolder::EWay::kKernel;
  const std::string out =
      kernel ? ", which is outside the folder because of a symbolic link" : ", which is a symbolic link";
  const std::string through = kernel ? out : ", which goes through a symbolic link";
  tree_.Link("servers/absolute", tree_.Path("outside"));
  ExpectRefusal("absolute", "found \"absolute\"" + out + kExpected);
  tree_.Link("servers/relative", "../outside");
  ExpectRefusal("relative", "found \"relative\"" + out + kExpected);
  tree_.Link("servers/chain", "relative");
  ExpectRefusal("chain", "found \"chain\"" + out + kExpected);
  tree_.Link("servers/up", "..");
  ExpectRefusal("up/outside", "found \"up/outside\"" + through + kExpected);
  tree_.Link("servers/folder", tree_.Path("servers"));
  ExpectRefusal("folder/in", "found \"folder/in\"" + through + kExpected);
}

TEST_P(DataFolder, RefusesWhatIsNotARegularFile) {
  ASSERT_EQ(mkfifo(tree_.Path("servers/pipe").c_str(), 0600), 0);
  ExpectRefusal("pipe", "cannot read " + tree_.Path("servers/pipe") + ": not a regular file", EFailure::kAbsent);
  ExpectRefusal("sub", "cannot read " + tree_.Path("servers/sub") + ": not a regular file", EFailure::kAbsent);
}

TEST_P(DataFolder, NamesWhatIsMissing) {
  ExpectRefusal("none", "cannot open " + tree_.Path("servers/none") + ": No such file or directory", EFailure::kAbsent);
  ExpectRefusal("none/in", "cannot open " + tree_.Path("servers/none/in") + ": No such file or directory",
                EFailure::kAbsent);
  ExpectRefusal("in/in", "cannot open " + tree_.Path("servers/in/in") + ": Not a directory", EFailure::kAbsent);
}

TEST_P(DataFolder, LimitsTheSize) {
  tree_.Write("servers/six", "123456");
  EXPECT_EQ(Read("six").size(), 6U);
  tree_.Write("servers/seven", "1234567");
  ExpectRefusal("seven", tree_.Path("servers/seven") + " is larger than the limit of 6 bytes", EFailure::kTooLarge);
}

TEST(DataFolderOfTheKernel, FollowsLinksThatStayInIt) {
  const TTree tree;
  tree.Link("servers/near", "sub/below");
  TDataFolder folder(tree.Path("servers/s.toml"));
  EXPECT_EQ(AllOf(folder.Open("near", 3)), (TBytes{'d', 'e', 'f'}));
}

TEST(DataFolderStepByStep, FollowsNoLinkAtAll) {
  const TTree tree;
  tree.Link("servers/near", "sub/below");
  TDataFolder folder(tree.Path("servers/s.toml"), TDataFolder::EWay::kStepByStep);
  EXPECT_THROW(folder.Open("near", 3), THostError);
}

TEST(DataFolderOfAPipe, IsRefused) {
  const TTree tree;
  ASSERT_EQ(mkfifo(tree.Path("servers/s.toml").c_str(), 0600), 0);
  TDataFolder folder(tree.Path("servers/s.toml"));
  ExpectHostError(
      EFailure::kMalformed,
      "found a data file, but the server file comes from a pipe, which has no folder, expected a server file in "
      "a regular file, or the bytes themselves",
      [&] { folder.Open("in", 3); });
}

TEST(ServerFileOnDisk, IsRefusedAtThePlaceOfALinkOut) {
  const TTree tree;
  tree.Link("servers/leak", "../outside");
  tree.Write("servers/s.toml", "machine_type = \"\"\n[[dot.service_processor]]\nblock_file = \"leak\"\n");
  TFileReader reader;
  const std::string path = tree.Path("servers/s.toml");
  ExpectHostError(
      EFailure::kMalformed,
      path +
          ":3:14: error: found \"leak\", which is outside the folder because of a symbolic link, expected a file "
          "in the server file's folder or below\n"
          "  block_file = \"leak\"\n"
          "               ^\n",
      [&] { ReadServerFile(path, reader); });
}

TEST(StoredBytes, OfAFileAreReadOnDemand) {
  const TTree tree;
  std::string content;
  for (int i = 0; i < 40000; ++i) content += static_cast<char>(i % 251);
  tree.Write("servers/large", content);
  TDataFolder folder(tree.Path("servers/s.toml"));
  const TStoredBytes bytes = folder.Open("large", 40000);
  EXPECT_EQ(bytes.Size(), 40000U);
  EXPECT_EQ(bytes.Read(16380, 10), (TBytes{65, 66, 67, 68, 69, 70, 71, 72, 73, 74}));  // 16380 = 65 * 251 + 65
  EXPECT_EQ(bytes.Read(39998, 10), (TBytes{89, 90}));                                  // 39998 = 159 * 251 + 89
  EXPECT_EQ(bytes.Read(0, 3), (TBytes{0, 1, 2}));
  EXPECT_EQ(bytes.Read(40000, 1), TBytes{});
  EXPECT_EQ(AllOf(bytes), TBytes(content.begin(), content.end()));
}

TEST(StoredBytes, OfAFileThatWasShortenedEndEarly) {
  const TTree tree;
  TDataFolder folder(tree.Path("servers/s.toml"));
  const TStoredBytes bytes = folder.Open("in", 3);
  tree.Write("servers/in", "a");
  EXPECT_EQ(bytes.Read(0, 3), (TBytes{'a'}));
  EXPECT_EQ(bytes.Read(2, 1), TBytes{});
}

}  // namespace
}  // namespace tests
