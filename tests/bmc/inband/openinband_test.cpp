#include "host/base/hosterror.h"
#include "host/bmc/inband/inbandserviceprocessor.h"
#include "tests/bmc/inband/scripteddriver.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using namespace tests;
using testing::ElementsAre;

TSystemSmbios Smbios(ESmbiosStatus status, bool declares) {
  TSystemSmbios smbios;
  smbios.status = status;
  smbios.facts.declaresIpmiDevice = declares;
  return smbios;
}

const TSystemSmbios kNoBmc = Smbios(ESmbiosStatus::kRead, false);
const TSystemSmbios kDeclared = Smbios(ESmbiosStatus::kRead, true);

class InbandOpening : public testing::Test {
 protected:
  InbandOpening() : driver_(std::make_shared<TScriptedDriver>()) {}
  std::unique_ptr<IServiceProcessor> Open(const std::vector<std::string>& devices, const TSystemSmbios& smbios) {
    return OpenInband(devices, smbios, driver_);
  }
  /// The node's descriptor in the driver.
  int DescriptorOf(IServiceProcessor& processor, int node) {
    Send(processor, node, Timestamp());
    return driver_->Sent().back().descriptor;
  }
  void ExpectError(const std::vector<std::string>& devices, const TSystemSmbios& smbios, EFailure kind,
                   const std::string& message) {
    try {
      Open(devices, smbios);
      FAIL() << "opened";
    } catch (const THostError& error) {
      EXPECT_EQ(error.Kind(), kind);
      EXPECT_EQ(error.what(), message);
    }
  }
  std::shared_ptr<TScriptedDriver> driver_;
};

TEST_F(InbandOpening, DiscoveryOpensNothing) {
  driver_->AddDevice("/dev/ipmi0").AddDevice("/dev/ipmi1").Refuse("/dev/ipmi0", EACCES);
  TDiscovery found = DiscoverInband({""}, kNoBmc, driver_);
  EXPECT_EQ(found.bmcNodes, 2);
  EXPECT_TRUE(found.ipmiDriver);
  EXPECT_FALSE(found.dotCommands);
  found = DiscoverInband({"/dev/ipmi7"}, kNoBmc, driver_);
  EXPECT_EQ(found.bmcNodes, 1) << "whether it exists is found out when it is opened";
}

TEST_F(InbandOpening, DiscoveryFindsADeclaredNodeWithoutADriver) {
  TDiscovery found = DiscoverInband({""}, kDeclared, driver_);
  EXPECT_EQ(found.bmcNodes, 1);
  EXPECT_FALSE(found.ipmiDriver);
  found = DiscoverInband({""}, kNoBmc, driver_);
  EXPECT_EQ(found.bmcNodes, 0);
  EXPECT_FALSE(found.ipmiDriver);
}

TEST_F(InbandOpening, EveryDeviceIsANodeInOrder) {
  driver_->AddDevice("/dev/ipmi0").AddDevice("/dev/ipmi1");
  const auto processor = Open({""}, kNoBmc);
  EXPECT_EQ(processor->Discover().bmcNodes, 2);
  EXPECT_TRUE(processor->Discover().ipmiDriver);
  EXPECT_EQ(DescriptorOf(*processor, 0), 100);
  EXPECT_EQ(DescriptorOf(*processor, 1), 101);
}

TEST_F(InbandOpening, NamedDevicesAreNodesInTheirOrder) {
  driver_->AddDevice("/dev/ipmi0").AddDevice("/dev/ipmi1").AddDevice("/dev/ipmi2");
  const auto processor = Open({"/dev/ipmi2", "/dev/ipmi0"}, kNoBmc);
  EXPECT_EQ(processor->Discover().bmcNodes, 2);
  EXPECT_EQ(DescriptorOf(*processor, 0), 102);
  EXPECT_EQ(DescriptorOf(*processor, 1), 100);
}

TEST_F(InbandOpening, DeclaredDeviceWithoutDriverIsOneNodeThatNeverAnswers) {
  const auto processor = Open({""}, kDeclared);
  EXPECT_EQ(processor->Discover().bmcNodes, 1);
  EXPECT_FALSE(processor->Discover().ipmiDriver);
  ExpectNoAnswer(Send(*processor, Timestamp()));
}

TEST_F(InbandOpening, DeclarationAddsNoNodeToDevices) {
  driver_->AddDevice("/dev/ipmi0");
  EXPECT_EQ(Open({""}, kDeclared)->Discover().bmcNodes, 1);
}

constexpr const char* kAdvice =
    "If this server has a BMC, load its driver (modprobe ipmi_si; modprobe ipmi_devintf); "
    "otherwise choose another service processor, such as --sp lan:HOST";

TEST_F(InbandOpening, NothingAtAllCannotBeReached) {
  ExpectError({""}, kNoBmc, EFailure::kUnreachable,
              std::string("there is no IPMI device /dev/ipmi*, and SMBIOS declares none\n") + kAdvice);
}

TEST_F(InbandOpening, NothingAtAllSaysWhatIsKnownAboutSmbios) {
  ExpectError({""}, Smbios(ESmbiosStatus::kAbsent, false), EFailure::kUnreachable,
              std::string("there is no IPMI device /dev/ipmi*, and this machine has no SMBIOS that could declare "
                          "one\n") +
                  kAdvice);
  ExpectError({""}, Smbios(ESmbiosStatus::kDenied, false), EFailure::kUnreachable,
              std::string("there is no IPMI device /dev/ipmi*, and only root can read whether SMBIOS declares "
                          "one\n") +
                  kAdvice);
}

TEST_F(InbandOpening, RefusedDeviceIsDenied) {
  driver_->AddDevice("/dev/ipmi0").AddDevice("/dev/ipmi1").Refuse("/dev/ipmi1", EACCES);
  ExpectError({""}, kNoBmc, EFailure::kDenied,
              "cannot open /dev/ipmi1: Permission denied\nRun velhost as root, or give this user read and write access "
              "to the device");
}

TEST_F(InbandOpening, MissingNamedDeviceCannotBeReached) {
  driver_->Refuse("/dev/ipmi7", ENOENT);
  ExpectError({"/dev/ipmi7"}, kDeclared, EFailure::kUnreachable,
              std::string("cannot open /dev/ipmi7: No such file or directory\n") + kAdvice);
}

TEST(InbandSpec, NamesOneDeviceOrAll) {
  EXPECT_EQ(ParseInbandSpec("inband"), "");
  EXPECT_EQ(ParseInbandSpec("inband:/dev/ipmi0"), "/dev/ipmi0");
  EXPECT_EQ(ParseInbandSpec("inband:/dev/ipmi12"), "/dev/ipmi12");
}

TEST(InbandSpec, AnythingElseIsAUsageError) {
  for (const char* spec :
       {"inband:", "inband:/dev/ipmi", "inband:/dev/ipmix", "inband:ipmi0", "inband:/dev/null", "inband:/dev/ipmi0/..",
        "inband:/dev/ipmi-1", "inband:/dev/ipmi99999999999999999999", "in"}) {
    try {
      ParseInbandSpec(spec);
      ADD_FAILURE() << spec;
    } catch (const THostError& error) {
      EXPECT_EQ(error.Kind(), EFailure::kInvalidArgument);
      EXPECT_EQ(error.what(),
                std::string("'") + spec + "' is not an IPMI device; expected inband or inband:/dev/ipmiN");
    }
  }
}

TEST(IpmiDevices, AreInNumericalOrder) {
  EXPECT_THAT(IpmiDevicesAmong({"ipmi10", "null", "ipmi9", "ipmi", "ipmi0", "ipmidev", "ipmi1x", "xipmi2"}),
              ElementsAre("/dev/ipmi0", "/dev/ipmi9", "/dev/ipmi10"));
}

}  // namespace
}  // namespace tests
