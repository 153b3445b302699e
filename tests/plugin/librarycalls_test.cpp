// How the collector calls its service-processor library and the C library. This program replaces both, so
// that it can see arguments that the real library ignores, and cause failures that it never reports.
#include <gtest/gtest.h>

#include "host/model/cimnamespace.h"
#include "jfr/TJFRErrorData.h"
#include "jfr/TNOVRequesttorgareg.h"
#include "r8/ipmirequesttorgareg.h"
#include "r8/r8errordata.h"
#include "tests/plugin/librarytest.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

class LibraryCalls : public TLibraryTest {};
class StorageAreaCalls : public TPluginLibraryTest {};

TEST_F(LibraryCalls, RegisterRequestsPassBufferLengthCapacityAndFlag) {
  IPMIRequestTorgaReg transport;
  EXPECT_EQ(library.calls, std::vector<std::string>{"instance 0"});
  transport.getData(1, 2, out, &length, true);
  transport.getTimeStamp(out, &length);
  ExpectArguments(2, 256);
}

TEST_F(LibraryCalls, TheUncalledRequestsPresetZero) {
  TNOVRequestTorgaReg transport;
  EXPECT_EQ(library.calls, (std::vector<std::string>{"instance 0", "takes dot commands", "check", "discover"}));
  transport.getData(1, 2, out, &length);
  transport.getTimeStamp(out, &length);
  ExpectArguments(2, 0);
}

TEST_F(LibraryCalls, TheLengthFromAFailedExchangeIsReturned) {
  IPMIRequestTorgaReg registers;
  TNOVRequestTorgaReg dots;
  for (const auto& [left, handedOn] :
       std::vector<std::pair<int, unsigned short>>{{77, 77}, {70000, 4464}, {-1, 65535}}) {
    library.answer = [left = left](unsigned char*, int* responseLength) {
      *responseLength = left;
      return false;
    };
    EXPECT_FALSE(registers.getData(1, 2, out, &length, false));
    EXPECT_EQ(length, handedOn);
    EXPECT_FALSE(registers.getTimeStamp(out, &length));
    EXPECT_EQ(length, handedOn);
    EXPECT_FALSE(dots.getData(1, 2, out, &length));
    EXPECT_EQ(length, handedOn);
    EXPECT_FALSE(dots.getTimeStamp(out, &length));
    EXPECT_EQ(length, handedOn);
  }
}

// False lengths, which the real library never lets through.
TEST_F(LibraryCalls, AnswersThatLieAboutTheirLength) {
  IPMIRequestTorgaReg registers;
  library.answer = [](unsigned char* buffer, int* responseLength) {
    buffer[4] = 0;
    buffer[5] = 255;
    *responseLength = 70000;
    return true;
  };
  for (const bool raw : {true, false}) {
    EXPECT_TRUE(registers.getData(1, 2, out, &length, raw));
    EXPECT_EQ(length, 255);
  }
  EXPECT_TRUE(registers.getTimeStamp(out, &length));
  EXPECT_EQ(length, 255);
  library.answer = [](unsigned char* buffer, int* responseLength) {
    buffer[4] = 0xCB;
    buffer[5] = 200;
    *responseLength = 70000;
    return true;
  };
  EXPECT_FALSE(registers.getData(1, 2, out, &length, true));
  EXPECT_EQ(length, 200);
  EXPECT_FALSE(registers.getTimeStamp(out, &length));
  EXPECT_EQ(length, 4464) << "the low 16 bits";
  TNOVRequestTorgaReg dots;
  EXPECT_FALSE(dots.getData(1, 2, out, &length));
  EXPECT_EQ(length, 4464);
}

TEST_F(LibraryCalls, DiscoveryEndsWithTheFirstNo) {
  library.communicates = false;
  EXPECT_EQ(TNOVRequestTorgaReg().GetSPInstances(), 0);
  EXPECT_EQ(library.calls, (std::vector<std::string>{"instance 0", "takes dot commands", "check"}));
  library.calls.clear();
  library.dotCommands = false;
  EXPECT_EQ(TNOVRequestTorgaReg().GetSPInstances(), 0);
  EXPECT_EQ(library.calls, (std::vector<std::string>{"instance 0", "takes dot commands"}));
}

TEST_F(LibraryCalls, DotCommandsPassServiceProcessorAndThenSize) {
  TNOVRequestTorgaReg transport;
  unsigned char buffer[16] = {};
  library.calls.clear();
  EXPECT_EQ(transport.sendCommand(buffer, 16, 3), 1);
  EXPECT_EQ(buffer[0], 0x5A);
  EXPECT_EQ(library.calls,
            (std::vector<std::string>{"command made", "takes dot commands", "dot 3 16 2 4 length 0", "command gone"}));
}

TEST_F(LibraryCalls, TheDotCommandIsBuiltBeforeDotCommandSupportIsChecked) {
  TNOVRequestTorgaReg transport;
  unsigned char buffer[16] = {};
  library.dotCommands = false;
  library.calls.clear();
  EXPECT_EQ(transport.sendCommand(buffer, 16, 3), 0);
  EXPECT_EQ(library.calls, (std::vector<std::string>{"command made", "takes dot commands", "command gone"}));
}

TEST_F(LibraryCalls, ATransportCanBeCreatedWithoutALibraryInstance) {
  library.noInstance = true;
  const IPMIRequestTorgaReg transport;
  EXPECT_EQ(library.calls, std::vector<std::string>{"instance 0"});
}

TEST_F(StorageAreaCalls, AllFourRequestsPassTheSameArguments) {
  SPLibrary* const node = SPLibrary::GetSplibraryInstance(0);
  unsigned char handle[4] = {1, 2, 3, 4};
  int size = 0;
  library.answer = &Succeed;
  EXPECT_TRUE(plugin->OpenStorageArea(handle, "cpu_err", node));
  EXPECT_TRUE(plugin->QueryStorageAreaSize(size, "cpu_err", node));
  EXPECT_EQ(plugin->ReadStorageArea(10, handle, out, node), 10);
  plugin->CloseStorageArea(handle, node);
  ExpectArguments(4, 256);
}

TEST_F(StorageAreaCalls, EveryChunkIsSentWithTheWholeBuffersLength) {
  unsigned char handle[4] = {1, 0, 0, 0};
  unsigned char chunks[25] = {};
  library.answer = &Succeed;
  EXPECT_EQ(plugin->ReadStorageArea(25, handle, chunks, SPLibrary::GetSplibraryInstance(0)), 25);
  ExpectArguments(3, 256);
}

// The library's return value is ignored if the buffer indicates success.
TEST_F(StorageAreaCalls, ReadAndCloseCheckOnlyTheCompletionCode) {
  library.answer = [](unsigned char* buffer, int* responseLength) {
    buffer[4] = 0;
    buffer[14] = 0x99;
    *responseLength = 6;
    return false;
  };
  unsigned char handle[4] = {};
  SPLibrary* const node = SPLibrary::GetSplibraryInstance(0);
  EXPECT_EQ(plugin->ReadStorageArea(10, handle, out, node), 10);
  EXPECT_EQ(out[0], 0x99);
  plugin->CloseStorageArea(handle, node);
  EXPECT_EQ(logger.Count(Debug("close file successfully")), 1U);
  int size = 5;
  EXPECT_FALSE(plugin->OpenStorageArea(handle, "cpu_err", node)) << "while these two want both";
  EXPECT_FALSE(plugin->QueryStorageAreaSize(size, "cpu_err", node));
}

TEST_F(StorageAreaCalls, AReadWhoseLengthIsBeyondTheBufferCopiesTheChunk) {
  library.answer = [](unsigned char* buffer, int* responseLength) {
    buffer[4] = 0;
    for (std::size_t i = 14; i < 256; ++i) buffer[i] = 0x99;
    *responseLength = 70000;
    return true;
  };
  unsigned char handle[4] = {};
  EXPECT_EQ(plugin->ReadStorageArea(10, handle, out, SPLibrary::GetSplibraryInstance(0)), 10);
  EXPECT_EQ(std::vector<unsigned char>(out, out + 14),
            (std::vector<unsigned char>{0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0, 0, 0, 0}));
}

TEST_F(StorageAreaCalls, NodeZeroIsQueriedFirstAndThenEachNode) {
  plugin->ReadErrFFDC({}, "cpu_err");
  EXPECT_EQ(library.calls, (std::vector<std::string>{"instance 0", "nodes", "driver", "instance 0", "instance 1"}));
}

TEST_F(StorageAreaCalls, TheEntryIsLoggedBeforeTheLibraryIsFetched) {
  logger.FailAt("Enter ReadErrFFDC funtion");
  EXPECT_THROW(plugin->ReadErrFFDC({}, "cpu_err"), std::runtime_error);
  EXPECT_TRUE(library.calls.empty());
}

TEST_F(StorageAreaCalls, ANodeIsLoggedBeforeItsLibraryObjectIsFetched) {
  logger.FailAt("The system has2 . Now reading Node0");
  EXPECT_THROW(plugin->ReadErrFFDC({}, "cpu_err"), std::runtime_error);
  EXPECT_EQ(library.calls, (std::vector<std::string>{"instance 0", "nodes", "driver"}));
}

TEST_F(LibraryCalls, WithoutMemoryForABlockTheServiceProcessorIsSkipped) {
  const auto ns = TNamespace::Create();
  const auto chip = ns->AddClass(TClassBuilder("CHIP").MaxInstances(1));
  TJFRErrorData collector(chip, chip);
  logger.Clear();
  library.noMemory = true;
  EXPECT_TRUE(collector.getData().empty());
  library.noMemory = false;
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{Debug("Class supports 1 instances on this machine"), Debug("fSPInstances = 1."),
                                Debug("Unable to retrieve engineering information."),
                                Verbose("Failed to allocate memory to store register data.")}));
}

TEST_F(LibraryCalls, WithoutMemoryTheNextServiceProcessorIsStillTried) {
  library.serviceProcessors = 3;
  const auto ns = TNamespace::Create();
  const auto chip = ns->AddClass(TClassBuilder("CHIP").MaxInstances(1));
  TJFRErrorData collector(chip, chip);
  library.noMemory = true;
  EXPECT_TRUE(collector.getData().empty());
  library.noMemory = false;
  EXPECT_EQ(logger.Count(Verbose("Failed to allocate memory to store register data.")), 3U);
}

TEST_F(LibraryCalls, ATimeThatCannotBeBrokenDownIsReportedTwice) {
  library.answer = [](unsigned char* buffer, int* responseLength) {
    buffer[4] = 0;
    buffer[5] = 4;
    buffer[11] = 0x56;
    buffer[12] = 0x78;
    *responseLength = 13;
    return true;
  };
  library.brokenClock = true;
  R8ErrorData collector((boost::shared_ptr<ICIMClass>()));
  EXPECT_TRUE(collector.getTimeStampValue().IsNull());
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{
                Debug("Entered get time stamp request"),
                Verbose("Command completed checking success...\n\nThe response length is 4"),
                Status("Unable to determine the timestamp associated with the collected register data."),
                Debug("TimeStamp Size and Value4\nAn invalid date time was detected with a raw time value of 22136")}));
}

}  // namespace
}  // namespace tests
