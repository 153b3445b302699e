#include "host/output/outputfile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <functional>
#include <thread>

#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

class OutputFile : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder_.Path() / name; }
  mode_t ModeOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(::stat(Path(name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }
  TTemporaryFolder folder_;
};

TEST_F(OutputFile, AppearsWithCommit) {
  TOutputFile file(Path("out"));
  file.Write("one ");
  file.Write("two");
  file.Flush();
  EXPECT_FALSE(std::filesystem::exists(Path("out")));
  file.Commit();
  EXPECT_EQ(folder_.Names(), "out");
  EXPECT_EQ(folder_.Read("out"), "one two");
}

TEST_F(OutputFile, LeavesNothingWithoutCommit) {
  { TOutputFile(Path("out")).Write("half"); }
  EXPECT_EQ(folder_.Names(), "");
}

TEST_F(OutputFile, LeavesNothingAfterAnException) {
  try {
    TOutputFile file(Path("out"));
    file.Write("half");
    throw std::runtime_error("the writer failed");
  } catch (const std::runtime_error&) {
    EXPECT_EQ(folder_.Names(), "");
  }
}

// The tests cannot rely on a file system without nameless files, so kNamed simulates one.
TEST_F(OutputFile, WorksWithoutNamelessFiles) {
  folder_.Write("out", "old");
  for (const char* const name : {"out", "new"}) {
    TOutputFile file(Path(name), TOutputFile::EUnfinished::kNamed);
    file.Write("text");
    file.Commit();
    EXPECT_EQ(folder_.Read(name), "text");
  }
  { TOutputFile(Path("third"), TOutputFile::EUnfinished::kNamed).Write("half"); }
  EXPECT_EQ(folder_.Names(), "new out");
}

TEST_F(OutputFile, LeavesNothingIfTheProcessIsKilled) {
  const int probe = ::open(folder_.Path().c_str(), O_WRONLY | O_TMPFILE, 0600);
  if (probe < 0) GTEST_SKIP() << "this file system has no nameless files";
  ::close(probe);
  const pid_t child = ::fork();
  if (child == 0) {
    TOutputFile file(Path("out"));
    file.Write("half");
    file.Flush();
    ::raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(folder_.Names(), "");
}

TEST_F(OutputFile, ReplacesAFileThatAppearedMeanwhile) {
  TOutputFile file(Path("out"));
  file.Write("late");
  folder_.Write("out", "early");
  file.Commit();
  EXPECT_EQ(folder_.Names(), "out");
  EXPECT_EQ(folder_.Read("out"), "late");
}

TEST_F(OutputFile, KeepsTheOldFileUntilCommit) {
  folder_.Write("out", "old");
  {
    TOutputFile file(Path("out"));
    file.Write("half");
    file.Flush();
  }
  EXPECT_EQ(folder_.Read("out"), "old");
  EXPECT_EQ(folder_.Names(), "out");
}

TEST_F(OutputFile, GivesANewFileWhatTheMaskAllows) {
  const mode_t before = ::umask(027);
  TOutputFile file(Path("out"));
  file.Commit();
  ::umask(before);
  EXPECT_EQ(ModeOf("out"), 0640U);
}

TEST_F(OutputFile, KeepsThePermissionsOfAnExistingFile) {
  ASSERT_EQ(::chmod(folder_.Write("out", "old").c_str(), 0604), 0);
  TOutputFile file(Path("out"));
  file.Write("new");
  file.Commit();
  EXPECT_EQ(ModeOf("out"), 0604U);
  EXPECT_EQ(folder_.Read("out"), "new");
}

// The superuser passes every permission check, so the process runs as an ordinary user while this lives.
class TOrdinaryUser {
 public:
  TOrdinaryUser() : before_(::geteuid()) {
    if (before_ == 0) {
      EXPECT_EQ(::seteuid(kNobody), 0);
    }
  }
  ~TOrdinaryUser() {
    if (before_ == 0) {
      EXPECT_EQ(::seteuid(0), 0);
    }
  }
  TOrdinaryUser(const TOrdinaryUser&) = delete;
  TOrdinaryUser& operator=(const TOrdinaryUser&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  uid_t before_;
};

TEST_F(OutputFile, KeepsNoSpecialBits) {
  ASSERT_EQ(::chmod(folder_.Write("out", "old").c_str(), 07755), 0);
  TOutputFile file(Path("out"));
  file.Commit();
  EXPECT_EQ(ModeOf("out"), 0755U);
}

// Whoever was the owner or in the group may now be one of the others, so those keep only what everybody had: 0626
// becomes 0622, and 0646 becomes 0644.
TEST_F(OutputFile, GrantsOthersNothingNewIfTheOwnerIsLost) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can be another owner";
  ASSERT_EQ(::chmod(folder_.Write("owner", "old").c_str(), 04626), 0);
  ASSERT_EQ(::chown(folder_.Write("group", "old").c_str(), 0, 12345), 0);
  ASSERT_EQ(::chmod(Path("group").c_str(), 02646), 0);
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0777), 0);
  {
    const TOrdinaryUser user;
    for (const char* const name : {"owner", "group"}) {
      TOutputFile file(Path(name));
      file.Write("new");
      file.Commit();
    }
  }
  EXPECT_EQ(ModeOf("owner"), 0622U);
  EXPECT_EQ(ModeOf("group"), 0644U);
}

TEST_F(OutputFile, FollowsLinksThroughFolders) {
  std::filesystem::create_directories(Path("a/b"));
  std::filesystem::create_symlink("a/b/second", Path("first"));
  std::filesystem::create_symlink("../target", Path("a/b/second"));
  TOutputFile file(Path("first"));
  file.Write("text");
  file.Commit();
  EXPECT_EQ(folder_.Read("a/target"), "text");
  EXPECT_TRUE(std::filesystem::is_symlink(Path("first")));
}

TEST_F(OutputFile, GivesUpOnCircularLinks) {
  std::filesystem::create_symlink("b", Path("a"));
  std::filesystem::create_symlink("a", Path("b"));
  EXPECT_EQ(FailureOf([this] { TOutputFile file(Path("a")); }),
            "not created: cannot create " + Path("a") + ": Too many levels of symbolic links");
}

TEST_F(OutputFile, StaysInTheFolderThatItOpened) {
  std::filesystem::create_directory(Path("folder"));
  TOutputFile file(Path("folder/out"));
  std::filesystem::rename(Path("folder"), Path("moved"));
  std::filesystem::create_directory(Path("other"));
  std::filesystem::create_symlink("other", Path("folder"));
  file.Commit();
  EXPECT_TRUE(std::filesystem::exists(Path("moved/out")));
  EXPECT_TRUE(std::filesystem::is_empty(Path("other")));
}

TEST_F(OutputFile, ReplacesALinkThatAppearedMeanwhile) {
  folder_.Write("target", "kept");
  TOutputFile file(Path("out"));
  file.Write("new");
  std::filesystem::create_symlink("target", Path("out"));
  file.Commit();
  EXPECT_EQ(folder_.Read("target"), "kept");
  EXPECT_EQ(folder_.Read("out"), "new");
  EXPECT_FALSE(std::filesystem::is_symlink(Path("out")));
}

TEST_F(OutputFile, WritesThroughASymbolicLink) {
  folder_.Write("target", "old");
  std::filesystem::create_symlink("target", Path("link"));
  std::filesystem::create_symlink("fresh", Path("dangling"));
  for (const char* name : {"link", "dangling"}) {
    TOutputFile file(Path(name));
    file.Write("new");
    file.Commit();
    EXPECT_TRUE(std::filesystem::is_symlink(Path(name)));
  }
  EXPECT_EQ(folder_.Read("target"), "new");
  EXPECT_EQ(folder_.Read("fresh"), "new");
}

TEST_F(OutputFile, AcceptsTheLongestName) {
  const std::string name(255, 'n');
  TOutputFile file(Path(name));
  file.Commit();
  EXPECT_EQ(folder_.Names(), name);
}

TEST_F(OutputFile, SaysWhyAFileCannotBeCreated) {
  EXPECT_EQ(FailureOf([this] { TOutputFile file(Path("absent/out")); }),
            "not created: cannot create " + Path("absent/out") + ": No such file or directory");
  EXPECT_EQ(FailureOf([this] { TOutputFile file(folder_.Path()); }),
            "not created: cannot create " + folder_.Path().string() + ": is a folder");
  EXPECT_EQ(FailureOf([] { TOutputFile file(""); }), "not created: cannot create : the name is empty");
  EXPECT_EQ(FailureOf([this] { TOutputFile file(Path("a\n\u009bb/out")); }),
            "not created: cannot create " + Path("a\\n\\x9bb/out") + ": No such file or directory");
  EXPECT_EQ(FailureOf([this] { TOutputFile file(Path("absent/")); }),
            "not created: cannot create " + Path("absent/") + ": does not name a file");
  EXPECT_EQ(FailureOf([this] { TOutputFile file(Path(".")); }),
            "not created: cannot create " + Path(".") + ": is a folder");
  folder_.Write("file", "");
  EXPECT_EQ(FailureOf([this] { TOutputFile file(Path("file/out")); }),
            "not created: cannot create " + Path("file/out") + ": Not a directory");
  EXPECT_EQ(FailureOf([] { TOutputFile file("/dev/fd/987654"); }),
            "not created: cannot create /dev/fd/987654: Bad file descriptor");
}

TEST_F(OutputFile, LeavesAProtectedFileAlone) {
  ASSERT_EQ(::chmod(folder_.Write("out", "old").c_str(), 0444), 0);
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0777), 0);
  const TOrdinaryUser user;
  EXPECT_EQ(FailureOf([this] { TOutputFile file(Path("out")); }),
            "not created: cannot create " + Path("out") + ": Permission denied");
  EXPECT_EQ(folder_.Names(), "out");
}

TEST_F(OutputFile, RequiresAWritableFolder) {
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0555), 0);
  const TOrdinaryUser user;
  EXPECT_EQ(FailureOf([this] { TOutputFile file(Path("out")); }),
            "not created: cannot create " + Path("out") + ": Permission denied");
}

TEST_F(OutputFile, WritesToADeviceDirectly) {
  TOutputFile file("/dev/null");
  file.Write("text");
  file.Commit();
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(OutputFile, SaysThatADeviceIsFull) {
  EXPECT_EQ(FailureOf([] {
              TOutputFile file("/dev/full");
              file.Write("text");
              file.Commit();
            }),
            "not written: cannot write /dev/full: No space left on device");
}

TEST_F(OutputFile, WritesToAPipeDirectly) {
  ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
  std::string received;
  std::thread reader([this, &received] { received = folder_.Read("pipe"); });
  {
    TOutputFile file(Path("pipe"));
    file.Write("text");
    file.Commit();
  }
  reader.join();
  EXPECT_EQ(received, "text");
  EXPECT_TRUE(std::filesystem::is_fifo(Path("pipe")));
}

TEST_F(OutputFile, ContinuesWhereTheDescriptorHasWritten) {
  const int descriptor = ::open(Path("out").c_str(), O_WRONLY | O_CREAT, 0600);
  ASSERT_EQ(::write(descriptor, "before ", 7), 7);
  {
    TOutputFile file("/dev/fd/" + std::to_string(descriptor));
    file.Write("text");
    file.Commit();
  }
  ASSERT_EQ(::write(descriptor, " after", 6), 6);
  ::close(descriptor);
  EXPECT_EQ(folder_.Read("out"), "before text after");
}

class DescriptorSink : public testing::Test {
 protected:
  void SetUp() override {
    IgnoreBrokenPipeSignal();
    ASSERT_EQ(::pipe2(ends_.data(), O_CLOEXEC), 0);
  }
  void TearDown() override {
    Close(0);
    Close(1);
  }
  void Close(std::size_t end) {
    if (ends_.at(end) >= 0) ::close(ends_.at(end));
    ends_.at(end) = -1;
  }
  std::string ReadAll() {
    std::string text;
    std::array<char, 4096> part;
    for (ssize_t size = 1; size > 0; text.append(part.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)))) {
      size = ::read(ends_[0], part.data(), part.size());
    }
    return text;
  }
  std::array<int, 2> ends_{-1, -1};
};

TEST_F(DescriptorSink, GathersSmallPiecesUntilFlush) {
  TDescriptorSink sink(ends_[1], "the pipe");
  sink.Write("one ");
  ASSERT_EQ(::fcntl(ends_[0], F_SETFL, O_NONBLOCK), 0);
  char c = 0;
  EXPECT_EQ(::read(ends_[0], &c, 1), -1);
  sink.Write("two");
  sink.Flush();
  Close(1);
  EXPECT_EQ(ReadAll(), "one two");
}

TEST_F(DescriptorSink, WritesMoreThanADescriptorTakesAtOnce) {
  ASSERT_EQ(::fcntl(ends_[1], F_SETFL, O_NONBLOCK), 0);
  const std::string text(300000, 'x');
  std::string received;
  std::thread reader([this, &received] { received = ReadAll(); });
  TDescriptorSink sink(ends_[1], "the pipe");
  sink.Write("start ");
  sink.Write(text);
  sink.Flush();
  Close(1);
  reader.join();
  EXPECT_EQ(received, "start " + text);
}

TEST_F(DescriptorSink, TellsAClosedPipeFromOtherFailures) {
  Close(0);
  TDescriptorSink sink(ends_[1], "standard output");
  sink.Write("text");
  EXPECT_THROW(sink.Flush(), TClosedPipe);
  EXPECT_NO_THROW(sink.Flush());  // nothing is left that could fail again
  TDescriptorSink closed(-1, "standard output");
  closed.Write("text");
  ExpectHostError(EFailure::kNotWritten, "standard output is closed", [&closed] { closed.Flush(); });
}

}  // namespace
}  // namespace tests
