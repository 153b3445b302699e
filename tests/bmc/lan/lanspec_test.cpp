#include "host/bmc/lan/lanspec.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "host/base/hosterror.h"
#include "tests/bmc/lan/memorysearch.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testing::IsEmpty;

TEST(LanSpec, HostAloneHasTheStandardPortAndNoUser) {
  const TLanOptions options = ParseLanSpec("lan:bmc7.example.net");
  EXPECT_EQ(options.host, "bmc7.example.net");
  EXPECT_EQ(options.port, 623);
  EXPECT_EQ(options.user, "");
  EXPECT_EQ(options.cipherSuites, (std::vector<int>{17, 3}));
  EXPECT_EQ(options.privilege, ELanPrivilege::kAdmin);
}

TEST(LanSpec, UserAndPort) {
  const TLanOptions options = ParseLanSpec("lan:me@127.0.0.1:9623");
  EXPECT_EQ(options.user, "me");
  EXPECT_EQ(options.host, "127.0.0.1");
  EXPECT_EQ(options.port, 9623);
}

TEST(LanSpec, LastAtSignEndsTheUser) {
  const TLanOptions options = ParseLanSpec("lan:me@corp@bmc");
  EXPECT_EQ(options.user, "me@corp");
  EXPECT_EQ(options.host, "bmc");
}

TEST(LanSpec, BracketsHoldAnIpv6Address) {
  const TLanOptions plain = ParseLanSpec("lan:[::1]");
  EXPECT_EQ(plain.host, "::1");
  EXPECT_EQ(plain.port, 623);
  const TLanOptions full = ParseLanSpec("lan:root@[fe80::1%eth0]:65535");
  EXPECT_EQ(full.host, "fe80::1%eth0");
  EXPECT_EQ(full.port, 65535);
  EXPECT_EQ(full.user, "root");
}

TEST(LanSpec, AddressIsWrittenInTheSameForm) {
  EXPECT_EQ(AddressOf(ParseLanSpec("lan:me@bmc:9623")), "bmc:9623");
  EXPECT_EQ(AddressOf(ParseLanSpec("lan:[::1]")), "[::1]:623");
}

void ExpectUsage(const std::string& spec, const std::string& problem) {
  try {
    ParseLanSpec(spec);
    ADD_FAILURE() << spec;
  } catch (const THostError& error) {
    EXPECT_EQ(error.Kind(), EFailure::kInvalidArgument);
    EXPECT_EQ(error.what(),
              "'" + spec + "': " + problem + "; expected lan:[USER@]HOST[:PORT], an IPv6 address in brackets");
  }
}

TEST(LanSpec, AnythingElseIsAUsageErrorThatNamesTheProblem) {
  ExpectUsage("lan", "does not begin with 'lan:'");
  ExpectUsage("lan:", "no host is given");
  ExpectUsage("lan:me@", "no host is given");
  ExpectUsage("lan::623", "no host is given");
  ExpectUsage("lan:[]", "no host is given");
  ExpectUsage("lan:@bmc", "'@' without a user before it");
  ExpectUsage("lan:seventeen-letters@bmc", "the user name is longer than 16 bytes, the limit of IPMI");
  ExpectUsage("lan:[::1", "'[' without ']'");
  ExpectUsage("lan:[bmc]", "'bmc' is not a host name or address");
  ExpectUsage("lan:bm c", "'bm c' is not a host name or address");
  ExpectUsage("lan:-bmc", "'-bmc' is not a host name or address");
  ExpectUsage("lan:[::1]623", "unexpected '623' after the address");
  ExpectUsage("lan:bmc:", "'' is not a port from 1 to 65535");
  ExpectUsage("lan:bmc:0", "'0' is not a port from 1 to 65535");
  ExpectUsage("lan:bmc:65536", "'65536' is not a port from 1 to 65535");
  ExpectUsage("lan:bmc:62x", "'62x' is not a port from 1 to 65535");
  ExpectUsage("lan:bmc:99999999999999999999", "'99999999999999999999' is not a port from 1 to 65535");
  ExpectUsage("lan:::1", "no host is given");
  ExpectUsage("lan:fe80::1", "':1' is not a port from 1 to 65535");
}

TEST(LanSpec, PasswordAfterTheUserIsRefusedAndNotRepeated) {
  for (const char* const spec : {"lan:me:s3cret@bmc", "lan:me:s3cret@", "lan::s3cret@bmc:0", "lan:me:s@cret@bmc"}) {
    try {
      ParseLanSpec(spec);
      ADD_FAILURE() << spec;
    } catch (const THostError& error) {
      EXPECT_EQ(error.Kind(), EFailure::kInvalidArgument);
      EXPECT_STREQ(error.what(),
                   "lan:USER@HOST: USER has a ':'; do not give a password there, because others can read it in the "
                   "list of processes: set VELHOST_IPMI_PASSWORD, or use --password-file");
    }
  }
}

TEST(LanPrivilege, HasThreeNames) {
  EXPECT_EQ(LanPrivilegeOf("user"), ELanPrivilege::kUser);
  EXPECT_EQ(LanPrivilegeOf("operator"), ELanPrivilege::kOperator);
  EXPECT_EQ(LanPrivilegeOf("admin"), ELanPrivilege::kAdmin);
  EXPECT_EQ(LanPrivilegeOf("root"), std::nullopt);
  EXPECT_STREQ(NameOf(ELanPrivilege::kOperator), "operator");
}

class LanPasswordSource : public testing::Test {
 protected:
  void ExpectError(const std::string& file, const std::optional<TSecret>& variable, EFailure kind,
                   const std::string& message) {
    try {
      LanPassword(file, variable, reader_);
      ADD_FAILURE() << "got a password";
    } catch (const THostError& error) {
      EXPECT_EQ(error.Kind(), kind);
      EXPECT_EQ(error.what(), message);
    }
  }
  std::string PasswordOf(const std::string& content) {
    reader_.Add("f", content);
    return LanPassword("f", TSecret("other"), reader_).Text();
  }
  TMemoryReader reader_;
};

TEST_F(LanPasswordSource, ComesFromTheVariable) {
  EXPECT_STREQ(LanPassword("", TSecret("pw"), reader_).Text(), "pw");
  EXPECT_STREQ(LanPassword("", TSecret(""), reader_).Text(), "");
}

TEST_F(LanPasswordSource, IsTheFilesFirstLine) {
  EXPECT_EQ(PasswordOf("pw two\nrest\n"), "pw two");
  EXPECT_EQ(PasswordOf("pw\r\n"), "pw");
  EXPECT_EQ(PasswordOf("no end"), "no end");
  EXPECT_EQ(PasswordOf(std::string("pw\nrest\0", 8)), "pw");
}

TEST_F(LanPasswordSource, IsRequired) {
  ExpectError("", std::nullopt, EFailure::kInvalidArgument,
              "a service processor on the network needs a password: set VELHOST_IPMI_PASSWORD, "
              "or use --password-file");
}

TEST_F(LanPasswordSource, HasAtMostTwentyBytes) {
  EXPECT_STREQ(LanPassword("", TSecret("12345678901234567890"), reader_).Text(), "12345678901234567890");
  ExpectError("", TSecret("123456789012345678901"), EFailure::kInvalidArgument,
              "the password in VELHOST_IPMI_PASSWORD is longer than 20 bytes, the limit of IPMI 2.0");
  reader_.Add("f", "123456789012345678901");
  ExpectError("f", std::nullopt, EFailure::kInvalidArgument,
              "the password in f is longer than 20 bytes, the limit of IPMI 2.0");
}

// A C string would end there, and a shorter password would be sent.
TEST_F(LanPasswordSource, HasNoNul) {
  reader_.Add("f", std::string("pw\0x\n", 5));
  ExpectError("f", std::nullopt, EFailure::kMalformed, "f: the password in its first line contains a NUL character");
}

TEST_F(LanPasswordSource, MissingFileIsAbsent) {
  ExpectError("gone", TSecret("pw"), EFailure::kAbsent, "cannot open gone: No such file or directory");
}

TEST(LanPasswordVariable, IsRemovedFromTheEnvironment) {
  setenv("VELHOST_TEST_PASSWORD", "s3cret", 1);
  const char* const place = getenv("VELHOST_TEST_PASSWORD");
  const auto taken = TakeSecretVariable("VELHOST_TEST_PASSWORD");
  ASSERT_TRUE(taken);
  EXPECT_STREQ(taken->Text(), "s3cret");
  EXPECT_EQ(getenv("VELHOST_TEST_PASSWORD"), nullptr);
  EXPECT_EQ(std::string(place, 6), std::string(6, '\0'));
  EXPECT_FALSE(TakeSecretVariable("VELHOST_TEST_PASSWORD"));
}

TEST(Secret, ProcessCannotBeReadWhileItHoldsOne) {
  ASSERT_EQ(prctl(PR_GET_DUMPABLE), 1);
  {
    const TSecret first("a");
    EXPECT_EQ(prctl(PR_GET_DUMPABLE), 0);
    const auto copy = std::make_unique<TSecret>(first);
    const TSecret second("b");
    EXPECT_STREQ(copy->Text(), "a");
    EXPECT_EQ(prctl(PR_GET_DUMPABLE), 0);
  }
  EXPECT_EQ(prctl(PR_GET_DUMPABLE), 1);
}

// free() itself overwrites only the first few bytes; the text follows them.
TEST(Secret, IsNotInMemoryAfterItsLastCopy) {
  tests::TMemorySearch search;
  std::string text = std::string(40, '-') + tests::THiddenText::Decoded();
  auto secret = std::make_unique<TSecret>(text);
  Wipe(text);
  auto copy = std::make_unique<TSecret>(*secret);
  secret.reset();
  EXPECT_EQ(search.Places().size(), 1U);
  copy.reset();
  EXPECT_THAT(search.Places(), IsEmpty());
}

TEST(Secret, WipedTextIsEmptyAndOverwritten) {
  std::string text(40, 'x');
  text.resize(3);
  Wipe(text);
  EXPECT_EQ(text, "");
  text.resize(40, ' ');
  EXPECT_EQ(text, std::string(40, ' '));
}

class PasswordFile : public testing::Test {
 protected:
  PasswordFile() { close(mkstemp(path_.data())); }
  ~PasswordFile() override { unlink(path_.c_str()); }
  std::string WarningWith(mode_t mode) const {
    chmod(path_.c_str(), mode);
    return PasswordFileWarning(path_);
  }
  std::string path_ = (std::filesystem::temp_directory_path() / "velhost-password-XXXXXX").string();
};

// After other text, since free() itself overwrites the first few bytes.
std::string LongPasswordFile() { return "short\n" + std::string(200, '-') + tests::THiddenText::Decoded(); }

TEST_F(PasswordFile, NothingOfItIsLeftInMemory) {
  std::string text = LongPasswordFile();
  // Not with a stream, whose buffer would keep a copy.
  const int file = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
  EXPECT_EQ(write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  close(file);
  Wipe(text);
  tests::TMemorySearch search;
  TFileReader reader;
  EXPECT_STREQ(LanPassword(path_, std::nullopt, reader).Text(), "short");
  EXPECT_THAT(search.Places(), IsEmpty());
}

TEST_F(PasswordFile, NothingIsLeftOfAPipeReadInTwoPieces) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  std::string text = LongPasswordFile();
  std::thread writer([out = ends[1], &text] {
    EXPECT_EQ(write(out, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    Wipe(text);
    // Writes the second piece once the first has been read.
    for (int unread = 1; unread > 0 && ioctl(out, FIONREAD, &unread) == 0;) std::this_thread::yield();
    const std::string rest(1000, '-');
    EXPECT_EQ(write(out, rest.data(), rest.size()), 1000);
    close(out);
  });
  const std::string pipe = "/dev/fd/" + std::to_string(ends[0]);
  TFileReader reader({pipe});
  EXPECT_STREQ(LanPassword(pipe, std::nullopt, reader).Text(), "short");
  writer.join();
  close(ends[0]);
  EXPECT_THAT(tests::TMemorySearch().Places(), IsEmpty());
}

TEST_F(PasswordFile, GivesAWarningIfOthersMayReadIt) {
  EXPECT_EQ(WarningWith(0644),
            "permissions 0644 for '" + path_ + "' are too open: others may read the password in it (chmod 600)");
  EXPECT_EQ(WarningWith(0640),
            "permissions 0640 for '" + path_ + "' are too open: others may read the password in it (chmod 600)");
  for (const mode_t mode : {0604U, 0620U, 0601U}) EXPECT_NE(WarningWith(mode), "") << mode;
  for (const mode_t mode : {0600U, 0400U, 0700U}) EXPECT_EQ(WarningWith(mode), "") << mode;
  EXPECT_EQ(PasswordFileWarning("/dev/null"), "");
  EXPECT_EQ(PasswordFileWarning("/nowhere"), "");
  EXPECT_EQ(PasswordFileWarning(""), "");
}

}  // namespace
}  // namespace tests
