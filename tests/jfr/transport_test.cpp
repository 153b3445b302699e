// Dot commands, discovery, and the two IPMI requests that are not sent by any collector.
#include <gtest/gtest.h>

#include "jfr/TNOVRequesttorgareg.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

const char* const kUnable = "Unable to communicate with system management hardware. Could not collect register data.";

class DotTransport : public TPartTest {
 protected:
  DotTransport() {
    sp.takesDotCommands = true;
    sp.serviceProcessors = 2;
  }
  unsigned char InstancesOf(int discovered) {
    sp.serviceProcessors = discovered;
    return TNOVRequestTorgaReg().GetSPInstances();
  }
};

TEST_F(DotTransport, WithoutDotCommandsNothingElseIsQueried) {
  sp.takesDotCommands = false;
  EXPECT_EQ(TNOVRequestTorgaReg().GetSPInstances(), 0);
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Debug("TNOVRequestTorgaReg()::Is not Dotcommand.")});
  EXPECT_EQ(sp.Discoveries(), 1);
}

TEST_F(DotTransport, AFailedCheckEndsTheDiscovery) {
  sp.communicates = false;
  EXPECT_EQ(TNOVRequestTorgaReg().GetSPInstances(), 0);
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("TNOVRequestTorgaReg()::Is Dotcommand."),
                                                Debug("TNOVRequestTorgaReg()::SPComm check failed.")}));
  EXPECT_EQ(sp.Discoveries(), 2);
}

TEST_F(DotTransport, TheCountIsNotLogged) {
  EXPECT_EQ(TNOVRequestTorgaReg().GetSPInstances(), 2);
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Debug("TNOVRequestTorgaReg()::Is Dotcommand.")});
  EXPECT_EQ(sp.Discoveries(), 3);
}

TEST_F(DotTransport, OnlyEightBitsOfTheCountAreKept) {
  EXPECT_EQ(InstancesOf(0), 0);
  EXPECT_EQ(InstancesOf(255), 255);
  EXPECT_EQ(InstancesOf(256), 0);
  EXPECT_EQ(InstancesOf(300), 44);
  EXPECT_EQ(InstancesOf(-1), 255);
}

TEST_F(DotTransport, TheCommandCarriesTheBufferSize) {
  TNOVRequestTorgaReg transport;
  TBytes buffer(0x12345);
  sp.Expect(Dot(0, {0x02, 0x0E, 0x06, 0x00, 0x00, 0x00, 0x10}));
  transport.sendCommand(buffer.data(), 4096, 0);
  sp.Expect(Dot(1, {0x02, 0x0E, 0x06, 0x00, 0x00, 0xBC, 0x0A}));
  transport.sendCommand(buffer.data(), 0x0ABC, 1);
  sp.Expect(Dot(7, {0x02, 0x0E, 0x06, 0x00, 0x00, 0x45, 0x23}));
  transport.sendCommand(buffer.data(), 0x12345, 7);
}

TEST_F(DotTransport, TheResponseLengthIsReturned) {
  TNOVRequestTorgaReg transport;
  TBytes buffer(8, 0x77);
  sp.Expect(Dot(0, {0x02, 0x0E, 0x06, 0x00, 0x00, 0x08, 0x00}).Returns({1, 2, 3}));
  logger.Clear();
  EXPECT_EQ(transport.sendCommand(buffer.data(), 8, 0), 3);
  EXPECT_EQ(buffer, (TBytes{1, 2, 3, 0x77, 0x77, 0x77, 0x77, 0x77}));
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Verbose("sendCommand CmdStatus return 1with a returnDataLen of 3")});
}

TEST_F(DotTransport, AFailureIsLoggedAndTheLengthStillReturned) {
  TNOVRequestTorgaReg transport;
  TBytes buffer(4096);
  logger.Clear();
  sp.Expect(DotBlock(0).Lost().WithLength(16));
  EXPECT_EQ(transport.sendCommand(buffer.data(), 4096, 0), 16);
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{Verbose("sendCommand CmdStatus return 0with a returnDataLen of 16"), Debug(kUnable)}));
  sp.Expect(DotBlock(0).Lost());
  EXPECT_EQ(transport.sendCommand(buffer.data(), 4096, 0), 0);
  EXPECT_EQ(logger.Lines()[2], Verbose("sendCommand CmdStatus return 0with a returnDataLen of 0"));
}

TEST_F(DotTransport, LengthsAreReturnedUnchanged) {
  TNOVRequestTorgaReg transport;
  TBytes buffer(4096);
  for (const int lie : {0, 1, 4096, 4097, 65536, 70000, -1}) {
    logger.Clear();
    sp.Expect(DotBlock(0).WithLength(lie));
    EXPECT_EQ(transport.sendCommand(buffer.data(), 4096, 0), lie);
    EXPECT_EQ(logger.Lines().front().message,
              "sendCommand CmdStatus return 1with a returnDataLen of " + std::to_string(lie));
  }
}

TEST_F(DotTransport, WithoutDotCommandsNothingIsSent) {
  TNOVRequestTorgaReg transport;
  logger.Clear();
  sp.takesDotCommands = false;
  unsigned char byte = 0;
  EXPECT_EQ(transport.sendCommand(&byte, 1, 0), 0);
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Debug(kUnable)});
}

class UncalledRequests : public TPartTest {
 protected:
  UncalledRequests() { logger.Clear(); }
  bool ReadRegister() { return transport.getData(7, 0x01ABCDEF, value.data(), &length); }
  bool ReadTime() { return transport.getTimeStamp(value.data(), &length); }
  // Byte i of the data is i + 1.
  static TBytes Counting(std::size_t count) {
    TBytes bytes;
    for (std::size_t i = 1; i <= count; ++i) bytes.push_back(static_cast<std::uint8_t>(i));
    return bytes;
  }
  static TStep RegisterStep() {
    return Ipmi(0, {0x01, 0x20, 0x3A, 0x00, 0x62, 0x04, 0x00, 0x00, 0x00, 0x07, 0xAB, 0xCD, 0xEF});
  }
  static TStep TimeStep() { return Ipmi(0, {0x01, 0x20, 0x3A, 0x00, 0x6F}); }

  TNOVRequestTorgaReg transport;
  TBytes value = TBytes(9, 0x77);
  unsigned short length = 5;
};

TEST_F(UncalledRequests, RegisterAnswersOfEveryLength) {
  for (std::size_t count = 0; count <= 30; ++count) {
    value.assign(9, 0x77);
    logger.Clear();
    sp.Expect(RegisterStep().Answers(Counting(count)));
    // A response of 22 bytes is too short; 23 are enough.
    EXPECT_EQ(ReadRegister(), 9 + count >= 23);
    EXPECT_EQ(length, count >= 14 ? count : 9 + count);
    EXPECT_EQ(value, count >= 14 ? (TBytes{7, 8, 9, 10, 11, 12, 13, 14, 0x77}) : TBytes(9, 0x77));
    EXPECT_EQ(logger.Lines(),
              (std::vector<TLine>{Debug("Entered torgareg request."), Verbose("command completed checking success...\n"
                                                                              "\nThe response length is " +
                                                                              std::to_string(9 + count))}));
  }
}

TEST_F(UncalledRequests, TimestampAnswersOfEveryLength) {
  for (std::size_t count = 0; count <= 30; ++count) {
    value.assign(9, 0x77);
    logger.Clear();
    sp.Expect(TimeStep().Answers(Counting(count)));
    const bool good = count >= 4;
    EXPECT_EQ(ReadTime(), good);
    EXPECT_EQ(length, good ? count : 9 + count);
    EXPECT_EQ(TBytes(value.begin(), value.begin() + 5), good ? (TBytes{1, 2, 3, 4, 0x77}) : TBytes(5, 0x77));
    const std::string tail = good ? "\nThe response length is " + std::to_string(count) : "";
    EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Entered get time stamp request"),
                                                  Verbose("Command completed checking success...\n" + tail)}));
  }
}

TEST_F(UncalledRequests, TheLengthVariableStartsAtZero) {
  sp.Expect({RegisterStep().Lost(), TimeStep().Lost()});
  EXPECT_FALSE(ReadRegister());
  EXPECT_EQ(length, 0);
  length = 5;
  EXPECT_FALSE(ReadTime());
  EXPECT_EQ(length, 0);
  EXPECT_EQ(logger.OfSeverity(4).size(), 0U) << "no answer, no transcript";
}

TEST_F(UncalledRequests, CompletionCodesFail) {
  sp.Expect({RegisterStep().Answers(Counting(14)).WithCode(0xC1), TimeStep().Answers(Counting(4)).WithCode(1)});
  EXPECT_FALSE(ReadRegister());
  EXPECT_EQ(length, 23);
  EXPECT_FALSE(ReadTime());
  EXPECT_EQ(length, 13);
  EXPECT_EQ(value, TBytes(9, 0x77));
}

TEST_F(UncalledRequests, TheLengthIsSetBeforeTheTranscriptIsLogged) {
  sp.Expect({RegisterStep().Answers(Counting(14)), TimeStep().Answers(Counting(4))});
  logger.FailAt("command completed checking success...\n\nThe response length is 23");
  EXPECT_THROW(ReadRegister(), std::runtime_error);
  EXPECT_EQ(length, 14);
  logger.FailAt("Command completed checking success...\n\nThe response length is 4");
  EXPECT_THROW(ReadTime(), std::runtime_error);
  EXPECT_EQ(length, 4);
}

TEST_F(UncalledRequests, LengthsThatLie) {
  struct TCase {
    int lie;
    bool good;
    unsigned short length;
  };
  for (const TCase& one :
       {TCase{22, false, 22}, TCase{23, true, 14}, TCase{70000, true, 14}, TCase{-1, false, 65535}}) {
    sp.Expect(RegisterStep().Answers(Counting(14)).WithLength(one.lie));
    EXPECT_EQ(ReadRegister(), one.good);
    EXPECT_EQ(length, one.length);
  }
  for (const TCase& one : {TCase{12, false, 12}, TCase{13, true, 4}, TCase{-65524, false, 12}}) {
    sp.Expect(TimeStep().Answers(Counting(4)).WithLength(one.lie));
    EXPECT_EQ(ReadTime(), one.good);
    EXPECT_EQ(length, one.length);
  }
}

}  // namespace
}  // namespace tests
