#include "host/base/sourcereader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/support/expectfailure.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

class FileReader : public testing::Test {
 protected:
  std::string Path(const char* name) const { return folder_ + "/" + name; }
  std::string Write(const char* name, const std::string& content) const { return temporary_.Write(name, content); }

  const TTemporaryFolder temporary_;
  const std::string folder_ = temporary_.Path();
  TFileReader reader_;
};

TEST_F(FileReader, GivesEveryByteOfAFile) {
  const std::string content("line\n\0\xFF\r\nno end", 15);
  EXPECT_EQ(reader_.Read(Write("a", content), 100), content);
  EXPECT_EQ(reader_.Read(Write("empty", ""), 100), "");
}

TEST_F(FileReader, FollowsALink) {
  Write("a", "content");
  fs::create_symlink("a", Path("link"));
  EXPECT_EQ(reader_.Read(Path("link"), 100), "content");
}

TEST_F(FileReader, TellsWhetherWhatItReadIsInAFolder) {
  fs::create_directories(Path("in/below"));
  Write("in/a", "x");
  Write("in/below/b", "x");
  Write("inner", "x");
  EXPECT_FALSE(reader_.LiesIn(folder_)) << "nothing was read";
  reader_.Read(Path("in/a"), 1);
  EXPECT_TRUE(reader_.LiesIn(Path("in")));
  EXPECT_TRUE(reader_.LiesIn(Path("in/below/..")));
  EXPECT_TRUE(reader_.LiesIn("/"));
  EXPECT_FALSE(reader_.LiesIn(Path("in/below")));
  EXPECT_FALSE(reader_.LiesIn(Path("none")));
  reader_.Read(Path("in/below/../../in/below/b"), 1);
  EXPECT_TRUE(reader_.LiesIn(Path("in")));
  reader_.Read(Path("inner"), 1);
  EXPECT_FALSE(reader_.LiesIn(Path("in"))) << "its name only begins alike";
}

TEST_F(FileReader, ALinkIsWhereItLeads) {
  fs::create_directories(Path("in"));
  Write("secret", "x");
  fs::create_symlink("../secret", Path("in/link"));
  reader_.Read(Path("in/link"), 1);
  fs::remove(Path("in/link"));
  Write("in/link", "x");
  EXPECT_FALSE(reader_.LiesIn(Path("in"))) << "whatever has its name by now";
}

TEST_F(FileReader, NothingIsInAnyFolderOnceAReadHasFailed) {
  reader_.Read(Write("a", "x"), 1);
  EXPECT_ANY_THROW(reader_.Read(Path("none"), 1));
  EXPECT_FALSE(reader_.LiesIn(folder_));
}

TEST(MemoryReader, TextsAreInTheFoldersOfTheirNames) {
  TMemoryReader reader;
  reader.Add("in/a", "x");
  reader.Read("in/a", 1);
  EXPECT_TRUE(reader.LiesIn("in"));
  EXPECT_TRUE(reader.LiesIn(""));
  EXPECT_FALSE(reader.LiesIn("i"));
  EXPECT_FALSE(reader.LiesIn("in/a/b"));
}

TEST_F(FileReader, ReadsUpToTheLimit) {
  const std::string path = Write("a", "12345");
  EXPECT_EQ(reader_.Read(path, 5), "12345");
  ExpectHostError(EFailure::kTooLarge, path + " is larger than the limit of 4 bytes", [&] { reader_.Read(path, 4); });
  ExpectHostError(EFailure::kTooLarge, path + " is larger than the limit of 0 bytes", [&] { reader_.Read(path, 0); });
}

TEST_F(FileReader, AMissingFileIsNamed) {
  ExpectHostError(EFailure::kAbsent, "cannot open " + Path("none") + ": No such file or directory",
                  [this] { reader_.Read(Path("none"), 10); });
  ExpectHostError(EFailure::kAbsent, "cannot open " + Path("none/a") + ": No such file or directory",
                  [this] { reader_.Read(Path("none/a"), 10); });
  const std::string file = Write("a", "x");
  ExpectHostError(EFailure::kAbsent, "cannot open " + file + "/b: Not a directory",
                  [&] { reader_.Read(file + "/b", 10); });
}

TEST_F(FileReader, AFolderIsNotAnInput) {
  ExpectHostError(EFailure::kAbsent, "cannot read " + folder_ + ": Is a directory",
                  [this] { reader_.Read(folder_, 10); });
}

// Must not wait for a writer, which never comes.
TEST_F(FileReader, APipeIsNotAnInput) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  ExpectHostError(EFailure::kAbsent, "cannot read " + Path("pipe") + ": not a regular file",
                  [this] { reader_.Read(Path("pipe"), 10); });
}

TEST_F(FileReader, APipeThatTheUserNamesIsReadUntilItsWritersCloseIt) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  const std::string text(200'000, 'x');  // more than a pipe holds
  std::thread writer([&] {
    std::ofstream file(Path("pipe"));  // waits for the reader
    file << text;
  });
  TFileReader reader({"another", Path("pipe")});
  EXPECT_EQ(reader.Read(Path("pipe"), text.size()), text);
  writer.join();
}

TEST_F(FileReader, APipeThatHoldsMoreThanTheLimitIsRefused) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  ASSERT_EQ(write(ends[1], "12345", 5), 5);
  const std::string path = "/dev/fd/" + std::to_string(ends[0]);
  TFileReader reader({path});
  ExpectHostError(EFailure::kTooLarge, path + " is larger than the limit of 4 bytes", [&] { reader.Read(path, 4); });
  close(ends[1]);
  EXPECT_EQ(reader.Read(path, 4), "");
  close(ends[0]);
}

TEST_F(FileReader, APipeEndsEvenIfItIsOpenedAgainAfterItsWriter) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  const int readerEnd = open(Path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
  std::ofstream(Path("pipe")) << "text";
  const std::string path = "/dev/fd/" + std::to_string(readerEnd);
  EXPECT_EQ(TFileReader({path}).Read(path, 10), "text");
  close(readerEnd);
}

TEST_F(FileReader, WaitingForAPipeThatNobodyWritesToEnds) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  TFileReader reader({Path("pipe")}, std::chrono::milliseconds(1));
  const std::string message = "cannot read " + Path("pipe") + ": nothing was written to the pipe";
  ExpectHostError(EFailure::kAbsent, message, [&] { reader.Read(Path("pipe"), 4); });
  const int silent = open(Path("pipe").c_str(), O_RDWR);
  ExpectHostError(EFailure::kAbsent, message, [&] { reader.Read(Path("pipe"), 4); });
  close(silent);
}

class TStoppableReader : public TFileReader {
 public:
  using TFileReader::TFileReader;
  void CheckStop() override {
    if (interrupted) throw TEndedReading(EFailure::kStopped, "stopped");
  }
  static inline volatile std::sig_atomic_t interrupted = 0;
};

TEST_F(FileReader, AStopEndsTheWaitForAPipe) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  struct sigaction action = {};
  action.sa_handler = [](int) { TStoppableReader::interrupted = 1; };
  struct sigaction before = {};
  sigaction(SIGALRM, &action, &before);
  const itimerval soon = {{0, 20'000}, {0, 20'000}};  // repeating: the first may come before the wait begins
  setitimer(ITIMER_REAL, &soon, nullptr);
  TStoppableReader reader({Path("pipe")}, std::chrono::hours(1));
  ExpectHostError(EFailure::kStopped, "stopped", [&] { reader.Read(Path("pipe"), 4); });
  // A stop that came before the wait ends it too.
  ExpectHostError(EFailure::kStopped, "stopped", [&] { reader.Read(Path("pipe"), 4); });
  std::ofstream(Path("file")) << "text";
  ExpectHostError(EFailure::kStopped, "stopped", [&] { reader.Read(Path("file"), 4); });
  TStoppableReader::interrupted = 0;
  const itimerval never = {};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);
}

TEST_F(FileReader, ADeviceIsNotAnInput) {
  ExpectHostError(EFailure::kAbsent, "cannot read /dev/zero: not a regular file",
                  [this] { reader_.Read("/dev/zero", 10); });
}

// Root may read everything, so this runs as another user, in a separate process.
TEST_F(FileReader, AFileWithoutPermissionIsDenied) {
  const std::string path = Write("secret", "x");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  ASSERT_EQ(chmod(folder_.c_str(), 0755), 0);
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
    ExpectHostError(EFailure::kDenied, "cannot open " + path + ": Permission denied", [&] { reader_.Read(path, 10); });
    _exit(HasFailure() ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(MemoryReader, ServesWhatWasAdded) {
  TMemoryReader reader;
  reader.Add("a.mof", "class A {};");
  reader.Add("a.mof", "class B {};");
  EXPECT_EQ(reader.Read("a.mof", 100), "class B {};");
}

TEST(MemoryReader, FailsLikeAFileReader) {
  TMemoryReader reader;
  reader.Add("a.mof", "12345");
  ExpectHostError(EFailure::kAbsent, "cannot open b.mof: No such file or directory",
                  [&] { reader.Read("b.mof", 100); });
  ExpectHostError(EFailure::kTooLarge, "a.mof is larger than the limit of 4 bytes", [&] { reader.Read("a.mof", 4); });
  EXPECT_EQ(reader.Read("a.mof", 5), "12345");
}

}  // namespace
}  // namespace tests
