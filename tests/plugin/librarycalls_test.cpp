// How the collector calls its service-processor library and the C library. Both are replaced in this
// program, which sees arguments that the real library has no use for, and failures that it never has.
#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <new>

#include "host/core/cimnamespace.h"
#include "host/core/hostservices.h"
#include "host/pluginmanager/pluginregistry.h"
#include "jfr/TJFRErrorData.h"
#include "jfr/TNOVRequesttorgareg.h"
#include "nkrovel20/splibrary.h"
#include "plugin/torgaplugin.h"
#include "r8/ipmirequesttorgareg.h"
#include "r8/r8errordata.h"
#include "tests/support/classbuilder.h"
#include "tests/support/recordinglogger.h"

namespace {

struct TSent {
  int capacity;
  bool flag;
  int presetLength;
  std::vector<unsigned char> buffer;  // all 256 bytes
};

// What the replaced library does and has seen.
struct TLibrary {
  std::vector<std::string> calls;
  std::vector<TSent> sent;
  std::function<bool(unsigned char*, int*)> answer;
  int nodes = 2;
  int serviceProcessors = 1;
  bool dotCommands = true;
  bool noInstance = false;
  bool brokenClock = false;
  bool noMemory = false;
} library;

}  // namespace

// The form of new that reports a failure as a null pointer.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return library.noMemory ? nullptr : ::operator new[](size);
}

// The replacement of the C library's conversion.
extern "C" struct tm* gmtime_r(const time_t* seconds, struct tm* result) noexcept {
  if (library.brokenClock) return nullptr;
  *result = {};
  result->tm_year = 70;
  result->tm_mday = 1;
  result->tm_sec = static_cast<int>(*seconds);
  return result;
}

namespace NKROVEL20 {

SPLibrary::SPLibrary() : node_(0) {}
SPLibrary::SPLibrary(int node) : node_(node) {}
SPLibrary::~SPLibrary() = default;

SPLibrary* SPLibrary::GetSplibraryInstance(int node) {
  library.calls.push_back("instance " + std::to_string(node));
  static SPLibrary instance;
  return library.noInstance ? nullptr : &instance;
}
int SPLibrary::GetNumberBMCNode() {
  library.calls.emplace_back("nodes");
  return library.nodes;
}
bool SPLibrary::IsIPMIDriversPresent() {
  library.calls.emplace_back("driver");
  return true;
}
bool SPLibrary::checkSPComm() { return true; }
int SPLibrary::discoverSPs() { return library.serviceProcessors; }
bool SPLibrary::isDotcommand() { return library.dotCommands; }

bool SPLibrary::sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool flag) {
  library.sent.push_back({capacity, flag, *length, std::vector<unsigned char>(buffer, buffer + 256)});
  return library.answer && library.answer(buffer, length);
}

bool SPLibrary::sendDotCommand(dotCmd* command, unsigned char* response, int* responseLength, int spIndex,
                               int bufferSize) {
  library.calls.push_back("dot " + std::to_string(spIndex) + " " + std::to_string(bufferSize) + " " +
                          std::to_string(command->GetIdentifier().size()) + " " +
                          std::to_string(command->GetParameters().size()) + " length " +
                          std::to_string(*responseLength));
  response[0] = 0x5A;
  *responseLength = 1;
  return true;
}

}  // namespace NKROVEL20

namespace torgareg {
namespace {

using namespace NKROVEL20;
using namespace testsupport;

class TLibraryCalls : public ::testing::Test {
 protected:
  TLibraryCalls() {
    library = TLibrary();
    THostServices::SetCoreLogger(&logger);
    LogMessage::setPluginInstance(&provider);
  }
  ~TLibraryCalls() override {
    LogMessage::setPluginInstance(nullptr);
    THostServices::SetCoreLogger(nullptr);
  }
  // Answers with success and no data until told otherwise.
  static bool Succeed(unsigned char* buffer, int* /*length*/) {
    buffer[4] = 0;
    return true;
  }
  static void ExpectArguments(std::size_t requests, int presetLength) {
    ASSERT_EQ(library.sent.size(), requests);
    for (const TSent& sent : library.sent) {
      EXPECT_EQ(sent.capacity, 256);
      EXPECT_TRUE(sent.flag);
      EXPECT_EQ(sent.presetLength, presetLength);
      EXPECT_EQ(sent.buffer[0], 0x01);
      EXPECT_EQ(sent.buffer[1], 0x20);
      for (std::size_t i = 46; i < 256; ++i) EXPECT_EQ(sent.buffer[i], 0) << i;
    }
  }

  TRecordingLogger logger;
  TPluginManagerProvider provider{"", nullptr};
  unsigned char out[14] = {};
  unsigned short length = 0;
};

TEST_F(TLibraryCalls, RegisterRequestsPassBufferLengthCapacityAndFlag) {
  IPMIRequestTorgaReg transport;
  EXPECT_EQ(library.calls, std::vector<std::string>{"instance 0"});
  transport.getData(1, 2, out, &length, true);
  transport.getTimeStamp(out, &length);
  ExpectArguments(2, 256);
}

TEST_F(TLibraryCalls, TheUncalledRequestsPresetZero) {
  TNOVRequestTorgaReg transport;
  EXPECT_EQ(library.calls, std::vector<std::string>{"instance 0"});
  transport.getData(1, 2, out, &length);
  transport.getTimeStamp(out, &length);
  ExpectArguments(2, 0);
}

TEST_F(TLibraryCalls, ALengthThatAFailedExchangeLeavesIsHandedOn) {
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

// Lies that the real library keeps from its callers.
TEST_F(TLibraryCalls, AnswersThatLieAboutTheirLength) {
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

TEST_F(TLibraryCalls, DotCommandsPassServiceProcessorAndThenSize) {
  TNOVRequestTorgaReg transport;
  unsigned char buffer[16] = {};
  library.calls.clear();
  EXPECT_EQ(transport.sendCommand(buffer, 16, 3), 1);
  EXPECT_EQ(buffer[0], 0x5A);
  EXPECT_EQ(library.calls, std::vector<std::string>{"dot 3 16 2 4 length 0"});
}

TEST_F(TLibraryCalls, ATransportIsMadeWithoutALibraryInstance) {
  library.noInstance = true;
  const IPMIRequestTorgaReg transport;
  EXPECT_EQ(library.calls, std::vector<std::string>{"instance 0"});
}

class TStorageAreaCalls : public TLibraryCalls {
 protected:
  // A plugin manager is all that the plugin object needs to come into being.
  class TManager : public TPluginManagerNamespace {
   public:
    explicit TManager(TPluginManagerProvider& handle) : handle_(handle) {}
    TPluginManagerProvider* RegisterPlugin(IPluginCallbacks*) override { return &handle_; }
    boost::shared_ptr<ICIMClass> GetClass(const std::string&, const TPropertyMap&) override { return {}; }
    std::string GetMachineType() const override { return {}; }

   private:
    TPluginManagerProvider& handle_;
  };

  TStorageAreaCalls() {
    THostServices::SetPluginManager(boost::shared_ptr<ICIMNamespace>(new TManager(provider)));
    plugin = new TTORGARegPluginCallbacks();
  }
  ~TStorageAreaCalls() override {
    plugin->PrepareForUnload();
    THostServices::SetPluginManager({});
  }

  TTORGARegPluginCallbacks* plugin;
};

TEST_F(TStorageAreaCalls, AllFourRequestsPassTheSame) {
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

// The library's word is not asked where the buffer says success.
TEST_F(TStorageAreaCalls, ReadAndCloseGoByTheCompletionCodeAlone) {
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

TEST_F(TStorageAreaCalls, AReadWhoseLengthIsBeyondTheBufferCopiesTheChunk) {
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

TEST_F(TStorageAreaCalls, NodeZeroIsAskedFirstAndThenEachNode) {
  plugin->ReadErrFFDC({}, "cpu_err");
  EXPECT_EQ(library.calls, (std::vector<std::string>{"instance 0", "nodes", "driver", "instance 0", "instance 1"}));
}

TEST_F(TStorageAreaCalls, TheEntryIsWrittenBeforeTheLibraryIsAskedFor) {
  logger.FailAt("Enter ReadErrFFDC funtion");
  EXPECT_THROW(plugin->ReadErrFFDC({}, "cpu_err"), std::runtime_error);
  EXPECT_TRUE(library.calls.empty());
}

TEST_F(TStorageAreaCalls, ANodeIsAnnouncedBeforeItsLibraryObjectIsAskedFor) {
  logger.FailAt("The system has2 . Now reading Node0");
  EXPECT_THROW(plugin->ReadErrFFDC({}, "cpu_err"), std::runtime_error);
  EXPECT_EQ(library.calls, (std::vector<std::string>{"instance 0", "nodes", "driver"}));
}

TEST_F(TLibraryCalls, WithoutMemoryForABlockTheServiceProcessorIsSkipped) {
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

TEST_F(TLibraryCalls, WithoutMemoryTheNextServiceProcessorIsStillTried) {
  library.serviceProcessors = 3;
  const auto ns = TNamespace::Create();
  const auto chip = ns->AddClass(TClassBuilder("CHIP").MaxInstances(1));
  TJFRErrorData collector(chip, chip);
  library.noMemory = true;
  EXPECT_TRUE(collector.getData().empty());
  library.noMemory = false;
  EXPECT_EQ(logger.Count(Verbose("Failed to allocate memory to store register data.")), 3U);
}

TEST_F(TLibraryCalls, ATimeThatCannotBeBrokenDownIsReportedTwice) {
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
}  // namespace torgareg
