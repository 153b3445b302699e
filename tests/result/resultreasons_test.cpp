// What the account of a run makes of the reports it is given: reasons, message, status, failed exchanges.
#include "host/result/runbook.h"

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
class RunBook : public testing::Test {
 protected:
  RunBook() {
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
  /// A new book, of the plan as it is now.
  void Open() { book.emplace(plan); }
  TResultSummary Close() { return book->Close(std::nullopt); }
  TResultSummary CloseAfter(EFailure kind, const std::string& message) {
    return book->Close(THostError(kind, message));
  }

  TPlan plan;
  std::optional<TRunBook> book;

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

TEST_F(RunBook, WithNothingMissingIsComplete) {
  book->CountInstance();
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kComplete);
  EXPECT_EQ(summary.message, "");
  EXPECT_THAT(summary.reasons, IsEmpty());
  EXPECT_EQ(summary.plan, &plan);
}

TEST_F(RunBook, AnAbsentRegisterOrInstanceIsNoReason) {
  book->CountInstance();
  book->AddFailure(FailedRead(3, {EHow::kCompletionCode, 0xCB}));
  book->AddUnread({kBridgeTurn, {0, 1}, EUnread::kAbsent});
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kComplete);
  EXPECT_THAT(summary.reasons, IsEmpty());
  EXPECT_EQ(summary.failed.size(), 1U);
  EXPECT_EQ(summary.unread.size(), 1U);
}

TEST_F(RunBook, CountsTheRegistersThatWereNotRead) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kRegisterUnread, 2);
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons,
              ElementsAre(Reason(EReason::kRegisterUnread, kBridge, 2, "2 of 24 registers were not read")));
  EXPECT_EQ(summary.message, "KROSG_VO_PCIIOBRIDGE_StatisticData: 2 of 24 registers were not read");
}

TEST_F(RunBook, CountsASingleRegister) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kRegisterUnread, 1);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kRegisterUnread, kBridge, 1, "1 of 24 registers was not read")));
}

TEST_F(RunBook, IgnoresAReasonWithoutCount) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kRegisterUnread, 0);
  EXPECT_THAT(Close().reasons, IsEmpty());
}

TEST_F(RunBook, AMissingTimeIsAReasonOfACompleteResult) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kTimeUnread, 1);
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kComplete);
  EXPECT_EQ(summary.message, "");
  EXPECT_THAT(summary.reasons,
              ElementsAre(Reason(EReason::kTimeUnread, kBridge, 1, "the time of 1 instance was not read")));
}

TEST_F(RunBook, CountsTheTimesThatWereNotRead) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kTimeUnread, 2);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kTimeUnread, kBridge, 2, "the times of 2 instances were not read")));
}

TEST_F(RunBook, CountsTheCaptureFilesThatAreMissingOrIncomplete) {
  book->CountInstance();
  book->AddReason(kFilesTurn, EReason::kFileUnread, 5);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kFileUnread, kFiles, 5, "5 of 6 capture files are missing or incomplete")));
}

TEST_F(RunBook, QuotesTheLimitThatRefusedACaptureFile) {
  book->CountInstance();
  book->AddReason(kFilesTurn, EReason::kFileUnread, 1, "node 0, storage area cpu_err reports 1 byte: not read");
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kFileUnread, kFiles, 1,
                                                  "1 of 6 capture files is missing or incomplete; node 0, storage "
                                                  "area cpu_err reports 1 byte: not read")));
}

TEST_F(RunBook, WithoutADriverNoCaptureFileIsRead) {
  plan.server.ipmiDriver = false;
  Open();
  book->AddReason(kFilesTurn, EReason::kFileUnread, 6);
  book->CountInstance();
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kFileUnread, kFiles, 6,
                                                  "6 of 6 capture files are missing or incomplete; the IPMI driver is "
                                                  "not present")));
}

TEST_F(RunBook, CountsTheBlocksThatDidNotCome) {
  book->CountInstance();
  book->AddReason(kMemoryTurn, EReason::kBlockUnread, 1);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kBlockUnread, kMemory, 1, "1 of 3 register blocks did not come")));
}

TEST_F(RunBook, AFailedCommunicationCheckCostsAllBlocks) {
  plan.server.communicates = false;
  plan.blocks = 0;
  Open();
  book->CountInstance();
  book->AddReason(kMemoryTurn, EReason::kBlockUnread, 3);
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kBlockUnread, kMemory, 3,
                                                  "the communication check of the service processor failed")));
}

// The registers and times that a short block costs are not counted again.
TEST_F(RunBook, CountsTheBlocksThatWereTooShort) {
  book->CountInstance();
  book->AddReason(kMemoryTurn, EReason::kBlockShort, 1);
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons,
              ElementsAre(Reason(EReason::kBlockShort, kMemory, 1, "1 of 3 register blocks was too short")));
}

TEST_F(RunBook, NamesTheServiceProcessorWithoutAValidTime) {
  book->CountInstance();
  book->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "0");
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kBlockUndecodable, kMemory, 1,
                                                  "the register block of service processor 0 has no valid time")));
}

TEST_F(RunBook, CountsWhatWasDroppedWithABlock) {
  book->CountInstance();
  for (const int bank : {0, 1}) book->AddUnread({kMemoryTurn, {0, bank}, EUnread::kDiscarded});
  for (const int bank : {0, 1}) book->AddUnread({kMemoryTurn, {1, bank}, EUnread::kBlockUndecodable});
  book->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "1");
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kBlockUndecodable, kMemory, 1,
                                 "the register block of service processor 1 has no valid time; 2 instances of others "
                                 "were dropped with it")));
}

TEST_F(RunBook, NamesAllServiceProcessorsWithoutAValidTime) {
  book->CountInstance();
  book->AddUnread({kMemoryTurn, {0, 0}, EUnread::kDiscarded});
  book->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "1");
  book->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "2");
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kBlockUndecodable, kMemory, 2,
                                 "the register blocks of service processors 1 and 2 have no valid time; 1 instance of "
                                 "others was dropped with them")));
}

TEST_F(RunBook, SaysWhyANamedClassIsNotServed) {
  plan.classes[1].whyNotServed = "its machine types are \"4411\", \"4414\"";
  Open();
  book->CountInstance();
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons,
              ElementsAre(Reason(EReason::kNotServed, kMemory, 1, "its machine types are \"4411\", \"4414\"")));
}

TEST_F(RunBook, AClassThatIsNotServedIsNotUncollectedToo) {
  plan.classes[1].whyNotServed = "there is no BMC node";
  Open();
  book->CountInstance();
  book->AddReason(kMemoryTurn, EReason::kNotCollected, 1, "the request ended before it");
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kNotServed, kMemory, 1, "there is no BMC node")));
}

TEST_F(RunBook, OnlyNamedClassesHaveToBeServed) {
  plan.classes[1].whyNotServed = "there is no BMC node";
  plan.requests[1].turns[0].isNamed = false;
  Open();
  book->CountInstance();
  EXPECT_THAT(Close().reasons, IsEmpty());
}

TEST_F(RunBook, SaysWhyAClassWasNotCollected) {
  book->CountInstance();
  book->AddReason(kMemoryTurn, EReason::kNotCollected, 1, "the collector ends a request at KROSG_DCAPFile");
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons, ElementsAre(Reason(EReason::kNotCollected, kMemory, 1,
                                                  "the collector ends a request at KROSG_DCAPFile")));
}

TEST_F(RunBook, AFailedRequestGivesItsOwnMessage) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kRequestFailed, 1,
                  "the collector returned with 3 of 20 planned exchanges unmade");
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons, ElementsAre(Reason(EReason::kRequestFailed, kBridge, 1,
                                                  "the collector returned with 3 of 20 planned exchanges unmade")));
}

TEST_F(RunBook, AStopInAClassIsAReasonOfThatClass) {
  book->CountInstance();
  book->AddReason(kMemoryTurn, EReason::kStopped, 1, "interrupted");
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kStopped, kMemory, 1, "interrupted")));
}

TEST_F(RunBook, AStopBetweenTwoClassesIsAReasonOfTheRun) {
  book->CountInstance();
  book->AddReasonOfRun(EReason::kStopped, "deadline reached");
  book->AddReason(kFilesTurn, EReason::kNotCollected, 1, "the run was stopped before it");
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons, ElementsAre(Reason(EReason::kStopped, "", 1, "deadline reached"),
                                           Reason(EReason::kNotCollected, kFiles, 1, "the run was stopped before it")));
  EXPECT_EQ(summary.message, "deadline reached; KROSG_DCAPFile: the run was stopped before it");
}

TEST_F(RunBook, ALostServiceProcessorIsAReason) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kSessionLost);
  book->AddReason(kBridgeTurn, EReason::kRegisterUnread, 7);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kSessionLost, kBridge, 1, "the connection to the service processor was lost"),
                          Reason(EReason::kRegisterUnread, kBridge, 7, "7 of 24 registers were not read")));
}

TEST_F(RunBook, AServiceProcessorLostBetweenTwoClassesIsAReasonOfTheRun) {
  book->CountInstance();
  book->AddReasonOfRun(EReason::kSessionLost);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kSessionLost, "", 1, "the connection to the service processor was lost")));
}

// --- runs that read nothing

TEST_F(RunBook, WithoutAClassNothingIsRead) {
  Ask({});
  const TResultSummary summary = Close();
  EXPECT_EQ(summary.status, EResultStatus::kPartial);
  EXPECT_THAT(summary.reasons, ElementsAre(Reason(EReason::kNothingRead, "", 1, "there is no class to collect")));
  EXPECT_EQ(summary.message, "there is no class to collect");
}

TEST_F(RunBook, ReadsOrBlocksWithoutAnInstanceAreNothing) {
  const auto nothing = ElementsAre(Reason(EReason::kNothingRead, "", 1, "no instance came"));
  Ask({kBridgeTurn});
  EXPECT_THAT(Close().reasons, nothing);
  Ask({kMemoryTurn});
  EXPECT_THAT(Close().reasons, nothing);
}

TEST_F(RunBook, CaptureFilesThatAreAllAbsentAreNoReason) {
  Ask({kFilesTurn});
  EXPECT_THAT(Close().reasons, IsEmpty());
}

// --- classes named twice, order, message

TEST_F(RunBook, TwoTurnsOfAClassAreOneEntry) {
  Ask({kBridgeTurn, kMemoryTurn, kBridgeTurn});
  book->CountInstance();
  book->AddReason(0, EReason::kRegisterUnread, 2);
  book->AddReason(2, EReason::kRegisterUnread, 1);
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kRegisterUnread, kBridge, 3, "3 of 48 registers were not read")));
}

TEST_F(RunBook, TheSameMessageOfTwoTurnsIsSaidOnce) {
  Ask({kMemoryTurn, kMemoryTurn, kMemoryTurn});
  book->CountInstance();
  book->AddReason(0, EReason::kRequestFailed, 1, "the collector failed: no");
  book->AddReason(1, EReason::kRequestFailed, 1, "the collector failed: no");
  book->AddReason(2, EReason::kRequestFailed, 1, "the collector failed: never");
  EXPECT_THAT(Close().reasons, ElementsAre(Reason(EReason::kRequestFailed, kMemory, 3,
                                                  "the collector failed: no; the collector failed: never")));
}

TEST_F(RunBook, RegistersOfTurnsThatAreNotCollectedAreNotCounted) {
  Ask({kBridgeTurn, kBridgeTurn});
  book->CountInstance();
  book->AddReason(0, EReason::kRegisterUnread, 1);
  book->AddReason(1, EReason::kNotCollected, 1, "the run was stopped before it");
  EXPECT_THAT(Close().reasons,
              ElementsAre(Reason(EReason::kRegisterUnread, kBridge, 1, "1 of 24 registers was not read"),
                          Reason(EReason::kNotCollected, kBridge, 1, "the run was stopped before it")));
}

TEST_F(RunBook, OrdersReasonsByRunThenByFirstTurnThenByCode) {
  Ask({kFilesTurn, kBridgeTurn, kMemoryTurn});
  book->AddReason(2, EReason::kBlockUnread, 1);
  book->AddReason(1, EReason::kTimeUnread, 1);
  book->AddReason(1, EReason::kRegisterUnread, 1);
  book->AddReason(0, EReason::kFileUnread, 1);
  book->AddReasonOfRun(EReason::kStopped, "interrupted");
  std::vector<EReason> codes;
  for (const TReason& reason : Close().reasons) codes.push_back(reason.code);
  EXPECT_THAT(codes, ElementsAre(EReason::kStopped, EReason::kNothingRead, EReason::kFileUnread,
                                 EReason::kRegisterUnread, EReason::kTimeUnread, EReason::kBlockUnread));
}

TEST_F(RunBook, TheMessageHasThreeReasonsAndNamesATimeLast) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kTimeUnread, 1);
  book->AddReason(kMemoryTurn, EReason::kBlockUnread, 1);
  book->AddReason(kFilesTurn, EReason::kFileUnread, 1);
  EXPECT_EQ(Close().message,
            "KROSG_J2_MEMCTL_StatisticData: 1 of 3 register blocks did not come; KROSG_DCAPFile: 1 of 6 capture files "
            "is missing or incomplete; KROSG_VO_PCIIOBRIDGE_StatisticData: the time of 1 instance was not read");
}

TEST_F(RunBook, TheMessageCountsTheReasonsAfterTheThird) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kTimeUnread, 1);
  book->AddReason(kMemoryTurn, EReason::kBlockUnread, 1);
  book->AddReason(kMemoryTurn, EReason::kBlockShort, 1);
  book->AddReason(kMemoryTurn, EReason::kBlockUndecodable, 1, "0");
  book->AddReason(kFilesTurn, EReason::kFileUnread, 1);
  const std::string message = Close().message;
  EXPECT_EQ(message.substr(message.rfind("; ")), "; and 2 more");
}

// --- failures of the command

TEST_F(RunBook, AMismatchWithItsRecordingFailsTheResult) {
  book->CountInstance();
  book->AddReason(kBridgeTurn, EReason::kRegisterUnread, 2);
  const TResultSummary summary = CloseAfter(EFailure::kMalformed, "a.jsonl:7: node 1 was recorded\nand more");
  EXPECT_EQ(summary.status, EResultStatus::kFailed);
  EXPECT_EQ(summary.message, "a.jsonl:7: node 1 was recorded");
  EXPECT_EQ(summary.reasons.size(), 1U);
}

TEST_F(RunBook, APluginThatFailsToUnloadFailsTheResult) {
  book->CountInstance();
  const TResultSummary summary = CloseAfter(EFailure::kDefect, "the plugin failed");
  EXPECT_EQ(summary.status, EResultStatus::kFailed);
  EXPECT_EQ(summary.message, "the plugin failed");
}

TEST_F(RunBook, AnUnreachableServiceProcessorIsAStatusOfItsOwn) {
  EXPECT_EQ(CloseAfter(EFailure::kUnreachable, "no answer").status, EResultStatus::kUnreachable);
  Open();
  EXPECT_EQ(CloseAfter(EFailure::kRefused, "no such user").status, EResultStatus::kUnreachable);
}

// A trace or recording that cannot be written says nothing about what was collected.
TEST_F(RunBook, AFailedWriteLeavesTheStatusToTheReasons) {
  book->CountInstance();
  const TResultSummary complete = CloseAfter(EFailure::kNotWritten, "/full/trace: no space left");
  EXPECT_EQ(complete.status, EResultStatus::kComplete);
  EXPECT_EQ(complete.message, "");
  Open();
  book->CountInstance();
  book->AddReason(kMemoryTurn, EReason::kBlockUnread, 1);
  const TResultSummary partial = CloseAfter(EFailure::kNotWritten, "/full/trace: no space left");
  EXPECT_EQ(partial.status, EResultStatus::kPartial);
  EXPECT_EQ(partial.message, "KROSG_J2_MEMCTL_StatisticData: 1 of 3 register blocks did not come");
}

// --- failed exchanges

TEST_F(RunBook, CountsExchanges) {
  book->CountExchange();
  book->CountExchange();
  EXPECT_EQ(book->Exchanges(), 2U);
  EXPECT_EQ(Close().exchanges, 2U);
}

TEST_F(RunBook, KeepsEqualNeighboursAsOneFailure) {
  TExchangeFailure read;
  read.turn = kFilesTurn;
  read.kind = EExchangeKind::kRead;
  read.isPlaced = true;
  read.how = {EHow::kShort, 3};
  book->AddFailure(read);
  read.how = {EHow::kShort, 0};
  for (int i = 0; i < 3; ++i) book->AddFailure(read);
  read.place.owner = 1;
  book->AddFailure(read);
  std::vector<std::uint32_t> repeats;
  for (const TExchangeFailure& failure : Close().failed) repeats.push_back(failure.repeat);
  EXPECT_THAT(repeats, ElementsAre(1, 3, 1));
}

TEST_F(RunBook, KeepsFailuresOfTwoRegistersApart) {
  book->AddFailure(FailedRead(0, {EHow::kLost, 0}));
  book->AddFailure(FailedRead(1, {EHow::kLost, 0}));
  EXPECT_EQ(Close().failed.size(), 2U);
}

}  // namespace
}  // namespace tests
