// The LAN transport against ipmi_sim with the project's module, over the loopback interface.
#include <gmock/gmock.h>

#include "host/bmc/lan/lanserviceprocessor.h"
#include "tests/bmc/lan/memorysearch.h"
#include "tests/bmc/sharedsuite.h"
#include "tests/bmcsim/runningsimulator.h"
#include "tests/bmcsim/servertext.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::vector<std::string> kModules = {VELHOST_MODULES};

TLanOptions OptionsFor(int port) {
  TLanOptions options;
  options.host = "127.0.0.1";
  options.port = static_cast<std::uint16_t>(port);
  options.user = kSimulatedUser;
  options.password = TSecret(kSimulatedPassword);
  options.cipherSuites = {3};
  return options;
}

/// One simulator per node, and a session to each.
class TLanBench : public IServiceProcessor {
 public:
  explicit TLanBench(const TServerFile& server) {
    std::vector<TLanOptions> options;
    for (int node = 0; node < static_cast<int>(server.nodes.size()); ++node) {
      simulators_.push_back(std::make_unique<TRunningSimulator>(ServerText(server), node));
      options.push_back(OptionsFor(simulators_.back()->Port()));
    }
    const TStopSignal never;
    inner_ = OpenLan(options, never, kModules);
  }
  TDiscovery Discover() override { return inner_->Discover(); }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override {
    return inner_->SendIpmi(request, stop);
  }

 private:
  std::vector<std::unique_ptr<TRunningSimulator>> simulators_;
  std::unique_ptr<IServiceProcessor> inner_;
};

bool HasIpmiSim() { return std::system("command -v ipmi_sim >/dev/null 2>&1") == 0; }

/// Empty without ipmi_sim; LanSimulator below reports that.
std::vector<TNamedFactory> Factories() {
  if (!HasIpmiSim()) return {};
  return {{"Lan", [](const TServerFile& server) { return std::make_unique<TLanBench>(server); }}};
}

INSTANTIATE_TEST_SUITE_P(Lan, ServiceProcessorSuite, testing::ValuesIn(Factories()));

constexpr const char* kServer = R"(
machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "12 34 56 78"
)";

class LanSimulator : public testing::Test {
 protected:
  void SetUp() override { SKIP_WITHOUT_IPMI_SIM(); }
  void Serve(const std::string& addition = "") {
    simulator_ = std::make_unique<TRunningSimulator>(kServer + addition);
    options_ = OptionsFor(simulator_->Port());
  }
  std::unique_ptr<IServiceProcessor> Open() {
    return OpenLan({options_}, stop_, kModules, [this](ELanNotice kind, const std::string& text) {
      if (kind != ELanNotice::kDetail) notices_.push_back(text);
    });
  }
  std::string Refusal(EFailure kind) {
    std::string message = MessageOf([this] { Open(); }, kind);
    EXPECT_THAT(message, Not(HasSubstr(options_.password.Text())));
    return message;
  }
  std::string Name() const { return "lan:127.0.0.1:" + std::to_string(options_.port); }

  std::unique_ptr<TRunningSimulator> simulator_;
  TLanOptions options_;
  TStopSignal stop_;
  std::vector<std::string> notices_;
};

TEST_F(LanSimulator, WrongPasswordIsRefused) {
  Serve();
  options_.password = TSecret("not-this-one");
  EXPECT_EQ(Refusal(EFailure::kRefused),
            Name() +
                ": the password of user 'ipmiusr' is not the BMC's; either it is wrong, or an impostor "
                "is answering");
}

TEST_F(LanSimulator, RefusedPasswordIsNotInMemoryAfterwards) {
  Serve();
  TMemorySearch search;
  std::string password = THiddenText::Decoded();
  options_.password = TSecret(password);
  Wipe(password);
  ASSERT_FALSE(search.Places().empty());
  EXPECT_THROW(Open(), THostError);
  options_.password = TSecret();
  EXPECT_THAT(search.Places(), IsEmpty());
}

TEST_F(LanSimulator, WrongUserIsRefused) {
  Serve();
  options_.user = "nobody";
  options_.password = TSecret("s3cret");
  EXPECT_EQ(Refusal(EFailure::kRefused), Name() + ": the BMC refuses user 'nobody'");
}

TEST_F(LanSimulator, UnknownCipherSuiteIsRefused) {
  Serve();
  options_.cipherSuites = {17};
  EXPECT_THAT(Refusal(EFailure::kUnreachable), HasSubstr("the BMC does not accept cipher suite 17 ("));
}

TEST_F(LanSimulator, FallingBackToAnotherCipherSuiteGivesAWarning) {
  Serve();
  options_.cipherSuites = {17, 3};
  Open();
  EXPECT_THAT(notices_, ElementsAre(Name() + ": no session with cipher suite 17, so the weaker 3 is used; an attacker "
                                             "can cause this (--cipher-suite 17 allows no other, "
                                             "--cipher-suite 3 silences this warning)"));
}

TEST_F(LanSimulator, SessionHasTheRequestedPrivilegeLevel) {
  Serve();
  // ipmi_sim reserves these commands for administrators.
  for (const auto level : {ELanPrivilege::kUser, ELanPrivilege::kOperator}) {
    options_.privilege = level;
    ExpectAnswer(Send(*Open(), Timestamp()), 0xD4, {});
  }
  options_.privilege = ELanPrivilege::kAdmin;
  ExpectAnswer(Send(*Open(), Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
}

TEST_F(LanSimulator, NoAnswerIsReportedByTheDeadline) {
  options_ = OptionsFor(FreePort());
  stop_.SetDeadline(TStopSignal::TClock::now() + milliseconds(100));
  EXPECT_EQ(Refusal(EFailure::kUnreachable), Name() + ": no session was open by the deadline");
}

TEST_F(LanSimulator, BmcThatDiesDuringTheRunCostsNoMoreThanTheDeadline) {
  Serve();
  const auto processor = Open();
  ExpectAnswer(Send(*processor, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
  EXPECT_EQ(simulator_->End(SIGTERM), 0);
  stop_.SetDeadline(TStopSignal::TClock::now() + milliseconds(100));
  ExpectNoAnswer(Send(*processor, Timestamp(), stop_));
}

TEST_F(LanSimulator, SlowCommandIsCarriedOutOnce) {
  // A retransmitted request would count twice and use up the second fault.
  Serve(
      "[[fault]]\non = \"timestamp\"\nnth = 1\ndelay_ms = 1200\n"
      "[[fault]]\non = \"timestamp\"\nnth = 2\ncompletion_code = 0xC3\n");
  const auto processor = Open();
  ExpectAnswer(Send(*processor, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
  ExpectAnswer(Send(*processor, Timestamp()), 0xC3, {});
  ExpectAnswer(Send(*processor, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
}

TEST_F(LanSimulator, SweepKeepsAnswersAndRequestsTogether) {
  Serve();
  const auto processor = Open();
  for (int i = 0; i < 2000 && !HasFailure(); ++i) {
    // Byte k of the made-up value at address 00 hh ll, chip 0, is the address's byte k % 3 XOR 17 * k.
    const int high = i >> 8;
    const int low = i & 0xFF;
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    ExpectAnswer(Send(*processor, Register(0, static_cast<std::uint32_t>(high << 8 | low))), 0x00,
                 {0, 0, 0, 0, 0, 0, byte(low), byte(high ^ 0x11), 0x22, byte(low ^ 0x33), byte(high ^ 0x44), 0x55,
                  byte(low ^ 0x66), byte(high ^ 0x77)});
  }
  EXPECT_TRUE(notices_.empty());
}

}  // namespace
}  // namespace tests
