// What the account of a run makes of the reports it is given: reasons, message, status, failed exchanges.
#include "host/result/resultreasons.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

using EPath = CollectorProfile::EPath;

constexpr char kBridge[] = "KROSG_VO_PCIIOBRIDGE_StatisticData";
constexpr char kMemory[] = "KROSG_J2_MEMCTL_StatisticData";
constexpr char kFiles[] = "KROSG_DCAPFile";

// The classes of the plan and, in a plan with each of them once, their turns.
enum : std::uint32_t { kBridgeTurn, kMemoryTurn, kFilesTurn };

// Two bridges of twelve registers, three service processors with two instances in each block, three capture files on
// each of two nodes.
class ResultReasons : public testing::Test {
 protected:
  ResultReasons() {
    plan.server = {
        .bmcNodes = 2, .ipmiDriver = true, .dotCommands = true, .communicates = true, .serviceProcessors = 3};
    plan.blocks = 3;
    AddClass(kBridge, EPath::kR8, 12);
    AddClass(kMemory, EPath::kJfr, 4);
    AddClass(kFiles, EPath::kCapture, 0);
    Ask({kBridgeTurn, kMemoryTurn, kFilesTurn});
  }

  /// One call for each class, all of them named.
  void Ask(const std::vector<std::size_t>& classes) {
    plan.requests.clear();
    for (const std::size_t planClass : classes) plan.requests.push_back({{{.planClass = planClass, .isNamed = true}}});
    Open();
  }
  /// A new reasons, of the plan as it is now.
  void Open() { reasons.emplace(plan); }
  TResultSummary Close() { return reasons->Close(std::nullopt); }
  TResultSummary CloseAfter(EFailure kind, const std::string& message) {
    return reasons->Close(THostError(kind, message));
  }

  TPlan plan;
  std::optional<TResultReasons> reasons;

 private:
  void AddClass(const std::string& name, EPath path, std::size_t registers) {
    TPlannedClass planned;
    planned.cimClass = namespace_->AddClass(TClassBuilder(name));
    planned.path = path;
    planned.turn = ETurn::kPlanned;
    planned.hasWay = true;
    planned.instances = 2;
    planned.registers.resize(registers);
    planned.readsOfInstance = path == EPath::kR8 ? registers : 0;
    plan.classes.push_back(planned);
  }

  boost::shared_ptr<TNamespace> namespace_ = TNamespace::Create();
};

auto Reason(EReason code, const std::string& className, std::uint64_t count, const std::string& message) {
  return AllOf(Field("code", &TReason::code, code), Field("class", &TReason::className, className),
               Field("count", &TReason::count, count), Field("message", &TReason::message, message));
}

TExchangeFailure FailedRead(std::int32_t registerIndex, THow how) {
  TExchangeFailure failure;
  failure.kind = EExchangeKind::kRegister;
  failure.isPlaced = true;
  failure.how = how;
  failure.registerIndex = registerIndex;
  failure.address = 0x2D0100;
  return failure;
}

// --- what makes a result partial

TEST_F(ResultReasons, WithNothingMissingIsComplete) {
  reasons->CountInstance();
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kComplete);
  EXPECT_EQ(summary.message, "");
  EXPECT_THAT(summary.reasons, IsEmpty());
  EXPECT_EQ(summary.plan, &plan);
}

TEST_F(ResultReasons, AnAbsentRegisterOrInstanceIsNoReason) {
  reasons->CountInstance();
  reasons->AddFailure(FailedRead(3, {EHow::kCompletionCode, 0xCB}));
  reasons->AddUnread({kBridgeTurn, {0, 1}, EUnread::kAbsent});
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kComplete);
  EXPECT_THAT(summary.reasons, IsEmpty());
  EXPECT_EQ(summary.failed.size(), 1U);
  EXPECT_EQ(summary.unread.size(), 1U);
}

TEST_F(ResultReasons, CountsTheRegistersThatWereNotRead) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kRegisterUnread, 2);
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons,
              ElementsAre(Reason(EReason::kRegisterUnread, kBridge, 2, "2 of 24 registers were not read")));
  EXPECT_EQ(summary.message, "KROSG_VO_PCIIOBRIDGE_StatisticData: 2 of 24 registers were not read");
}

TEST_F(ResultReasons, CountsASingleRegister) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kRegisterUnread, 1);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kRegisterUnread, kBridge, 1, "1 of 24 registers was not read")));
}

TEST_F(ResultReasons, IgnoresAReasonWithoutCount) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kRegisterUnread, 0);
  EXPECT_THAT(Close().reasons, IsEmpty());
}

TEST_F(ResultReasons, AMissingTimeIsAReasonOfACompleteResult) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kTimeUnread, 1);
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kComplete);
  EXPECT_EQ(summary.message, "");
  EXPECT_THAT(summary.reasons,
              ElementsAre(Reason(EReason::kTimeUnread, kBridge, 1, "the time of 1 instance was not read")));
}

TEST_F(ResultReasons, CountsTheTimesThatWereNotRead) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kTimeUnread, 2);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kTimeUnread, kBridge, 2, "the times of 2 instances were not read")));
}

TEST_F(ResultReasons, CountsTheCaptureFilesThatAreMissingOrIncomplete) {
  reasons->CountInstance();
  reasons->AddReason(kFilesTurn, EReason::kFileUnread, 5);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kFileUnread, kFiles, 5, "5 of 6 capture files are missing or incomplete")));
}

TEST_F(ResultReasons, QuotesTheLimitThatRefusedACaptureFile) {
  reasons->CountInstance();
  reasons->AddReason(kFilesTurn, EReason::kFileUnread, 1, "node 0, storage area cpu_err reports 1 byte: not read");
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kFileUnread, kFiles, 1,
                                                  "1 of 6 capture files is missing or incomplete; node 0, storage "
                                                  "area cpu_err reports 1 byte: not read")));
}

TEST_F(ResultReasons, WithoutADriverNoCaptureFileIsRead) {
  plan.server.ipmiDriver = false;
  Open();
  reasons->AddReason(kFilesTurn, EReason::kFileUnread, 6);
  reasons->CountInstance();
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kFileUnread, kFiles, 6,
                                                  "6 of 6 capture files are missing or incomplete; the IPMI driver is "
                                                  "not present")));
}

TEST_F(ResultReasons, CountsTheBlocksThatDidNotCome) {
  reasons->CountInstance();
  reasons->AddReason(kMemoryTurn, EReason::kBlockUnread, 1);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kBlockUnread, kMemory, 1, "1 of 3 register blocks was not received")));
}

TEST_F(ResultReasons, AFailedCommunicationCheckCostsAllBlocks) {
  plan.server.communicates = false;
  plan.blocks = 0;
  Open();
  reasons->CountInstance();
  reasons->AddReason(kMemoryTurn, EReason::kBlockUnread, 3);
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kBlockUnread, kMemory, 3,
                                                  "the communication check of the service processor failed")));
}

// The registers and times that a short block costs are not counted again.
TEST_F(ResultReasons, CountsTheBlocksThatWereTooShort) {
  reasons->CountInstance();
  reasons->AddReason(kMemoryTurn, EReason::kBlockShort, 1);
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons,
              ElementsAre(Reason(EReason::kBlockShort, kMemory, 1, "1 of 3 register blocks was too short")));
}

TEST_F(ResultReasons, NamesTheServiceProcessorWithoutAValidTime) {
  reasons->CountInstance();
  reasons->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "0");
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kBlockUndecodable, kMemory, 1,
                                                  "the register block of service processor 0 has no valid time")));
}

TEST_F(ResultReasons, CountsWhatWasDroppedWithABlock) {
  reasons->CountInstance();
  for (const int bank : {0, 1}) reasons->AddUnread({kMemoryTurn, {0, bank}, EUnread::kDiscarded});
  for (const int bank : {0, 1}) reasons->AddUnread({kMemoryTurn, {1, bank}, EUnread::kBlockUndecodable});
  reasons->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "1");
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kBlockUndecodable, kMemory, 1,
                                 "the register block of service processor 1 has no valid time; 2 instances from other "
                                 "service processors were discarded with it")));
}

TEST_F(ResultReasons, NamesAllServiceProcessorsWithoutAValidTime) {
  reasons->CountInstance();
  reasons->AddUnread({kMemoryTurn, {0, 0}, EUnread::kDiscarded});
  reasons->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "1");
  reasons->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "2");
  EXPECT_THAT(
      Close().reasons,
      ElementsAre(Reason(EReason::kBlockUndecodable, kMemory, 2,
                         "the register blocks of service processors 1 and 2 have no valid time; 1 instance from "
                         "other service processors was discarded with them")));
}

TEST_F(ResultReasons, SaysWhyANamedClassIsNotServed) {
  plan.classes[1].whyNotServed = "its machine types are \"4411\", \"4414\"";
  Open();
  reasons->CountInstance();
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons, ElementsAre(Reason(EReason::kNotServed, kMemory, 1,
                                                  "not served: its machine types are \"4411\", \"4414\"")));
}

TEST_F(ResultReasons, AClassThatIsNotServedIsNotUncollectedToo) {
  plan.classes[1].whyNotServed = "there is no BMC node";
  Open();
  reasons->CountInstance();
  reasons->AddReason(kMemoryTurn, EReason::kNotCollected, 1, "the request ended before this class");
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kNotServed, kMemory, 1, "not served: there is no BMC node")));
}

TEST_F(ResultReasons, OnlyNamedClassesHaveToBeServed) {
  plan.classes[1].whyNotServed = "there is no BMC node";
  plan.requests[1].turns[0].isNamed = false;
  Open();
  reasons->CountInstance();
  EXPECT_THAT(Close().reasons, IsEmpty());
}

TEST_F(ResultReasons, SaysWhyAClassWasNotCollected) {
  reasons->CountInstance();
  reasons->AddReason(kMemoryTurn, EReason::kNotCollected, 1, "the collector ends the request after KROSG_DCAPFile");
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons, ElementsAre(Reason(EReason::kNotCollected, kMemory, 1,
                                                  "the collector ends the request after KROSG_DCAPFile")));
}

TEST_F(ResultReasons, AFailedRequestGivesItsOwnMessage) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kRequestFailed, 1,
                     "the collector returned before making 3 of 20 planned exchanges");
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons, ElementsAre(Reason(EReason::kRequestFailed, kBridge, 1,
                                                  "the collector returned before making 3 of 20 planned exchanges")));
}

TEST_F(ResultReasons, AStopInAClassIsAReasonOfThatClass) {
  reasons->CountInstance();
  reasons->AddReason(kMemoryTurn, EReason::kStopped, 1, "interrupted");
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kStopped, kMemory, 1, "interrupted")));
}

TEST_F(ResultReasons, AStopBetweenTwoClassesIsAReasonOfTheRun) {
  reasons->CountInstance();
  reasons->AddReasonOfRun(EReason::kStopped, "deadline reached");
  reasons->AddReason(kFilesTurn, EReason::kNotCollected, 1, "the run was stopped before this class");
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons,
              ElementsAre(Reason(EReason::kStopped, "", 1, "deadline reached"),
                          Reason(EReason::kNotCollected, kFiles, 1, "the run was stopped before this class")));
  EXPECT_EQ(summary.message, "deadline reached; KROSG_DCAPFile: the run was stopped before this class");
}

TEST_F(ResultReasons, ALostServiceProcessorIsAReason) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kSessionLost);
  reasons->AddReason(kBridgeTurn, EReason::kRegisterUnread, 7);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kSessionLost, kBridge, 1, "the connection to the service processor was lost"),
                          Reason(EReason::kRegisterUnread, kBridge, 7, "7 of 24 registers were not read")));
}

TEST_F(ResultReasons, AServiceProcessorLostBetweenTwoClassesIsAReasonOfTheRun) {
  reasons->CountInstance();
  reasons->AddReasonOfRun(EReason::kSessionLost);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kSessionLost, "", 1, "the connection to the service processor was lost")));
}

// --- runs that read nothing

TEST_F(ResultReasons, WithoutAClassNothingIsRead) {
  Ask({});
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons, ElementsAre(Reason(EReason::kNothingRead, "", 1, "there are no classes to collect")));
  EXPECT_EQ(summary.message, "there are no classes to collect");
}

TEST_F(ResultReasons, ReadsOrBlocksWithoutAnInstanceAreNothing) {
  const auto nothing = ElementsAre(Reason(EReason::kNothingRead, "", 1, "no instance was delivered"));
  Ask({kBridgeTurn});
  EXPECT_THAT(Close().reasons, nothing);
  Ask({kMemoryTurn});
  EXPECT_THAT(Close().reasons, nothing);
}

TEST_F(ResultReasons, CaptureFilesThatAreAllAbsentAreNoReason) {
  Ask({kFilesTurn});
  EXPECT_THAT(Close().reasons, IsEmpty());
}

// --- classes named twice, order, message

TEST_F(ResultReasons, TwoTurnsOfAClassAreOneEntry) {
  Ask({kBridgeTurn, kMemoryTurn, kBridgeTurn});
  reasons->CountInstance();
  reasons->AddReason(0, EReason::kRegisterUnread, 2);
  reasons->AddReason(2, EReason::kRegisterUnread, 1);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kRegisterUnread, kBridge, 3, "3 of 48 registers were not read")));
}

TEST_F(ResultReasons, TheSameMessageOfTwoTurnsIsSaidOnce) {
  Ask({kMemoryTurn, kMemoryTurn, kMemoryTurn});
  reasons->CountInstance();
  reasons->AddReason(0, EReason::kRequestFailed, 1, "the collector failed: no");
  reasons->AddReason(1, EReason::kRequestFailed, 1, "the collector failed: no");
  reasons->AddReason(2, EReason::kRequestFailed, 1, "the collector failed: never");
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kRequestFailed, kMemory, 3,
                                                  "the collector failed: no; the collector failed: never")));
}

TEST_F(ResultReasons, RegistersOfTurnsThatAreNotCollectedAreNotCounted) {
  Ask({kBridgeTurn, kBridgeTurn});
  reasons->CountInstance();
  reasons->AddReason(0, EReason::kRegisterUnread, 1);
  reasons->AddReason(1, EReason::kNotCollected, 1, "the run was stopped before this class");
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kRegisterUnread, kBridge, 1, "1 of 24 registers was not read"),
                          Reason(EReason::kNotCollected, kBridge, 1, "the run was stopped before this class")));
}

TEST_F(ResultReasons, OrdersReasonsByRunThenByFirstTurnThenByCode) {
  Ask({kFilesTurn, kBridgeTurn, kMemoryTurn});
  reasons->AddReason(2, EReason::kBlockUnread, 1);
  reasons->AddReason(1, EReason::kTimeUnread, 1);
  reasons->AddReason(1, EReason::kRegisterUnread, 1);
  reasons->AddReason(0, EReason::kFileUnread, 1);
  reasons->AddReasonOfRun(EReason::kStopped, "interrupted");
  std::vector<EReason> codes;
  for (const TReason& reason : Close().reasons) codes.push_back(reason.code);
  EXPECT_THAT(codes, ElementsAre(EReason::kStopped, EReason::kNothingRead, EReason::kFileUnread,
                                 EReason::kRegisterUnread, EReason::kTimeUnread, EReason::kBlockUnread));
}

TEST_F(ResultReasons, TheMessageHasThreeReasonsAndNamesATimeLast) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kTimeUnread, 1);
  reasons->AddReason(kMemoryTurn, EReason::kBlockUnread, 1);
  reasons->AddReason(kFilesTurn, EReason::kFileUnread, 1);
  EXPECT_EQ(
      Close().message,
      "KROSG_J2_MEMCTL_StatisticData: 1 of 3 register blocks was not received; KROSG_DCAPFile: 1 of 6 capture files "
      "is missing or incomplete; KROSG_VO_PCIIOBRIDGE_StatisticData: the time of 1 instance was not read");
}

TEST_F(ResultReasons, TheMessageCountsTheReasonsAfterTheThird) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kTimeUnread, 1);
  reasons->AddReason(kMemoryTurn, EReason::kBlockUnread, 1);
  reasons->AddReason(kMemoryTurn, EReason::kBlockShort, 1);
  reasons->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "0");
  reasons->AddReason(kFilesTurn, EReason::kFileUnread, 1);
  const std::string message = Close().message;
  EXPECT_EQ(message.substr(message.rfind("; ")), "; and 2 more");
}

// --- failures of the command

TEST_F(ResultReasons, AMismatchWithItsRecordingFailsTheResult) {
  reasons->CountInstance();
  reasons->AddReason(kBridgeTurn, EReason::kRegisterUnread, 2);
  const TResultSummary summary = CloseAfter(EFailure::kMalformed, "a.jsonl:7: node 1 was recorded\nand more");
  EXPECT_EQ(summary.status, EResultStatus::kFailed);
  EXPECT_EQ(summary.message, "a.jsonl:7: node 1 was recorded");
  EXPECT_EQ(summary.reasons.size(), 1U);
}

TEST_F(ResultReasons, APluginThatFailsToUnloadFailsTheResult) {
  reasons->CountInstance();
  const TResultSummary summary = CloseAfter(EFailure::kDefect, "the plugin failed");
  EXPECT_EQ(summary.status, EResultStatus::kFailed);
  EXPECT_EQ(summary.message, "the plugin failed");
}

TEST_F(ResultReasons, AnUnreachableServiceProcessorIsAStatusOfItsOwn) {
  EXPECT_EQ(CloseAfter(EFailure::kUnreachable, "no answer").status, EResultStatus::kUnreachable);
  Open();
  EXPECT_EQ(CloseAfter(EFailure::kRefused, "no such user").status, EResultStatus::kUnreachable);
}

// A trace or recording that cannot be written says nothing about what was collected.
TEST_F(ResultReasons, AFailedWriteLeavesTheStatusToTheReasons) {
  reasons->CountInstance();
  const TResultSummary complete = CloseAfter(EFailure::kNotWritten, "/full/trace: no space left");
  EXPECT_EQ(complete.status, EResultStatus::kComplete);
  EXPECT_EQ(complete.message, "");
  Open();
  reasons->CountInstance();
  reasons->AddReason(kMemoryTurn, EReason::kBlockUnread, 1);
  const TResultSummary partial = CloseAfter(EFailure::kNotWritten, "/full/trace: no space left");
  EXPECT_EQ(partial.status, EResultStatus::kPartial);
  EXPECT_EQ(partial.message, "KROSG_J2_MEMCTL_StatisticData: 1 of 3 register blocks was not received");
}

// --- failed exchanges

TEST_F(ResultReasons, CountsExchanges) {
  reasons->CountExchange();
  reasons->CountExchange();
  EXPECT_EQ(reasons->Exchanges(), 2U);
  EXPECT_EQ(Close().exchanges, 2U);
}

TEST_F(ResultReasons, KeepsEqualNeighboursAsOneFailure) {
  TExchangeFailure read;
  read.turn = kFilesTurn;
  read.kind = EExchangeKind::kRead;
  read.isPlaced = true;
  read.how = {EHow::kShort, 3};
  reasons->AddFailure(read);
  read.how = {EHow::kShort, 0};
  for (int i = 0; i < 3; ++i) reasons->AddFailure(read);
  read.place.owner = 1;
  reasons->AddFailure(read);
  std::vector<std::uint32_t> repeats;
  for (const TExchangeFailure& failure : Close().failed) repeats.push_back(failure.repeat);
  EXPECT_THAT(repeats, ElementsAre(1, 3, 1));
}

TEST_F(ResultReasons, KeepsFailuresOfTwoRegistersApart) {
  reasons->AddFailure(FailedRead(0, {EHow::kLost, 0}));
  reasons->AddFailure(FailedRead(1, {EHow::kLost, 0}));
  EXPECT_EQ(Close().failed.size(), 2U);
}

}  // namespace
}  // namespace tests
