// Register and timestamp reads over IPMI: exact requests, answers of every length, transcripts.
#include <gtest/gtest.h>

#include "r8/ipmirequesttorgareg.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"
#include "tests/support/tracefile.h"

namespace tests {
namespace {

// Data of a register read in which all bytes differ: header 81-86, value 01-08, then more.
TBytes Distinct(std::size_t count) {
  const TBytes all = {0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 1,    2,    3,    4,    5,    6,    7,    8,    0x91,
                      0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0x9A, 0x9B, 0x9C, 0x9D, 0x9E, 0x9F, 0xA0};
  return TBytes(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count));
}

const TBytes kUntouched(14, 0x77);

class Transport : public TPartTest {
 protected:
  bool ReadRegister(bool raw) { return transport.getData(7, 0x345678, out.data(), &length, raw); }
  bool ReadTime() { return transport.getTimeStamp(out.data(), &length); }
  TStep Expected() { return Register(7, 0x345678); }

  IPMIRequestTorgaReg transport;
  TBytes out = kUntouched;
  unsigned short length = 9;
};

TEST_F(Transport, ARegisterReadSendsChipAndLow24AddressBits) {
  sp.Expect(Ipmi(0, {0x01, 0x20, 0x3A, 0x00, 0x62, 0x04, 0x00, 0x00, 0x00, 0x07, 0x34, 0x56, 0x78}).Lost());
  EXPECT_FALSE(transport.getData(7, 0x12345678, out.data(), &length, true));
  sp.Expect(Ipmi(0, {0x01, 0x20, 0x3A, 0x00, 0x62, 0x04, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x01}).Lost());
  EXPECT_FALSE(transport.getData(255, 0x00FF0001, out.data(), &length, true));
}

TEST_F(Transport, ARawReadGivesTheEightValueBytesAndNothingElse) {
  sp.Expect(Expected().Answers(Distinct(14)));
  EXPECT_TRUE(ReadRegister(true));
  EXPECT_EQ(out, (TBytes{1, 2, 3, 4, 5, 6, 7, 8, 0x77, 0x77, 0x77, 0x77, 0x77, 0x77}));
  EXPECT_EQ(length, 14);
}

TEST_F(Transport, ALabelledReadIsCutOutOneByteLate) {
  // Buffer bytes 13-15 are the last two bytes of the header and the first of the value; byte 23 comes after
  // the 14 data bytes and is zero.
  sp.Expect(Expected().Answers(Distinct(14)));
  EXPECT_TRUE(ReadRegister(false));
  EXPECT_EQ(out, (TBytes{0x85, 0x86, 1, ' ', '=', ' ', 2, 3, 4, 5, 6, 7, 8, 0}));
  sp.Expect(Expected().Answers(Distinct(15)));
  EXPECT_TRUE(ReadRegister(false));
  EXPECT_EQ(out, (TBytes{0x85, 0x86, 1, ' ', '=', ' ', 2, 3, 4, 5, 6, 7, 8, 0x91}));
  EXPECT_EQ(length, 15);
}

TEST_F(Transport, AnswersOfEveryLength) {
  for (std::size_t count = 0; count <= 30; ++count) {
    for (const bool raw : {true, false}) {
      out = kUntouched;
      sp.Expect(Expected().Answers(Distinct(count)));
      EXPECT_EQ(ReadRegister(raw), count >= 14) << count;
      EXPECT_EQ(length, count);
      EXPECT_EQ(out == kUntouched, count < 14);
    }
  }
}

TEST_F(Transport, TheDataLengthByteDecidesNotTheLibrarysLength) {
  for (const int lie : {0, 13, 70000, -1}) {
    sp.Expect(Expected().Answers(Distinct(14)).WithLength(lie));
    EXPECT_TRUE(ReadRegister(true));
    EXPECT_EQ(length, 14);
  }
  sp.Expect(Expected().Answers(Distinct(30)).WithDataLength(13));
  EXPECT_FALSE(ReadRegister(true));
  EXPECT_EQ(length, 13);
  sp.Expect(Expected().Answers(Distinct(3)).WithDataLength(247));
  EXPECT_TRUE(ReadRegister(true)) << "the bytes that are not there are zero";
  EXPECT_EQ(out, (TBytes{0, 0, 0, 0, 0, 0, 0, 0, 0x77, 0x77, 0x77, 0x77, 0x77, 0x77}));
  EXPECT_EQ(length, 247);
}

TEST_F(Transport, ACompletionCodeFailsWithTheDataLength) {
  for (const std::uint8_t code : TBytes{0xC1, 0x01, 0xFF}) {
    sp.Expect(Expected().Answers(Distinct(20)).WithCode(code));
    EXPECT_FALSE(ReadRegister(true));
    EXPECT_EQ(length, 20);
    EXPECT_EQ(out, kUntouched);
  }
}

TEST_F(Transport, ALostAnswerLeavesTheLengthPreset) {
  sp.Expect(Expected().Lost());
  EXPECT_FALSE(ReadRegister(true));
  EXPECT_EQ(length, 256);
  EXPECT_EQ(out, kUntouched);
}

TEST_F(Transport, TheTranscriptOfARegisterRead) {
  sp.Expect(Expected().Answers(Distinct(14)));
  ReadRegister(true);
  const TBytes sent = {1, 32, 58, 0, 98, 4, 0, 0, 0, 7, 52, 86, 120};
  const TBytes received = {1, 32, 58, 0, 0, 14, 0, 0, 0, 129, 130, 131, 132, 133, 134, 1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Entered torgareg request."),
                                                Verbose("Contents of buffer to send (rspBuf):\n" + DumpText(sent, 257) +
                                                        "command completed checking success...\n"
                                                        "\nThe response length is 14\n\nContents of (rspBuf):\n" +
                                                        DumpText(received, 257))}));
}

TEST_F(Transport, TheTranscriptOfABadRegisterRead) {
  sp.Expect(Expected().Fails(0xCB));
  ReadRegister(true);
  const std::string& text = logger.Lines().at(1).message;
  EXPECT_TRUE(text.ends_with("\n\nThe response length is 0\n\nContents of (rspBuf):\n" +
                             DumpText({1, 32, 58, 0, 203, 0}, 257) + "Bad RC from ipmi cmd."))
      << text;
}

TEST_F(Transport, TheTranscriptOfALostRegisterReadEndsAfterTheRequest) {
  sp.Expect(Expected().Lost());
  ReadRegister(true);
  const TBytes sent = {1, 32, 58, 0, 98, 4, 0, 0, 0, 7, 52, 86, 120};
  EXPECT_EQ(logger.Lines().at(1), Verbose("Contents of buffer to send (rspBuf):\n" + DumpText(sent, 257)));
  EXPECT_EQ(logger.Lines().size(), 2U);
}

TEST_F(Transport, ATimestampReadSendsNoData) {
  sp.Expect(Ipmi(0, {0x01, 0x20, 0x3A, 0x00, 0x6F}).Answers({0x12, 0x34, 0x56, 0x78}));
  EXPECT_TRUE(ReadTime());
  EXPECT_EQ(TBytes(out.begin(), out.begin() + 5), (TBytes{0x12, 0x34, 0x56, 0x78, 0x77}));
  EXPECT_EQ(length, 4);
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Entered get time stamp request"),
                                                Verbose("Command completed checking success...\n"
                                                        "\nThe response length is 4")}));
}

TEST_F(Transport, TimestampAnswersOfEveryLength) {
  // The check applies to the whole length: nine bytes and the four of the timestamp are 13.
  for (std::size_t count = 0; count <= 30; ++count) {
    out = kUntouched;
    sp.Expect(Timestamp().Answers(Distinct(count)));
    EXPECT_EQ(ReadTime(), count >= 4) << count;
    EXPECT_EQ(length, count >= 4 ? count : 9 + count);
    EXPECT_EQ(out[0], count >= 4 ? 0x81 : 0x77);
  }
}

TEST_F(Transport, AShortTimestampFailsWithoutAnErrorText) {
  sp.Expect(Timestamp().Answers({1, 2, 3}));
  EXPECT_FALSE(ReadTime());
  EXPECT_EQ(length, 12);
  EXPECT_EQ(logger.OfSeverity(4), std::vector<TLine>{Verbose("Command completed checking success...\n")});
}

TEST_F(Transport, ATimestampIsCheckedByTheLibrarysLength) {
  struct TCase {
    int lie;
    bool good;
    unsigned short length;
  };
  // On failure, the low 16 bits of the false length are returned; on success, byte 5.
  for (const TCase& one : {TCase{12, false, 12}, TCase{13, true, 4}, TCase{70000, true, 4}, TCase{0, false, 0},
                           TCase{-1, false, 65535}, TCase{-70000, false, 61072}}) {
    sp.Expect(Timestamp().Answers({1, 2, 3, 4}).WithLength(one.lie));
    EXPECT_EQ(ReadTime(), one.good) << one.lie;
    EXPECT_EQ(length, one.length) << one.lie;
  }
  sp.Expect(Timestamp().Answers({}).WithLength(13).WithDataLength(200));
  EXPECT_TRUE(ReadTime());
  EXPECT_EQ(length, 200);
}

TEST_F(Transport, ATimestampWithACompletionCodeFails) {
  sp.Expect(Timestamp().Answers({1, 2, 3, 4}).WithCode(0xCB));
  EXPECT_FALSE(ReadTime());
  EXPECT_EQ(length, 13);
  EXPECT_EQ(out, kUntouched);
  sp.Expect(Timestamp().Answers({1, 2, 3, 4}).WithCode(0xCB).WithLength(70000));
  EXPECT_FALSE(ReadTime());
  EXPECT_EQ(length, 256) << "the library hands back no more than its caller's buffer holds";
}

TEST_F(Transport, ALostTimestampLogsNoTranscript) {
  sp.Expect(Timestamp().Lost());
  EXPECT_FALSE(ReadTime());
  EXPECT_EQ(length, 256);
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Debug("Entered get time stamp request")});
}

TEST_F(Transport, TheLengthIsSetBeforeTheTranscriptIsLogged) {
  sp.Expect({Expected().Lost(), Timestamp().Answers({1, 2, 3, 4})});
  const TBytes sent = {1, 32, 58, 0, 98, 4, 0, 0, 0, 7, 52, 86, 120};
  logger.FailAt("Contents of buffer to send (rspBuf):\n" + DumpText(sent, 257));
  EXPECT_THROW(ReadRegister(true), std::runtime_error);
  EXPECT_EQ(length, 256);
  logger.FailAt("Command completed checking success...\n\nThe response length is 4");
  EXPECT_THROW(ReadTime(), std::runtime_error);
  EXPECT_EQ(length, 4);
}

TEST_F(Transport, ASlowAnswerIsWaitedFor) {
  sp.Expect(Timestamp().Answers({1, 2, 3, 4}).After(std::chrono::milliseconds(2)));
  EXPECT_TRUE(ReadTime());
}

}  // namespace
}  // namespace tests
