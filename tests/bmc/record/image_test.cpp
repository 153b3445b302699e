#include "host/bmc/record/image.h"

#include <random>

#include "host/base/text.h"
#include "host/bmc/record/recording.h"
#include "host/bmc/record/replay.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {

namespace {

/// A recording in memory, called "r.jsonl".
class TMemoryImage : public TImage {
 public:
  explicit TMemoryImage(const std::string& text, const TImageLimits& limits = {})
      : TImage("r.jsonl", Stored(text), nullptr, limits) {}
};

const std::string kHead =
    R"({"format":"velhost-recording","version":2,"machine_type":"6203","started":"2026-01-31T12:00:00Z",)"
    R"("utc_offset_minutes":-60,"source":{"sp":["sim"],"target":"sim","simulated":true},"classes":["A"],)"
    R"("single_request":true,"schema_sha256":"ab12","discovery":{"bmc_nodes":2,"ipmi_driver":true,"dot_command":true,)"
    R"("sp_comm":true,"service_processors":1}})"
    "\n";

std::string Ipmi(const std::string& request, const std::string& response, int length, int node = 0) {
  return R"({"kind":"ipmi","node":)" + std::to_string(node) + R"(,"request":")" + request +
         R"(","ok":true,"response":")" + response + R"(","length":)" + std::to_string(length) + ",\"us\":1}\n";
}
std::string Lost(const std::string& request) {
  return R"({"kind":"ipmi","node":0,"request":")" + request + "\",\"ok\":false,\"us\":1}\n";
}
std::string Clock(const std::string& time) { return R"({"kind":"clock","local_time":")" + time + "\"}\n"; }

const std::string kAskTime = "01 20 3a 00 6f";
std::string Time(const std::string& bytes, int node = 0) {
  return Ipmi(kAskTime, "01 20 3a 00 00 04 00 00 00 " + bytes, 13, node);
}

// Requests for the areas "cpu_err" and "ioh_err", and a read of ten bytes.
const std::string kArea = "01 20 2e 00 90 ";
const std::string kOpenCpu = kArea + "13 00 00 00 39 30 00 01 01 00 00 00 00 00 00 00 63 70 75 5f 65 72 72";
const std::string kOpenIoh = kArea + "13 00 00 00 39 30 00 01 01 00 00 00 00 00 00 00 69 6f 68 5f 65 72 72";
std::string Opened(const std::string& request, const std::string& handle, int node = 0) {
  return Ipmi(request, "01 20 2e 00 00 07 00 00 00 39 30 00 " + handle, 16, node);
}
std::string TenRead(const std::string& handle, const std::string& offset, const std::string& bytes, int node = 0) {
  return Ipmi(kArea + "0e 00 00 00 39 30 00 02 " + handle + " " + offset + " 0a",
              "01 20 2e 00 00 0f 00 00 00 39 30 00 0a 00 " + bytes, 24, node);
}

void ExpectHandle(IServiceProcessor& processor, const TStep& open, const TBytes& handle) {
  ExpectAnswer(Send(processor, open), 0x00, TBytes{0x39, 0x30, 0x00} + handle);
}
void ExpectRead(IServiceProcessor& processor, const TStep& read, const TBytes& bytes) {
  ExpectAnswer(Send(processor, read), 0x00, TBytes{0x39, 0x30, 0x00, 0x0A, 0x00} + bytes);
}
void ExpectNotRecorded(IServiceProcessor& processor, const TStep& step) {
  ExpectNoAnswer(Send(processor, step));
  EXPECT_EQ(processor.WhyNoAnswer(), ENoAnswer::kNotRecorded);
}

TEST(Image, AnswersInAnyOrder) {
  TMemoryImage image(kHead + Time("12 34 56 78") +
                     Ipmi("01 20 3a 00 62 04 00 00 00 07 ab cd ef",
                          "01 20 3a 00 00 0e 00 00 00 a1 a2 a3 a4 a5 a6 01 02 03 04 05 06 07", 23) +
                     Ipmi("01 20 3a 00 62 04 00 00 00 07 ab cd ee", "01 20 3a 00 cb", 9));
  ExpectAnswer(Send(image, Register(7, 0xABCDEE)), 0xCB, {});
  ExpectAnswer(Send(image, Register(7, 0xABCDEF)), 0x00, {0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 1, 2, 3, 4, 5, 6, 7, 0});
  ExpectAnswer(Send(image, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
}

TEST(Image, RepeatedRequestIsAnsweredInRecordedOrderAndThenWithTheLastAnswer) {
  TMemoryImage image(kHead + Time("00 00 00 01") + Ipmi(kAskTime, "01 20 3a 00 c3", 9) + Time("00 00 00 02"));
  ExpectAnswer(Send(image, Timestamp()), 0x00, {0, 0, 0, 1});
  ExpectAnswer(Send(image, Timestamp()), 0xC3, {});
  for (int i = 0; i < 3; ++i) ExpectAnswer(Send(image, Timestamp()), 0x00, {0, 0, 0, 2});
}

TEST(Image, RecordedLossIsLostAgain) {
  TMemoryImage image(kHead + Time("00 00 00 01") + Lost(kAskTime));
  EXPECT_TRUE(Send(image, Timestamp()).answered);
  for (int i = 0; i < 2; ++i) {
    ExpectNoAnswer(Send(image, Timestamp()));
    EXPECT_EQ(image.WhyNoAnswer(), ENoAnswer::kLost);
  }
  TMemoryImage first(kHead + Lost(kAskTime) + Time("00 00 00 01"));
  ExpectNoAnswer(Send(first, Timestamp()));
  ExpectAnswer(Send(first, Timestamp()), 0x00, {0, 0, 0, 1});
}

TEST(Image, WhatWasNotRecordedIsNamedSoAndDisturbsNothing) {
  TMemoryImage image(kHead + Time("00 00 00 01"));
  ExpectNotRecorded(image, Register(0, 1));
  ExpectNotRecorded(image, Open("cpu_err"));
  ExpectNoAnswer(Send(image, 1, Timestamp()));
  EXPECT_EQ(image.WhyNoAnswer(), ENoAnswer::kNotRecorded);
  ExpectNoAnswer(SendDot(image, 0, BlockCommand(4096), 6));
  EXPECT_EQ(image.WhyNoAnswer(), ENoAnswer::kNotRecorded);
  ExpectAnswer(Send(image, Timestamp()), 0x00, {0, 0, 0, 1});
}

TEST(Image, KeepsNodesAndServiceProcessorsApart) {
  TMemoryImage image(kHead + Time("00 00 00 02", 1) + Time("00 00 00 01", 0) +
                     R"({"kind":"dot","sp":1,"command":2,"identifier":"0e 06","parameters":"00 00 00 10","ok":true,)"
                     "\"response\":\"01 02\",\"length\":4,\"us\":1}\n");
  ExpectAnswer(Send(image, 0, Timestamp()), 0x00, {0, 0, 0, 1});
  ExpectAnswer(Send(image, 1, Timestamp()), 0x00, {0, 0, 0, 2});
  EXPECT_EQ(SendDot(image, 1, BlockCommand(4096), 6).Block(), (TBytes{1, 2, 0, 0}));
  EXPECT_EQ(SendDot(image, 1, BlockCommand(4096), 1).Block(), TBytes{1});
  ExpectNoAnswer(SendDot(image, 0, BlockCommand(4096), 6));
  ExpectNoAnswer(SendDot(image, 1, BlockCommand(4095), 6));
}

// One after the other, both areas are handle 1.
const std::string kOneHandle =
    kHead + Opened(kOpenCpu, "01 00 00 00") + TenRead("01 00 00 00", "00 00 00 00", "c0 c1 c2 c3 c4 c5 c6 c7 c8 c9") +
    TenRead("01 00 00 00", "0a 00 00 00", "ca cb cc cd ce cf d0 d1 d2 d3") + Opened(kOpenIoh, "01 00 00 00") +
    TenRead("01 00 00 00", "00 00 00 00", "10 11 12 13 14 15 16 17 18 19");
const TBytes kFirstOfCpu = {0xC0, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9};
const TBytes kSecondOfCpu = {0xCA, 0xCB, 0xCC, 0xCD, 0xCE, 0xCF, 0xD0, 0xD1, 0xD2, 0xD3};
const TBytes kFirstOfIoh = {0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19};

TEST(Image, ReadIsAnsweredFromTheAreaThatItsHandleWasLastGivenFor) {
  TMemoryImage image(kOneHandle);
  ExpectHandle(image, Open("ioh_err"), {1, 0, 0, 0});
  ExpectRead(image, Read(1, 0, 10), kFirstOfIoh);
  ExpectNotRecorded(image, Read(1, 10, 10));
  ExpectHandle(image, Open("cpu_err"), {1, 0, 0, 0});
  ExpectRead(image, Read(1, 10, 10), kSecondOfCpu);
  ExpectRead(image, Read(1, 0, 10), kFirstOfCpu);
}

TEST(Image, ReadIsAnsweredByOffsetAndCount) {
  TMemoryImage image(kOneHandle);
  ExpectHandle(image, Open("cpu_err"), {1, 0, 0, 0});
  ExpectNotRecorded(image, Read(1, 0, 9));
  ExpectNotRecorded(image, Read(1, 5, 10));
  for (int i = 0; i < 2; ++i) ExpectRead(image, Read(1, 0, 10), kFirstOfCpu);
}

TEST(Image, AreaIsTheSameUnderAnotherHandle) {
  TMemoryImage image(
      kHead + Opened(kOpenCpu, "07 00 00 00") + TenRead("07 00 00 00", "00 00 00 00", "10 11 12 13 14 15 16 17 18 19") +
      Opened(kOpenCpu, "00 00 00 80") + TenRead("00 00 00 80", "00 00 00 00", "c0 c1 c2 c3 c4 c5 c6 c7 c8 c9"));
  ExpectHandle(image, Open("cpu_err"), {7, 0, 0, 0});
  ExpectHandle(image, Open("cpu_err"), {0, 0, 0, 0x80});
  ExpectRead(image, Read(7, 0, 10), kFirstOfIoh);
  ExpectRead(image, Read(0x80000000, 0, 10), kFirstOfCpu);
  ExpectRead(image, Read(7, 0, 10), kFirstOfCpu);
}

TEST(Image, HandlesAreThoseOfTheirNode) {
  TMemoryImage image(kHead + Opened(kOpenCpu, "01 00 00 00") + Opened(kOpenIoh, "01 00 00 00", 1) +
                     TenRead("01 00 00 00", "00 00 00 00", "c0 c1 c2 c3 c4 c5 c6 c7 c8 c9") +
                     TenRead("01 00 00 00", "00 00 00 00", "10 11 12 13 14 15 16 17 18 19", 1));
  ExpectHandle(image, Open("ioh_err", 1), {1, 0, 0, 0});
  ExpectHandle(image, Open("cpu_err"), {1, 0, 0, 0});
  ExpectRead(image, Read({1, 0, 0, 0}, 0, 10, 1), kFirstOfIoh);
  ExpectRead(image, Read(1, 0, 10), kFirstOfCpu);
}

TEST(Image, ReadWithoutOpenIsARequestLikeAnyOther) {
  TMemoryImage image(kHead + TenRead("01 00 00 00", "00 00 00 00", "10 11 12 13 14 15 16 17 18 19") +
                     Opened(kOpenCpu, "01 00 00 00") +
                     TenRead("01 00 00 00", "00 00 00 00", "c0 c1 c2 c3 c4 c5 c6 c7 c8 c9"));
  ExpectRead(image, Read(1, 0, 10), kFirstOfIoh);
  ExpectRead(image, Read(1, 0, 10), kFirstOfIoh);
  ExpectHandle(image, Open("cpu_err"), {1, 0, 0, 0});
  ExpectRead(image, Read(1, 0, 10), kFirstOfCpu);
  ExpectNotRecorded(image, Read(2, 0, 10));
}

TEST(Image, FailedOpenGivesNoHandle) {
  // A code with seven bytes of data, as if there were a handle, and an answer that was lost.
  TMemoryImage image(kOneHandle + Ipmi(kOpenCpu, "01 20 2e 00 cb 07 00 00 00 39 30 00 01", 16) + Lost(kOpenCpu) +
                     TenRead("01 00 00 00", "0a 00 00 00", "20 21 22 23 24 25 26 27 28 29"));
  ExpectHandle(image, Open("ioh_err"), {1, 0, 0, 0});
  ExpectHandle(image, Open("cpu_err"), {1, 0, 0, 0});
  ExpectHandle(image, Open("ioh_err"), {1, 0, 0, 0});
  EXPECT_EQ(Send(image, Open("cpu_err")).after.CompletionCode(), 0xCB);
  ExpectNoAnswer(Send(image, Open("cpu_err")));
  ExpectRead(image, Read(1, 10, 10), {0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0x29});
  ExpectRead(image, Read(1, 0, 10), kFirstOfIoh);
}

TEST(Image, LossOfAReadIsOfItsPlaceInTheArea) {
  TMemoryImage image(kHead + Opened(kOpenCpu, "01 00 00 00") +
                     Lost(kArea + "0e 00 00 00 39 30 00 02 01 00 00 00 00 00 00 00 0a") +
                     TenRead("01 00 00 00", "0a 00 00 00", "ca cb cc cd ce cf d0 d1 d2 d3"));
  ExpectHandle(image, Open("cpu_err"), {1, 0, 0, 0});
  ExpectRead(image, Read(1, 10, 10), kSecondOfCpu);
  ExpectNoAnswer(Send(image, Read(1, 0, 10)));
  EXPECT_EQ(image.WhyNoAnswer(), ENoAnswer::kLost);
}

TEST(Image, ClockIsReadInRecordedOrderAndThenStays) {
  TMemoryImage image(kHead + Clock("2026-01-31T12:34:56-03:30") + Time("00 00 00 01") +
                     Clock("2026-01-31T12:34:57-03:30"));
  EXPECT_EQ(image.LocalTime().ToString(), "20260131123456.000000-210");
  EXPECT_EQ(image.LocalTime().ToString(), "20260131123457.000000-210");
  EXPECT_EQ(image.LocalTime().ToString(), "20260131123457.000000-210");
  EXPECT_EQ(TMemoryImage(kHead).LocalTime().ToString(), "20260131120000.000000+000");
}

TEST(Image, SuppliesWhatTheFirstLineSays) {
  TMemoryImage image(kHead);
  EXPECT_EQ(image.MachineType(), "6203");
  EXPECT_EQ(image.Discover().bmcNodes, 2);
  EXPECT_TRUE(image.Discover().dotCommands);
  EXPECT_EQ(image.Discover().serviceProcessors, 1);
  EXPECT_EQ(image.Recording().Header().utcOffsetMinutes, -60);
  EXPECT_TRUE(image.Recording().Header().run->source.isSimulated);
}

TEST(Image, UsesACutRecordingUpToItsLastWholeLine) {
  const std::string text = kHead + Time("00 00 00 01") + Time("00 00 00 02");
  TMemoryImage cut(text.substr(0, text.size() - 1));
  EXPECT_EQ(FormatDiagnostic(*cut.Recording().CutWarning()),
            "r.jsonl:3:1: warning: the recording was cut in this line; it is used up to the line before\n");
  for (int i = 0; i < 2; ++i) ExpectAnswer(Send(cut, Timestamp()), 0x00, {0, 0, 0, 1});
  for (std::size_t size = 0; size < text.size(); ++size) {
    TMemoryImage image(text.substr(0, size));
    EXPECT_TRUE(image.Recording().CutWarning().has_value() || text[size - 1] == '\n') << size;
    EXPECT_EQ(Send(image, Timestamp()).answered, size >= kHead.size() + Time("00 00 00 01").size()) << size;
  }
}

TEST(Image, LineThatWasChangedSinceTheCheckCountsAsNotRecorded) {
  const TTemporaryFolder folder;
  std::string text = kHead + Time("00 00 00 01") + Time("00 00 00 02") + Time("00 00 00 03");
  for (int i = 0; i < 500; ++i) text += Clock("2026-01-31T12:34:56Z");  // more than is read ahead
  const std::string path = folder.Write("r.jsonl", text);
  TFileReader reader;
  TImage image(path, TCheckedRecording::Open(path, reader), &reader);
  text[text.find(kAskTime)] = 'x';                        // not hexadecimal
  text[text.find(kAskTime) + kAskTime.size() - 1] = 'e';  // another request
  folder.Write("r.jsonl", text);
  for (int i = 0; i < 2; ++i) ExpectNotRecorded(image, Timestamp());
  ExpectAnswer(Send(image, Timestamp()), 0x00, {0, 0, 0, 3});
}

TEST(Image, AnswersNothingOnceTheRunIsStopped) {
  TMemoryImage image(kHead + Time("00 00 00 01") + Time("00 00 00 02"));
  TStopSignal stop;
  stop.RequestStop();
  ExpectNoAnswer(Send(image, Timestamp(), stop));
  EXPECT_EQ(image.WhyNoAnswer(), ENoAnswer::kNotSent);
  ExpectNoAnswer(SendDot(image, 0, BlockCommand(4096), 6, stop));
  EXPECT_EQ(image.WhyNoAnswer(), ENoAnswer::kNotSent);
  ExpectAnswer(Send(image, Timestamp()), 0x00, {0, 0, 0, 1});
}

TEST(Image, LimitOfLines) {
  const std::string text = kHead + Time("00 00 00 01") + Clock("2026-01-31T12:34:56Z") + Time("00 00 00 01");
  EXPECT_NO_THROW(TMemoryImage(text, {.lines = 3}));
  EXPECT_EQ(
      MessageOf([&] { TMemoryImage(text, {.lines = 2}); }, EFailure::kTooLarge),
      "r.jsonl:4:1: error: found more than 2 lines, expected at most 2 in a recording that is used as an image\n");
}

TEST(Image, LimitOfHandles) {
  const std::string text = kHead + Opened(kOpenCpu, "01 00 00 00") + Opened(kOpenIoh, "01 00 00 00") +
                           Opened(kOpenCpu, "01 00 00 00", 1) + Opened(kOpenCpu, "02 00 00 00");
  EXPECT_NO_THROW(TMemoryImage(text, {.handles = 3}));
  EXPECT_EQ(MessageOf([&] { TMemoryImage(text, {.handles = 2}); }, EFailure::kTooLarge),
            "r.jsonl:5:1: error: found more than 2 handles of storage areas, expected at most 2 in a recording that is "
            "used as an image\n");
}

/// The outcomes of asking for everything in a recording, in its order.
std::vector<TIpmiOutcome> AskAll(IServiceProcessor& processor, const std::string& text) {
  std::vector<TIpmiOutcome> outcomes;
  const TCheckedRecording recording("r.jsonl", Stored(text), nullptr,
                                    [&](const TRecordedLine& line, std::string_view, std::size_t) {
                                      wire::TCommandBuffer request;
                                      std::copy(line.request.begin(), line.request.end(), request.Data());
                                      outcomes.push_back(Send(processor, line.node, request));
                                    });
  return outcomes;
}

// Few requests and few handles, so that everything is repeated and handles change their meaning all the time.
TEST(Image, GivesWhatAReplayGivesIfItIsAskedTheSame) {
  std::mt19937 random(1);
  for (int round = 0; round < 20; ++round) {
    std::string text = kHead;
    for (int i = 0; i < 60; ++i) {
      const std::string handle = "0" + std::to_string(random() % 3) + " 00 00 00";
      const std::string bytes = std::to_string(10 + i) + " 00 00 00";
      const int node = static_cast<int>(random() % 2);
      switch (random() % 6) {
        case 0: text += Opened(kOpenCpu, handle, node); break;
        case 1: text += Opened(kOpenIoh, handle, node); break;
        case 2: text += Lost(kOpenCpu); break;
        case 3: text += Time(bytes, node); break;
        default:
          text +=
              TenRead(handle, random() % 2 == 0 ? "00 00 00 00" : "0a 00 00 00", bytes + " 01 02 03 04 05 06", node);
      }
    }
    TReplay replay("r.jsonl", Stored(text));
    TMemoryImage image(text);
    const auto replayed = AskAll(replay, text);
    const auto imaged = AskAll(image, text);
    ASSERT_EQ(replayed.size(), 60U);
    EXPECT_FALSE(replay.Mismatch());
    for (std::size_t i = 0; i < 60; ++i) {
      EXPECT_EQ(imaged[i].answered, replayed[i].answered) << round << " " << i;
      EXPECT_EQ(imaged[i].after, replayed[i].after) << round << " " << i;
      EXPECT_EQ(imaged[i].length, replayed[i].length) << round << " " << i;
    }
  }
}

}  // namespace
}  // namespace tests
