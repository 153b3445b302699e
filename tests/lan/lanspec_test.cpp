#include "host/serviceprocessor/lan/lanspec.h"

#include <gmock/gmock.h>

#include "host/core/hosterror.h"

namespace NKROVEL20 {
namespace {

using testing::HasSubstr;
using testing::Not;

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

TEST(LanSpec, AddressIsWrittenAsItIsRead) {
  EXPECT_EQ(AddressOf(ParseLanSpec("lan:me@bmc:9623")), "bmc:9623");
  EXPECT_EQ(AddressOf(ParseLanSpec("lan:[::1]")), "[::1]:623");
}

void ExpectUsage(const std::string& spec, const std::string& problem) {
  try {
    ParseLanSpec(spec);
    ADD_FAILURE() << spec;
  } catch (const THostError& error) {
    EXPECT_EQ(error.Status(), EExitStatus::kUsage);
    EXPECT_EQ(error.what(),
              "'" + spec + "': " + problem + "; expected lan:[USER@]HOST[:PORT], an IPv6 address in brackets");
  }
}

TEST(LanSpec, AnythingElseIsAUsageErrorThatNamesTheProblem) {
  ExpectUsage("lan", "does not begin with 'lan:'");
  ExpectUsage("lan:", "names no host");
  ExpectUsage("lan:me@", "names no host");
  ExpectUsage("lan::623", "names no host");
  ExpectUsage("lan:[]", "names no host");
  ExpectUsage("lan:@bmc", "'@' without a user before it");
  ExpectUsage("lan:seventeen-letters@bmc", "the user's name is longer than the 16 bytes of IPMI");
  ExpectUsage("lan:[::1", "'[' without ']'");
  ExpectUsage("lan:[bmc]", "'bmc' is no host name or address");
  ExpectUsage("lan:bm c", "'bm c' is no host name or address");
  ExpectUsage("lan:-bmc", "'-bmc' is no host name or address");
  ExpectUsage("lan:[::1]623", "'623' behind the address");
  ExpectUsage("lan:bmc:", "'' is no port from 1 to 65535");
  ExpectUsage("lan:bmc:0", "'0' is no port from 1 to 65535");
  ExpectUsage("lan:bmc:65536", "'65536' is no port from 1 to 65535");
  ExpectUsage("lan:bmc:62x", "'62x' is no port from 1 to 65535");
  ExpectUsage("lan:bmc:99999999999999999999", "'99999999999999999999' is no port from 1 to 65535");
  ExpectUsage("lan:::1", "names no host");
  ExpectUsage("lan:fe80::1", "':1' is no port from 1 to 65535");
}

TEST(LanSpec, PasswordBehindTheUserIsRefusedAndNotRepeated) {
  for (const char* const spec : {"lan:me:s3cret@bmc", "lan:me:s3cret@", "lan::s3cret@bmc:0", "lan:me:s@cret@bmc"}) {
    try {
      ParseLanSpec(spec);
      ADD_FAILURE() << spec;
    } catch (const THostError& error) {
      EXPECT_EQ(error.Status(), EExitStatus::kUsage);
      EXPECT_STREQ(error.what(),
                   "lan:USER@HOST: USER has a ':'; a password does not belong there, where others can read it in the "
                   "list of processes: set VELHOST_IPMI_PASSWORD, or name a file with --password-file");
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

class LanPasswordTest : public testing::Test {
 protected:
  void ExpectError(const std::string& file, const char* environment, EExitStatus status, const std::string& message) {
    try {
      LanPassword(file, environment, reader_);
      ADD_FAILURE() << "got a password";
    } catch (const THostError& error) {
      EXPECT_EQ(error.Status(), status);
      EXPECT_EQ(error.what(), message);
    }
  }
  TMemoryReader reader_;
};

TEST_F(LanPasswordTest, ComesFromTheEnvironment) {
  EXPECT_EQ(LanPassword("", "pw", reader_), "pw");
  EXPECT_EQ(LanPassword("", "", reader_), "");
}

TEST_F(LanPasswordTest, IsTheFilesFirstLine) {
  reader_.Add("f", "pw two\nrest\n");
  EXPECT_EQ(LanPassword("f", "other", reader_), "pw two");
  reader_.Add("f", "pw\r\n");
  EXPECT_EQ(LanPassword("f", nullptr, reader_), "pw");
  reader_.Add("f", "no end");
  EXPECT_EQ(LanPassword("f", nullptr, reader_), "no end");
}

TEST_F(LanPasswordTest, IsNeeded) {
  ExpectError("", nullptr, EExitStatus::kUsage,
              "a service processor on the network needs a password: set VELHOST_IPMI_PASSWORD, "
              "or name a file with --password-file");
}

TEST_F(LanPasswordTest, HasAtMostTwentyBytes) {
  EXPECT_EQ(LanPassword("", "12345678901234567890", reader_), "12345678901234567890");
  ExpectError("", "123456789012345678901", EExitStatus::kUsage,
              "the password in VELHOST_IPMI_PASSWORD is longer than the 20 bytes of IPMI 2.0");
  reader_.Add("f", "123456789012345678901");
  ExpectError("f", nullptr, EExitStatus::kUsage, "the password in f is longer than the 20 bytes of IPMI 2.0");
}

TEST_F(LanPasswordTest, FileThatIsNotThereIsNoInput) {
  ExpectError("gone", "pw", EExitStatus::kNoInput, "cannot open gone: No such file or directory");
}

}  // namespace
}  // namespace NKROVEL20
