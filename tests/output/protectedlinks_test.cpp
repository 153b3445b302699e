// Links and files of another user in a folder such as /tmp. The kernel decides what is refused, so these tests
// require its protection rules; they are enabled in the virtual machine of tests/kernel.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "host/bmc/record/recording.h"
#include "host/output/capturefiles.h"
#include "host/output/outputfile.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kAttacker = 65534;

bool IsOn(const std::string& rule) {
  std::ifstream file("/proc/sys/fs/" + rule);
  int value = 0;
  return file >> value && value > 0;
}

/// "shared" has the permissions of /tmp; "private" contains a file and is accessible only to root.
class ProtectedLinks : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a link to another user";
    if (!IsOn("protected_symlinks")) GTEST_SKIP() << "fs.protected_symlinks is off";
    fs::create_directory(Path("shared"));
    ASSERT_EQ(::chmod(Path("shared").c_str(), 01777), 0);
    fs::create_directory(Path("private"));
    ASSERT_EQ(::chmod(Path("private").c_str(), 0700), 0);
    std::ofstream(Path("private/secret")) << "kept";
  }
  std::string Path(const std::string& name) const { return folder_.Path() / name; }
  /// Creates a link that belongs to the other user.
  std::string Link(const std::string& name, const std::string& target) const {
    fs::create_symlink(Path(target), Path(name));
    EXPECT_EQ(::lchown(Path(name).c_str(), kAttacker, kAttacker), 0);
    return Path(name);
  }
  static std::string FailureToWrite(const std::string& path) {
    return FailureOf([&path] {
      TOutputFile file(path);
      file.Write("replaced");
      file.Commit();
    });
  }
  static std::string Refused(const std::string& path) {
    return "not created: cannot create " + path + ": Permission denied";
  }
  /// No file was added to the private folder, and its file is unchanged.
  void ExpectPrivateIsUntouched() const {
    EXPECT_EQ(std::distance(fs::directory_iterator(Path("private")), fs::directory_iterator()), 1);
    std::string text;
    std::ifstream(Path("private/secret")) >> text;
    EXPECT_EQ(text, "kept");
  }
  TTemporaryFolder folder_;
};

TEST_F(ProtectedLinks, ALinkToAFileIsRefused) {
  const std::string link = Link("shared/link", "private/secret");
  EXPECT_EQ(FailureToWrite(link), Refused(link));
  EXPECT_EQ(FailureOf([&link] { const TRecordingFile file(link); }), Refused(link));
  ExpectPrivateIsUntouched();
}

TEST_F(ProtectedLinks, ALinkToNothingIsRefused) {
  const std::string link = Link("shared/link", "private/new");
  EXPECT_EQ(FailureToWrite(link), Refused(link));
  EXPECT_EQ(FailureOf([&link] { const TRecordingFile file(link); }), Refused(link));
  ExpectPrivateIsUntouched();
}

TEST_F(ProtectedLinks, ALinkToAFolderIsRefused) {
  const std::string link = Link("shared/link", "private");
  EXPECT_EQ(FailureToWrite(link + "/new"), Refused(link + "/new"));
  EXPECT_EQ(FailureToWrite(link + "/secret"), Refused(link + "/secret"));
  EXPECT_EQ(FailureOf([&link] { const TCaptureFolder captures(link); }),
            "not created: cannot create the folder " + link + ": Permission denied");
  ExpectPrivateIsUntouched();
}

TEST_F(ProtectedLinks, ALinkReachedThroughTheUsersOwnLinkIsRefused) {
  Link("shared/link", "private/secret");
  fs::create_symlink(Path("shared/link"), Path("own"));
  EXPECT_EQ(FailureToWrite(Path("own")), Refused(Path("own")));
  ExpectPrivateIsUntouched();
}

TEST_F(ProtectedLinks, TheUsersOwnLinkIsFollowed) {
  fs::create_symlink(Path("target"), Path("shared/own"));
  EXPECT_EQ(FailureToWrite(Path("shared/own")), "none");
  EXPECT_EQ(folder_.Read("target"), "replaced");
}

TEST_F(ProtectedLinks, AFileOfAnotherUserIsRefused) {
  if (!IsOn("protected_regular")) GTEST_SKIP() << "fs.protected_regular is off";
  std::ofstream(Path("shared/out")) << "old";
  ASSERT_EQ(::chown(Path("shared/out").c_str(), kAttacker, kAttacker), 0);
  EXPECT_EQ(FailureToWrite(Path("shared/out")), Refused(Path("shared/out")));
  EXPECT_EQ(folder_.Read("shared/out"), "old");
}

TEST_F(ProtectedLinks, APipeOfAnotherUserIsRefused) {
  if (!IsOn("protected_fifos")) GTEST_SKIP() << "fs.protected_fifos is off";
  ASSERT_EQ(::mkfifo(Path("shared/pipe").c_str(), 0666), 0);
  ASSERT_EQ(::chown(Path("shared/pipe").c_str(), kAttacker, kAttacker), 0);
  EXPECT_EQ(FailureToWrite(Path("shared/pipe")), Refused(Path("shared/pipe")));
}

}  // namespace
}  // namespace tests
