#include "host/bmc/lan/lanserviceprocessor.h"

#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>

#include <cerrno>
#include <future>
#include <map>
#include <thread>

#include "host/base/hosterror.h"
#include "host/bmc/lan/blockingcalls.h"
#include "host/bmc/lan/lanlink.h"
#include "tests/bmc/lan/scriptedmodule.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using namespace tests;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::StartsWith;

class LanServiceProcessor : public testing::Test {
 protected:
  std::unique_ptr<TLanServiceProcessor> Open(std::size_t nodes) {
    for (std::size_t i = 0; i < nodes; ++i) module_.Open().Open();
    return std::make_unique<TLanServiceProcessor>(
        TScriptedModule::Module(), std::vector<TLanOptions>(nodes, options_), stop_,
        [this](ELanNotice kind, const std::string& text) { said_[kind].push_back(text); });
  }
  TIpmiOutcome Ask(IServiceProcessor& processor, int node = 0) {
    wire::TCommandBuffer request = Request(0x3A, 0x62, {0x07, 0x34});
    request[3] = 0x01;
    return Send(processor, node, request, stop_);
  }
  void ExpectLost(IServiceProcessor& processor, int node = 0) { ExpectNoAnswer(Ask(processor, node)); }

  TScriptedModule module_;
  TStopSignal stop_;
  TLanOptions options_ = [] {
    TLanOptions options;
    options.host = "bmc";
    return options;
  }();
  std::map<ELanNotice, std::vector<std::string>> said_;
  std::vector<std::string>& notices_ = said_[ELanNotice::kLost];
  std::vector<std::string>& warnings_ = said_[ELanNotice::kWarning];
};

TEST_F(LanServiceProcessor, NamesTheCipherSuiteAndPrivilegeOfEachSession) {
  options_.cipherSuites = {3};
  options_.privilege = ELanPrivilege::kOperator;
  const auto processor = Open(2);
  const std::string session = "lan:bmc:623: session open, cipher suite 3, privilege operator";
  EXPECT_THAT(said_[ELanNotice::kDetail], ElementsAre(session, session));
}

TEST_F(LanServiceProcessor, SendsTheRequestsBytesAndReturnsTheAnswers) {
  const auto processor = Open(1);
  module_.Answer({0x00, 0xA0, 0xA1});
  ExpectAnswer(Ask(*processor), 0x00, {0xA0, 0xA1});
  EXPECT_EQ(module_.sent.front().networkFunction, 0x3A);
  EXPECT_EQ(module_.sent.front().lun, 1);
  EXPECT_THAT(module_.sent.front().bytes, ElementsAre(0x62, 0x07, 0x34));
}

TEST_F(LanServiceProcessor, LongerAnswerIsCut) {
  const auto processor = Open(1);
  module_.Answer(TBytes(300, 0x55));
  ExpectAnswer(Ask(*processor), 0x55, TBytes(247, 0x55));
}

TEST_F(LanServiceProcessor, EachNodeHasItsOwnSession) {
  const auto processor = Open(2);
  EXPECT_EQ(processor->Discover().bmcNodes, 2);
  EXPECT_TRUE(processor->Discover().ipmiDriver);
  module_.Answer({0x00}).Answer({0x00});
  ExpectAnswer(Ask(*processor, 1), 0x00, {});
  ExpectAnswer(Ask(*processor, 0), 0x00, {});
  ASSERT_EQ(module_.sent.size(), 2U);
  EXPECT_EQ(module_.sent[0].session, 4);
  EXPECT_EQ(module_.sent[1].session, 2);
}

TEST_F(LanServiceProcessor, NodesThatDoNotExistDoNotAnswer) {
  const auto processor = Open(1);
  ExpectLost(*processor, -1);
  ExpectLost(*processor, 1);
}

TEST_F(LanServiceProcessor, TakesNoDotCommands) {
  const auto processor = Open(1);
  EXPECT_FALSE(processor->Discover().dotCommands);
  EXPECT_EQ(processor->Discover().serviceProcessors, 0);
  ExpectNoAnswer(SendDot(*processor, 0, BlockCommand(4), 4));
}

TEST_F(LanServiceProcessor, BmcThatFallsSilentIsReportedOnce) {
  const auto processor = Open(1);
  module_.Lose().Open().Open().Lose();
  ExpectLost(*processor);
  EXPECT_TRUE(notices_.empty());
  ExpectLost(*processor);
  ExpectLost(*processor);
  EXPECT_THAT(notices_, ElementsAre(StartsWith("lan:bmc:623: the BMC stopped answering during the run")));
}

TEST_F(LanServiceProcessor, StopInterruptsTheWaitForAnAnswer) {
  const auto processor = Open(1);
  const auto waitForever = [this] {
    stop_.RequestStop();
    EXPECT_EQ(poll(nullptr, 0, -1), -1);
    EXPECT_EQ(errno, EINTR);
  };
  module_.Do(waitForever, VEL_LAN_FAILED);
  ExpectLost(*processor);
  ExpectLost(*processor);
  EXPECT_EQ(module_.sent.size(), 1U);
  EXPECT_TRUE(notices_.empty());
}

TEST_F(LanServiceProcessor, AnswerThatComesWhileTheRunIsStoppedIsKept) {
  const auto processor = Open(1);
  module_.Do([this] { stop_.RequestStop(); });
  ExpectAnswer(Ask(*processor), 0x00, {});
}

TEST_F(LanServiceProcessor, StopEndsAWaitThatCannotBeInterrupted) {
  auto processor = Open(1);
  std::promise<void> release;
  std::promise<void> over;
  module_.Lose().Open().OpenAfter([this, &release, &over] {
    stop_.RequestStop();
    release.get_future().wait();
    over.set_value();
  });
  ExpectLost(*processor);
  ExpectLost(*processor);
  ExpectLost(*processor);
  EXPECT_EQ(module_.sent.size(), 1U);
  processor.reset();
  release.set_value();
  over.get_future().wait();
  // The abandoned thread closes the session when it has finished with it.
  while (module_.ClosedSessions() != 4) std::this_thread::yield();
}

TEST_F(LanServiceProcessor, WarnsAboutFallingBackToAWeakerSuite) {
  module_.Open(VEL_LAN_CIPHER_SUITE);
  Open(1);
  EXPECT_THAT(warnings_, ElementsAre("lan:bmc:623: no session with cipher suite 17, so the weaker 3 is used; an "
                                     "attacker can cause this (--cipher-suite 17 allows no other, "
                                     "--cipher-suite 3 silences this warning)"));
}

TEST_F(LanServiceProcessor, AnswerToAnotherCommandIsLostWithAWarning) {
  const auto processor = Open(1);
  module_.Lose(VEL_LAN_OTHER_COMMAND);
  ExpectLost(*processor);
  EXPECT_THAT(warnings_, ElementsAre("lan:bmc:623: an answer to a command other than the one requested was ignored"));
  EXPECT_TRUE(notices_.empty());
}

TEST_F(LanServiceProcessor, ExchangesAreMadeOnTheCallingThread) {
  const auto processor = Open(1);
  std::thread::id thread;
  module_.Lose().Open().Open().Do([&thread] { thread = std::this_thread::get_id(); });
  ExpectLost(*processor);
  EXPECT_TRUE(Ask(*processor).answered);
  EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(LanServiceProcessor, RefusalReachesTheCaller) {
  module_.Open(VEL_LAN_PASSWORD);
  try {
    TLanServiceProcessor(TScriptedModule::Module(), {options_}, stop_, nullptr);
    FAIL() << "opened";
  } catch (const THostError& error) {
    EXPECT_EQ(error.Kind(), EFailure::kRefused);
  }
}

TEST_F(LanServiceProcessor, InterruptedOpeningSendsNothing) {
  stop_.RequestStop();
  try {
    TLanServiceProcessor(TScriptedModule::Module(), {options_}, stop_, nullptr);
    FAIL() << "opened";
  } catch (const THostError& error) {
    EXPECT_EQ(error.Kind(), EFailure::kStopped);
    EXPECT_STREQ(error.what(), "lan:bmc:623: interrupted while the session was being opened");
  }
}

TEST_F(LanServiceProcessor, DeadlineBeforeTheOpeningMakesItUnreachable) {
  stop_.SetDeadline(TStopSignal::TClock::now() - milliseconds(1));
  try {
    TLanServiceProcessor(TScriptedModule::Module(), {options_}, stop_, nullptr);
    FAIL() << "opened";
  } catch (const THostError& error) {
    EXPECT_EQ(error.Kind(), EFailure::kUnreachable);
    EXPECT_STREQ(error.what(), "lan:bmc:623: no session was open by the deadline");
  }
}

constexpr milliseconds kLong{3'600'000};

TEST(LanInterrupter, CallThatLastsTooLongIsInterrupted) {
  const TStopSignal stop;
  TLanInterrupter interrupter(stop, milliseconds(20));
  const TLanInterrupter::TScope scope(interrupter);
  for (int wait = 0; wait < 3; ++wait) {
    EXPECT_EQ(poll(nullptr, 0, -1), -1);
    EXPECT_EQ(errno, EINTR);
  }
}

// Shorter than the time after which the library retransmits a request.
TEST(LanLinkTimes, WaitForAnAnswerEndsBeforeARetransmission) {
  EXPECT_LE(kLanAnswerTime + milliseconds(2'000), kLanSessionTime);
}

TEST(LanInterrupter, DeadlineInterruptsACall) {
  TStopSignal stop;
  stop.SetDeadline(TStopSignal::TClock::now() + milliseconds(20));
  TLanInterrupter interrupter(stop, kLong);
  const TLanInterrupter::TScope scope(interrupter);
  EXPECT_EQ(poll(nullptr, 0, -1), -1);
  EXPECT_EQ(errno, EINTR);
}

TEST(LanInterrupter, LeavesAThreadWithoutACallAlone) {
  TStopSignal stop;
  stop.RequestStop();
  TLanInterrupter interrupter(stop, kLong);
  { const TLanInterrupter::TScope scope(interrupter); }
  sched_yield();  // delivers a signal that was sent inside the scope
  EXPECT_EQ(poll(nullptr, 0, 50), 0);
}

TEST(LanInterrupter, RestoresTheSignalHandler) {
  struct sigaction before = {};
  struct sigaction after = {};
  sigaction(SIGURG, nullptr, &before);
  {
    const TStopSignal stop;
    const TLanInterrupter interrupter(stop, kLong);
  }
  sigaction(SIGURG, nullptr, &after);
  EXPECT_EQ(after.sa_handler, before.sa_handler);
}

TEST(LanWorker, RunsJobsInOrderOnItsOwnThread) {
  TLanWorker worker;
  TStopSignal stop;
  std::vector<int> done;
  std::thread::id thread;
  for (const int i : {1, 2, 3}) {
    EXPECT_TRUE(worker.Run(
        [&done, &thread, i] {
          done.push_back(i);
          thread = std::this_thread::get_id();
        },
        stop));
  }
  EXPECT_THAT(done, ElementsAre(1, 2, 3));
  EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(LanWorker, DeadlineEndsTheWait) {
  TStopSignal stop;
  auto release = std::make_shared<std::promise<void>>();
  bool later = false;
  {
    TLanWorker worker;
    stop.SetDeadline(TStopSignal::TClock::now() + milliseconds(20));
    EXPECT_FALSE(worker.Run([release] { release->get_future().wait(); }, stop));
    const TStopSignal never;
    EXPECT_FALSE(worker.Run([&later] { later = true; }, never));
  }
  release->set_value();
  EXPECT_FALSE(later);
}

TEST(LanWorker, SignalsGoToTheThreadThatWaits) {
  TLanWorker worker;
  TStopSignal stop;
  bool blocked = false;
  EXPECT_TRUE(worker.Run(
      [&blocked] {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        blocked = sigismember(&mask, SIGINT) == 1 && sigismember(&mask, SIGTERM) == 1;
      },
      stop));
  EXPECT_TRUE(blocked);
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_EQ(sigismember(&mask, SIGINT), 0);
}

class LanClient : public testing::Test {
 protected:
  std::string ErrorWith(const std::vector<std::string>& folders) {
    try {
      OpenLan({TLanOptions()}, stop_, folders);
    } catch (const THostError& error) {
      EXPECT_EQ(error.Kind(), EFailure::kUnreachable);
      return error.what();
    }
    ADD_FAILURE() << "opened";
    return {};
  }
  TStopSignal stop_;
};

#ifdef VELHOST_WITHOUT_LAN
TEST_F(LanClient, SaysThatItWasBuiltWithoutLan) {
  EXPECT_EQ(ErrorWith({"/nowhere"}), "lan: this velhost was built without LAN support (VELHOST_LAN=OFF)");
}
#else
TEST_F(LanClient, SaysWhereItLookedForTheModule) {
  EXPECT_EQ(
      ErrorWith({"/nowhere", "/else"}),
      "lan: the LAN module velhost-lan.so is not installed; it is in the package velhost-lan, and \"cmake --build "
      "build/release --target velhost_lan\" builds it. Looked for\n"
      "  /nowhere/velhost-lan.so\n  /else/velhost-lan.so");
}
#endif

TEST_F(LanClient, RefusesALibraryThatIsNotItsLanModule) {
  EXPECT_EQ(ErrorWith({OTHER_MODULE_DIR}),
            "lan: " OTHER_MODULE_DIR "/velhost-lan.so is not a LAN module for this version of velhost");
}

TEST_F(LanClient, RefusesAFileThatIsNotALibrary) {
  EXPECT_THAT(ErrorWith({NO_LIBRARY_DIR}), StartsWith("lan: cannot load the LAN module: " NO_LIBRARY_DIR));
}

}  // namespace
}  // namespace tests
