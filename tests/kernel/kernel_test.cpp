// Runs inside a virtual machine with simulated BMCs: tests the in-band transport through the real kernel
// driver, and the real SMBIOS of a machine that has BMCs. tests/kernel/run.sh starts it.
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "host/bmc/inband/inbandserviceprocessor.h"
#include "host/bmc/sim/simulatedserver.h"
#include "tests/bmc/sharedsuite.h"
#include "tests/bmcsim/servertext.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

TSystemSmbios Smbios() {
  TFileReader reader;
  return ReadSystemSmbios(reader);
}

/// The two BMCs of the machine. Outside the virtual machine, with VELHOST_WRITE_SERVER, this writes the
/// server file that they must simulate.
std::unique_ptr<IServiceProcessor> MakeInband(const TServerFile& server) {
  if (const char* const file = std::getenv("VELHOST_WRITE_SERVER")) {
    std::ofstream(file, std::ios::binary) << ServerText(server);
    return std::make_unique<TSimulatedServer>(server);
  }
  return OpenInband({""}, Smbios());
}

INSTANTIATE_TEST_SUITE_P(Inband, ServiceProcessorSuite, testing::Values(TNamedFactory{"Inband", MakeInband}));

TEST(Rules, AreOn) {
  for (const char* const name : {"protected_symlinks", "protected_regular", "protected_fifos"}) {
    int value = 0;
    std::ifstream(std::string("/proc/sys/fs/") + name) >> value;
    EXPECT_EQ(value, 1) << name;  // otherwise, the tests that depend on them are skipped
  }
}

// Before the driver is loaded.

TEST(NoDriver, SmbiosDeclaresTheBmcAndNamesTheMachine) {
  const TSystemSmbios smbios = Smbios();
  EXPECT_EQ(smbios.status, ESmbiosStatus::kRead);
  EXPECT_EQ(smbios.facts.productName, "Server -[6203AC1]-");
  EXPECT_EQ(smbios.machineType, "6203");
  EXPECT_TRUE(smbios.facts.declaresIpmiDevice);
}

TEST(NoDriver, IsOneNodeWithoutDriver) {
  const auto processor = OpenInband({""}, Smbios());
  EXPECT_EQ(processor->Discover().bmcNodes, 1);
  EXPECT_FALSE(processor->Discover().ipmiDriver);
  ExpectNoAnswer(Send(*processor, Timestamp()));
}

TEST(NoDriver, NamedDeviceCannotBeReached) {
  EXPECT_THAT(MessageOf([] { OpenInband({"/dev/ipmi0"}, Smbios()); }, EFailure::kUnreachable),
              testing::StartsWith("cannot open /dev/ipmi0: No such file or directory\n"));
}

// With the driver.

TEST(Driver, NamedDevicesAreNodesInOrder) {
  const auto processor = OpenInband({"/dev/ipmi1", "/dev/ipmi0"}, Smbios());
  EXPECT_EQ(processor->Discover().bmcNodes, 2);
  ExpectAnswer(Send(*processor, Timestamp()), 0xCB, {});
  ExpectAnswer(Send(*processor, 1, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
}

TEST(Driver, StandardCommandsAlsoWork) {
  const auto processor = OpenInband({"/dev/ipmi0"}, Smbios());
  const TIpmiOutcome outcome = Send(*processor, 0, Request(0x06, 0x01, {}));
  ASSERT_TRUE(outcome.answered);
  EXPECT_EQ(outcome.after.CompletionCode(), 0x00);
  EXPECT_GE(outcome.length, 9 + 11);
}

TEST(Driver, ManyExchangesKeepAnswersAndRequestsTogether) {
  const auto processor = OpenInband({"/dev/ipmi0"}, Smbios());
  for (int i = 0; i < 200 && !HasFailure(); ++i) {
    ExpectAnswer(Send(*processor, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78});
    ExpectAnswer(Send(*processor, Close(2)), 0x00, {0x39, 0x30, 0x00});
  }
}

TEST(Driver, DeviceOfAnotherUserIsDenied) {
  ASSERT_EQ(seteuid(65534), 0);
  const std::string message = MessageOf([] { OpenInband({"/dev/ipmi0"}, TSystemSmbios()); }, EFailure::kDenied);
  TFileReader reader;
  const TSystemSmbios smbios = ReadSystemSmbios(reader);
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(message,
            "cannot open /dev/ipmi0: Permission denied\nRun velhost as root, or give this user read and write access "
            "to the device");
  EXPECT_EQ(smbios.status, ESmbiosStatus::kDenied);
  EXPECT_EQ(smbios.machineType, "6203");
}

}  // namespace
}  // namespace tests
