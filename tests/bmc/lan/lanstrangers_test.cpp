// What others on the network can do to a session, and a BMC whose answers do not match: the LAN module and its
// library against a fake BMC.
#include <gmock/gmock.h>

#include "host/bmc/lan/lanserviceprocessor.h"
#include "tests/bmc/lan/memorysearch.h"
#include "tests/bmc/lan/standinbmc.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LanStrangers : public testing::TestWithParam<int> {
 protected:
  LanStrangers() : bmc_(GetParam()) {
    options_.host = GetParam() == AF_INET6 ? "::1" : "127.0.0.1";
    options_.port = static_cast<std::uint16_t>(bmc_.Port());
    options_.user = "user";
    options_.cipherSuites = {0};
  }
  std::unique_ptr<IServiceProcessor> Open() {
    bmc_.Start();
    return OpenLan({options_}, stop_, {VELHOST_MODULES}, [this](ELanNotice kind, const std::string& text) {
      if (kind != ELanNotice::kDetail) notices_.emplace_back(kind, text);
    });
  }
  std::string Name() const { return "lan:" + AddressOf(options_); }

  TStandInBmc bmc_;
  TLanOptions options_;
  TStopSignal stop_;
  std::vector<std::pair<ELanNotice, std::string>> notices_;
};

INSTANTIATE_TEST_SUITE_P(Lan, LanStrangers, testing::ValuesIn(LoopbackFamilies()),
                         [](const auto& family) { return family.param == AF_INET6 ? "IPv6" : "IPv4"; });

// The stranger's datagram is in the client's queue before the answer. The library takes an empty datagram for a
// time-out, and then retransmits the request.
TEST_P(LanStrangers, StrangersDatagramsCauseNoRetransmission) {
  const TLoopbackSocket stranger(GetParam());
  bmc_.onCommand = [&stranger](int client) {
    for (int i = 0; i < 20; ++i) {
      stranger.Send({}, client);
      stranger.Send({0x06, 0x00, 0xFF, 0x07, 0x06, 0x00}, client);
    }
    return true;
  };
  const auto processor = Open();
  for (int request = 1; request <= 3; ++request) {
    ExpectAnswer(Send(*processor, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
    EXPECT_EQ(bmc_.Requests(), request);
  }
}

TEST_P(LanStrangers, EmptyDatagramsFromTheBmcsAddressCauseNoRetransmission) {
  bmc_.onCommand = [this](int client) {
    for (int i = 0; i < 20; ++i) bmc_.SendEmpty(client);
    return true;
  };
  const auto processor = Open();
  ExpectAnswer(Send(*processor, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
  EXPECT_EQ(bmc_.Requests(), 1);
}

TEST_P(LanStrangers, AnswerToAnotherCommandIsLostAndReported) {
  bmc_.commandError = 1;
  const auto processor = Open();
  notices_.clear();
  ExpectNoAnswer(Send(*processor, Timestamp()));
  EXPECT_THAT(notices_,
              ElementsAre(std::pair(ELanNotice::kWarning,
                                    Name() + ": an answer to a command other than the one requested was ignored")));
}

TEST_P(LanStrangers, SuiteWithoutAnyProtectionGivesAWarning) {
  const auto processor = Open();
  EXPECT_EQ(bmc_.Proofs(), 2);  // one opening to find the way, one for use
  EXPECT_THAT(notices_, ElementsAre(std::pair(
                            ELanNotice::kWarning,
                            Name() + ": cipher suite 0 checks no password and protects nothing: anybody on the "
                                     "network can impersonate the BMC, and read and change what is exchanged")));
}

TEST_P(LanStrangers, ImpostorIsSuspectedAndGetsNoProofOfThePassword) {
  options_.password = TSecret("s3cret");
  options_.cipherSuites = {3};
  try {
    Open();
    FAIL() << "opened";
  } catch (const THostError& error) {
    EXPECT_EQ(error.Kind(), EFailure::kRefused);
    EXPECT_EQ(error.what(), Name() +
                                ": the password of user 'user' is not the BMC's; either it is wrong, or an impostor "
                                "is answering");
  }
  EXPECT_EQ(bmc_.Proofs(), 0);
}

TEST_P(LanStrangers, PasswordIsNotInMemoryAfterTheSession) {
  TMemorySearch search;
  std::string password = THiddenText::Decoded();
  options_.password = TSecret(password);
  Wipe(password);
  ASSERT_FALSE(search.Places().empty());
  auto processor = Open();
  ExpectAnswer(Send(*processor, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
  processor.reset();
  options_.password = TSecret();
  EXPECT_THAT(search.Places(), IsEmpty());
}

}  // namespace
}  // namespace tests
