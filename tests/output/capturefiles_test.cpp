#include "host/output/capturefiles.h"

#include "host/base/hosterror.h"
#include "tests/output/outputfixture.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

class CaptureFolder : public TOutputTest {
 protected:
  std::string Path(const std::string& name) const { return folder_.Path() / name; }
  TTemporaryFolder folder_;
};

TEST_F(CaptureFolder, WritesTheRawBytes) {
  const TCaptureFolder captures(folder_.Path());
  EXPECT_EQ(captures.Write(*Capture("0a ff 00 "), false), Path("node1-cpu_err-0.bin"));
  EXPECT_EQ(folder_.Names(), "node1-cpu_err-0.bin");
  EXPECT_EQ(folder_.Read("node1-cpu_err-0.bin"), std::string("\x0a\xff\x00", 3));
}

TEST_F(CaptureFolder, WritesAnEmptyFile) {
  TCaptureFolder(folder_.Path()).Write(*Capture(""), false);
  EXPECT_EQ(folder_.Names(), "node1-cpu_err-0.bin");
  EXPECT_EQ(folder_.Read("node1-cpu_err-0.bin"), "");
}

TEST_F(CaptureFolder, CreatesTheFolderButNotItsParents) {
  TCaptureFolder(Path("new")).Write(*Capture("41 "), false);
  EXPECT_TRUE(std::filesystem::exists(Path("new/node1-cpu_err-0.bin")));
  ExpectHostError(EFailure::kNotCreated,
                  "cannot create the folder " + Path("absent/new") + ": No such file or directory",
                  [this] { const TCaptureFolder captures(Path("absent/new")); });
}

TEST_F(CaptureFolder, RefusesAFileInItsPlace) {
  const std::string file = folder_.Write("file", "");
  ExpectHostError(EFailure::kNotCreated, "cannot create the folder " + file + ": exists and is not a folder",
                  [&file] { const TCaptureFolder captures(file); });
}

TEST_F(CaptureFolder, ReplacesALinkAndAnythingElseExceptAFolder) {
  folder_.Write("target", "kept");
  const std::string name = "node1-cpu_err-0.bin";
  const TCaptureFolder captures(folder_.Path());
  for (const char* const target : {"target", "absent", "/dev/null"}) {
    std::filesystem::remove(Path(name));
    std::filesystem::create_symlink(target, Path(name));
    captures.Write(*Capture("41 "), false);
    EXPECT_EQ(std::filesystem::symlink_status(Path(name)).type(), std::filesystem::file_type::regular) << target;
    EXPECT_EQ(folder_.Read(name), "A");
    cimNamespace_ = TNamespace::Create();
  }
  EXPECT_EQ(folder_.Names(), name + " target");
  EXPECT_EQ(folder_.Read("target"), "kept");
}

TEST_F(CaptureFolder, NamesACutFilePartialAndRemovesTheOtherForm) {
  const TCaptureFolder captures(folder_.Path());
  EXPECT_EQ(captures.Write(*Capture("41 "), true), Path("node1-cpu_err-0.bin.partial"));
  EXPECT_EQ(folder_.Names(), "node1-cpu_err-0.bin.partial");
  EXPECT_EQ(folder_.Read("node1-cpu_err-0.bin.partial"), "A");
  cimNamespace_ = TNamespace::Create();
  EXPECT_EQ(captures.Write(*Capture("42 "), false), Path("node1-cpu_err-0.bin"));
  EXPECT_EQ(folder_.Names(), "node1-cpu_err-0.bin");
  cimNamespace_ = TNamespace::Create();
  captures.Write(*Capture("43 "), true);
  EXPECT_EQ(folder_.Names(), "node1-cpu_err-0.bin.partial");
}

TEST_F(CaptureFolder, RemovesALinkOfTheOtherFormWithoutFollowingIt) {
  folder_.Write("target", "kept");
  std::filesystem::create_symlink("target", Path("node1-cpu_err-0.bin"));
  TCaptureFolder(folder_.Path()).Write(*Capture("41 "), true);
  EXPECT_EQ(folder_.Names(), "node1-cpu_err-0.bin.partial target");
  EXPECT_EQ(folder_.Read("target"), "kept");
}

TEST_F(CaptureFolder, SaysThatTheOtherFormCannotBeRemoved) {
  const std::string name = "node1-cpu_err-0.bin.partial";
  std::filesystem::create_directory(Path(name));
  ExpectHostError(EFailure::kNotWritten, "cannot remove " + Path(name) + ": Is a directory",
                  [this] { TCaptureFolder(folder_.Path()).Write(*Capture("41 "), false); });
}

TEST_F(CaptureFolder, GivesAReplacedFileFreshPermissions) {
  const std::string name = "node1-cpu_err-0.bin";
  std::filesystem::permissions(folder_.Write(name, "old"), std::filesystem::perms(0777));
  const mode_t before = ::umask(027);
  TCaptureFolder(folder_.Path()).Write(*Capture("41 "), false);
  ::umask(before);
  EXPECT_EQ(std::filesystem::status(Path(name)).permissions(), std::filesystem::perms(0640));
}

TEST_F(CaptureFolder, StaysInTheFolderThatItOpened) {
  const TCaptureFolder captures(Path("first"));
  std::filesystem::rename(Path("first"), Path("moved"));
  std::filesystem::create_directory(Path("other"));
  std::filesystem::create_symlink("other", Path("first"));
  captures.Write(*Capture("41 "), false);
  EXPECT_TRUE(std::filesystem::exists(Path("moved/node1-cpu_err-0.bin")));
  EXPECT_TRUE(std::filesystem::is_empty(Path("other")));
}

TEST_F(CaptureFolder, WritesNothingForOtherInstances) {
  const TCaptureFolder captures(folder_.Path());
  EXPECT_EQ(captures.Write(*One(TType::kString, TCIMValue("0a ")), false), std::nullopt);
  cimNamespace_ = TNamespace::Create();
  EXPECT_EQ(captures.Write(*Capture("no hex"), false), std::nullopt);
  EXPECT_EQ(folder_.Names(), "");
}

TEST(CaptureFileName, StaysInsideItsFolder) {
  EXPECT_EQ(CaptureFileName({"../cpu\nerr", "1/2", "\x7f", "", {}}), "node1_2-.._cpu_err-_.bin");
  EXPECT_EQ(CaptureFileName({"a\u202eb\u009b\u00e9", "1", "0", "", {}}), "node1-a_b_\u00e9-0.bin");
  EXPECT_EQ(CaptureFileName({std::string(300, 'f'), "1", "0", "", {}}), "node1-" + std::string(76, 'f') + "-0.bin");
}

TEST(CaptureFileName, LeavesRoomForTheSuffix) {
  const std::string part(300, 'f');
  EXPECT_LE((CaptureFileName({part, part, part, "", {}}) + std::string(kPartialSuffix)).size(), 255U);
}

TEST(DecodeHexPairs, ReadsPairsWithOrWithoutTheLastBlank) {
  using TBytes = std::vector<std::uint8_t>;
  EXPECT_EQ(DecodeHexPairs("0a ff 00 "), (TBytes{0x0A, 0xFF, 0x00}));
  EXPECT_EQ(DecodeHexPairs("0A Ff"), (TBytes{0x0A, 0xFF}));
  EXPECT_EQ(DecodeHexPairs(""), TBytes{});
}

TEST(DecodeHexPairs, RefusesEveryOtherText) {
  for (const char* text : {"0", "0a f", "0aff", "0a  ff", "0a ff  ", "0g ", " 0a", "0a,ff", "0a f ", "  "}) {
    EXPECT_EQ(DecodeHexPairs(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace tests
