#include "host/bmc/lan/lanlink.h"

#include <gmock/gmock.h>

#include "host/base/hosterror.h"
#include "tests/bmc/lan/scriptedmodule.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TLanOptions Options() {
  TLanOptions options;
  options.host = "bmc";
  options.user = "admin";
  options.password = TSecret("s3cret");
  return options;
}

class LanLink : public testing::Test {
 protected:
  TLanLink& Link() {
    if (!link_) link_ = std::make_unique<TLanLink>(TScriptedModule::Module(), options_, [this] { return now_; });
    return *link_;
  }
  /// Opens the link: one opening to find the way, one for use.
  void Opened() {
    module_.Open().Open();
    Link().Open();
  }
  TLanExchange Exchange() {
    TLanExchange exchange;
    exchange.networkFunction = 0x3A;
    exchange.request = {0x62, 0x07};
    Link().Exchange(exchange);
    return exchange;
  }
  void Wait(milliseconds time) { now_ += time; }
  void ExpectRefused(EFailure kind, const std::string& message) {
    try {
      Link().Open();
      FAIL() << "opened";
    } catch (const THostError& error) {
      EXPECT_EQ(error.Kind(), kind);
      EXPECT_EQ(error.what(), message);
      EXPECT_THAT(error.what(), Not(HasSubstr("s3cret")));
    }
  }
  std::vector<std::pair<int, bool>> Ways() const {
    std::vector<std::pair<int, bool>> ways;
    for (const auto& opening : module_.opened) ways.emplace_back(opening.cipherSuite, opening.leavePrivilegeOpen);
    return ways;
  }

  TScriptedModule module_;
  TLanOptions options_ = Options();
  TLanLink::TClock::time_point now_{};
  std::unique_ptr<TLanLink> link_;
};

using TWays = std::vector<std::pair<int, bool>>;

TEST_F(LanLink, OpensWithWhatTheUserSays) {
  options_.port = 9623;
  options_.privilege = ELanPrivilege::kOperator;
  Opened();
  const auto& opening = module_.opened.back();
  EXPECT_EQ(opening.address, "bmc:9623");
  EXPECT_EQ(opening.user, "admin");
  EXPECT_EQ(opening.password, "s3cret");
  EXPECT_EQ(opening.privilege, 3);
  EXPECT_EQ(opening.cipherSuite, 17);
  EXPECT_FALSE(opening.leavePrivilegeOpen);
}

TEST_F(LanLink, RequestIsNotRetransmittedBeforeTheSessionEnds) {
  Opened();
  EXPECT_EQ(module_.opened[0].sessionTime, 3000U);
  EXPECT_EQ(module_.opened[0].retransmissionTime, 1000U);
  EXPECT_EQ(module_.opened[1].sessionTime, 15000U);
  EXPECT_EQ(module_.opened[1].retransmissionTime, 14999U);
}

TEST_F(LanLink, TriesTheNextCipherSuite) {
  module_.Open(VEL_LAN_CIPHER_SUITE).Open().Open();
  Link().Open();
  EXPECT_EQ(Ways(), (TWays{{17, false}, {3, false}, {3, false}}));
}

TEST_F(LanLink, WarnsAboutWhatACipherSuiteDoesNotProtect) {
  const std::string all =
      "checks no password and protects nothing: anybody on the network can impersonate the BMC, and read and change "
      "what is exchanged";
  const std::string login =
      "protects only the login: anybody between here and the BMC can read and change what is exchanged";
  const std::string text = "does not encrypt: anybody between here and the BMC can read what is exchanged";
  const std::map<int, std::string> warnings = {{0, all},  {1, login}, {6, login}, {15, login},
                                               {2, text}, {7, text},  {11, text}, {16, text}};
  for (int suite = 0; suite <= 17; ++suite) {
    options_.cipherSuites = {suite};
    link_.reset();
    module_.Open().Open();
    const auto found = warnings.find(suite);
    if (found == warnings.end()) {
      EXPECT_THAT(Link().Open(), IsEmpty());
    } else {
      EXPECT_THAT(Link().Open(),
                  ElementsAre("lan:bmc:623: cipher suite " + std::to_string(suite) + " " + found->second));
    }
  }
}

TEST_F(LanLink, NoWarningIfTheFirstSuiteIsAccepted) {
  module_.Open().Open();
  EXPECT_THAT(Link().Open(), IsEmpty());
}

TEST_F(LanLink, TriesTheNextCipherSuiteWhenTheBmcFallsSilent) {
  module_.Open(VEL_LAN_BROKEN_OFF).Open().Open();
  Link().Open();
  EXPECT_EQ(Ways(), (TWays{{17, false}, {3, false}, {3, false}}));
}

TEST_F(LanLink, LeavesThePrivilegeOpenIfItIsRefused) {
  module_.Open(VEL_LAN_PRIVILEGE).Open().Open();
  Link().Open();
  EXPECT_EQ(Ways(), (TWays{{17, false}, {17, true}, {17, true}}));
}

TEST_F(LanLink, OpeningIsRetriedAfterALostPacket) {
  module_.Open().Open(VEL_LAN_BROKEN_OFF).Open();
  Link().Open();
  EXPECT_EQ(module_.opened.size(), 3U);
}

TEST_F(LanLink, RefusedPasswordEndsTheAttempts) {
  module_.Open(VEL_LAN_PASSWORD, "password invalid");
  ExpectRefused(EFailure::kRefused,
                "lan:bmc:623: the password of user 'admin' is not the BMC's; either it is wrong, or an impostor "
                "is answering");
}

TEST_F(LanLink, BmcWithItsOwnKeyIsReported) {
  module_.Open(VEL_LAN_KEY, "k_g invalid");
  ExpectRefused(EFailure::kRefused,
                "lan:bmc:623: the BMC uses a key that does not come from the password; either it has a key of its "
                "own (K_g), which velhost cannot use, or an impostor is answering");
}

TEST_F(LanLink, RefusedUserIsNamed) {
  options_.user = "";
  module_.Open(VEL_LAN_USER);
  ExpectRefused(EFailure::kRefused, "lan:bmc:623: the BMC refuses the anonymous user");
}

TEST_F(LanLink, RefusedPrivilegeIsReported) {
  module_.Open(VEL_LAN_PRIVILEGE).Open(VEL_LAN_PRIVILEGE);
  ExpectRefused(EFailure::kRefused,
                "lan:bmc:623: the BMC refuses user 'admin' the privilege level admin; use --privilege for a lower one");
}

TEST_F(LanLink, NoAnswerIsNotRetried) {
  module_.Open(VEL_LAN_NO_ANSWER);
  ExpectRefused(EFailure::kUnreachable,
                "lan:bmc:623: no answer; is this the address of a BMC, with IPMI over LAN enabled?");
}

TEST_F(LanLink, RefusedCipherSuitesAreListed) {
  module_.Open(VEL_LAN_CIPHER_SUITE, "a").Open(VEL_LAN_CIPHER_SUITE, "cipher suite id unavailable");
  ExpectRefused(EFailure::kUnreachable,
                "lan:bmc:623: the BMC does not accept cipher suite 17 or 3 (cipher suite id unavailable); "
                "choose one that it accepts with --cipher-suite N");
}

TEST_F(LanLink, EveryOtherRefusalHasItsMessage) {
  module_.Open(VEL_LAN_BAD_HOST).Open(VEL_LAN_NO_IPMI_2_0).Open(VEL_LAN_FAILED, "out of memory");
  ExpectRefused(EFailure::kUnreachable, "lan:bmc:623: the host name cannot be resolved");
  ExpectRefused(EFailure::kUnreachable, "lan:bmc:623: the BMC does not support IPMI 2.0 here");
  ExpectRefused(EFailure::kUnreachable, "lan:bmc:623: out of memory");
}

TEST_F(LanLink, PassesRequestAndAnswer) {
  Opened();
  module_.Answer({0xC3, 0x11});
  const TLanExchange exchange = Exchange();
  ASSERT_TRUE(exchange.answered);
  EXPECT_EQ(exchange.size, 2U);
  EXPECT_EQ(exchange.response[0], 0xC3);
  EXPECT_EQ(exchange.response[1], 0x11);
  EXPECT_EQ(module_.sent.front().networkFunction, 0x3A);
  EXPECT_THAT(module_.sent.front().bytes, ElementsAre(0x62, 0x07));
}

TEST_F(LanLink, LostAnswerStaysLostAndTheNextRequestHasANewSession) {
  Opened();
  module_.Answer({0x00}).Lose().Open().Open().Answer({0x00});
  EXPECT_TRUE(Exchange().answered);
  const TLanExchange lost = Exchange();
  EXPECT_FALSE(lost.answered);
  EXPECT_EQ(lost.notice, "");
  EXPECT_TRUE(Exchange().answered);
  ASSERT_EQ(module_.sent.size(), 3U);
  EXPECT_EQ(module_.sent[1].session, 2);
  EXPECT_EQ(module_.sent[2].session, 4);
}

TEST_F(LanLink, SecondLossInARowGivesTheNodeUp) {
  Opened();
  module_.Answer({0x00}).Lose().Open().Open().Lose();
  EXPECT_TRUE(Exchange().answered);
  EXPECT_FALSE(Exchange().answered);
  EXPECT_EQ(
      Exchange().notice,
      "lan:bmc:623: the BMC stopped answering during the run, and the session is lost: requests are not answered");
  const TLanExchange later = Exchange();
  EXPECT_FALSE(later.answered);
  EXPECT_EQ(later.notice, "");
  EXPECT_EQ(module_.sent.size(), 3U);
}

TEST_F(LanLink, FirstRequestMayBeLostToo) {
  Opened();
  module_.Lose().Open().Open().Answer({0x00});
  EXPECT_EQ(Exchange().notice, "");
  EXPECT_TRUE(Exchange().answered);
}

TEST_F(LanLink, LossesWithAnAnswerBetweenThemAreNotInARow) {
  Opened();
  module_.Answer({0x00}).Lose().Open().Open().Answer({0x00}).Lose().Open().Open().Answer({0x00});
  for (const bool answered : {true, false, true, false, true}) EXPECT_EQ(Exchange().answered, answered);
}

TEST_F(LanLink, FailedReopeningGivesTheNodeUp) {
  Opened();
  module_.Answer({0x00}).Lose().Open(VEL_LAN_NO_ANSWER);
  Exchange();
  Exchange();
  EXPECT_EQ(Exchange().notice,
            "lan:bmc:623: the BMC stopped answering during the run, and the session is lost: it could not be opened "
            "again: no answer; is this the address of a BMC, with IPMI over LAN enabled?");
  EXPECT_FALSE(Exchange().answered);
  EXPECT_EQ(module_.sent.size(), 2U);
}

TEST_F(LanLink, SilentSessionIsReopenedBeforeTheRequest) {
  Opened();
  module_.Answer({0x00}).Answer({0x00}).Open().Open().Answer({0x00});
  EXPECT_TRUE(Exchange().answered);
  Wait(milliseconds(4999));
  EXPECT_TRUE(Exchange().answered);
  EXPECT_EQ(module_.opened.size(), 2U);
  Wait(milliseconds(5000));
  EXPECT_TRUE(Exchange().answered);
  EXPECT_EQ(module_.opened.size(), 4U);
}

}  // namespace
}  // namespace tests
