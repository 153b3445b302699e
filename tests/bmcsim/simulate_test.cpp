#include "host/velhost/verbs.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <numeric>
#include <thread>

#include "host/velhost/simulate/ipmisim.h"
#include "tests/bmcsim/runningsimulator.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kServer = R"(
machine_type = "62'03"
[[bmc_node]]
timestamp = "12 34 56 78"
[[bmc_node.storage_area]]
name = "cpu_err"
data = "0a ff 00"
)";

/// The output of a command.
std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
  std::array<char, 256> part{};
  while (std::fgets(part.data(), part.size(), pipe) != nullptr) output += part.data();
  pclose(pipe);
  return output;
}

/// The printed command that begins with `word`.
std::string LineOf(const std::string& text, const std::string& word) {
  const std::size_t start = text.find("  " + word);
  return start == std::string::npos ? std::string() : text.substr(start, text.find('\n', start) - start);
}

void ExpectError(const TSimulateArguments& arguments, EFailure kind, const std::string& message,
                 const std::string& programs = VELHOST_PROGRAM_DIR) {
  try {
    SimulateCommand(arguments, TInstallation(programs));
    FAIL() << "no error";
  } catch (const THostError& error) {
    EXPECT_EQ(error.Kind(), kind);
    EXPECT_EQ(error.what(), message);
  }
}

class Simulate : public testing::Test {
 protected:
  Simulate() {
    arguments_.file = folder_.Write("server.toml", kServer);
    arguments_.port = FreePort();
  }
  TTemporaryFolder folder_;
  TSimulateArguments arguments_;
};

TEST_F(Simulate, PrintsLinesThatConnect) {
  SKIP_WITHOUT_IPMI_SIM();
  const int serial = FreePort(SOCK_STREAM);
  TRunningSimulator simulator(kServer, 0, serial);
  const std::string port = std::to_string(simulator.Port());
  EXPECT_EQ(simulator.Printed(),
            "BMC node 0 of " + simulator.File() + " answers on 127.0.0.1:" + port +
                " (user ipmiusr, password test).\nConnect with one of:\n"
                "  ipmitool -I lanplus -C 3 -H 127.0.0.1 -p " +
                port +
                " -U ipmiusr -P test mc info\n"
                "  ipmi-raw -D LAN_2_0 -h 127.0.0.1:" +
                port +
                " -u ipmiusr -p test -I 3 -l ADMIN -W opensesspriv 0 6 1\n"
                "  VELHOST_IPMI_PASSWORD=test velhost collect --sp lan:ipmiusr@127.0.0.1:" +
                port +
                " --cipher-suite 3 --schema example --machine-type '62'\\''03'\n"
                "As the BMC of a virtual machine:\n"
                "  qemu-system-x86_64 ... -chardev socket,id=bmc,host=127.0.0.1,port=" +
                std::to_string(serial) +
                ",reconnect=1 -device ipmi-bmc-extern,id=bmc0,chardev=bmc -device isa-ipmi-kcs,bmc=bmc0\n"
                "Press Ctrl-C to stop.\n");
  EXPECT_FALSE(IsFree(serial, SOCK_STREAM));
}

TEST_F(Simulate, AnswersIpmitool) {
  SKIP_WITHOUT_IPMI_SIM();
  if (std::system("command -v ipmitool >/dev/null 2>&1") != 0) GTEST_SKIP() << "ipmitool is not installed";
  TRunningSimulator simulator(kServer);
  std::string command = LineOf(simulator.Printed(), "ipmitool");
  EXPECT_THAT(OutputOf(command), HasSubstr("IPMI Version              : 2.0"));
  command.replace(command.find("mc info"), 7, "raw ");
  EXPECT_EQ(OutputOf(command + "0x3a 0x6f"), " 12 34 56 78\n");
  EXPECT_EQ(OutputOf(command + "0x2e 0x90 0x39 0x30 0x00 0x06 0x63 0x70 0x75 0x5f 0x65 0x72 0x72"),
            " 39 30 00 03 00 00 00\n");
  EXPECT_THAT(OutputOf(command + "0x3a 0x62 0 0 0 0"), HasSubstr("rsp=0xcb"));
}

TEST_F(Simulate, ItsFruNamesTheMachineType) {
  SKIP_WITHOUT_IPMI_SIM();
  if (std::system("command -v ipmitool >/dev/null 2>&1") != 0) GTEST_SKIP() << "ipmitool is not installed";
  TRunningSimulator simulator("machine_type = \"6203\"\n[[bmc_node]]\n");
  EXPECT_THAT(simulator.Printed(), HasSubstr(" --cipher-suite 3 --schema example\n"));
  std::string command = LineOf(simulator.Printed(), "ipmitool");
  command.replace(command.find("mc info"), 7, "fru print 0");
  EXPECT_EQ(OutputOf(command),
            " Product Manufacturer  : velhost\n"
            " Product Name          : Simulated server\n"
            " Product Part Number   : 6203\n");
}

TEST_F(Simulate, AnswersFreeIpmi) {
  SKIP_WITHOUT_IPMI_SIM();
  if (std::system("command -v ipmi-raw >/dev/null 2>&1") != 0) GTEST_SKIP() << "freeipmi-tools is not installed";
  TRunningSimulator simulator(kServer);
  std::string command = LineOf(simulator.Printed(), "ipmi-raw");
  command.resize(command.size() - 5);
  EXPECT_EQ(OutputOf(command + "0 3a 6f"), "rcvd: 6F 00 12 34 56 78 \n");
  EXPECT_EQ(OutputOf(command + "0 2e 90 39 30 00 06 78"), "rcvd: 90 CB 39 30 00 \n");
}

TEST_F(Simulate, SignalsEndItWithoutLeftovers) {
  SKIP_WITHOUT_IPMI_SIM();
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    TRunningSimulator simulator(kServer);
    EXPECT_FALSE(IsFree(simulator.Port()));
    EXPECT_FALSE(simulator.LeftNoFiles());
    EXPECT_EQ(simulator.End(signal), 0);
    EXPECT_TRUE(IsFree(simulator.Port()));
    EXPECT_TRUE(simulator.LeftNoFiles());
  }
}

TEST_F(Simulate, KillingItEndsIpmiSimToo) {
  SKIP_WITHOUT_IPMI_SIM();
  TRunningSimulator simulator(kServer);
  EXPECT_EQ(simulator.End(SIGKILL), -SIGKILL);
  bool free = false;
  for (int i = 0; i < 6'000 && !free; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    free = IsFree(simulator.Port());
  }
  EXPECT_TRUE(free);
}

TEST_F(Simulate, OccupiedPortIsNamed) {
  SKIP_WITHOUT_IPMI_SIM();
  const TBoundPort udp(SOCK_DGRAM);
  arguments_.port = udp.Port();
  ExpectError(arguments_, EFailure::kUnreachable,
              "cannot listen on UDP port " + std::to_string(udp.Port()) +
                  " of 127.0.0.1: Address already in use\nUse --port or --serial-port to choose another");
  const TBoundPort tcp(SOCK_STREAM);
  arguments_.port = FreePort();
  arguments_.serialPort = tcp.Port();
  ExpectError(arguments_, EFailure::kUnreachable,
              "cannot listen on TCP port " + std::to_string(tcp.Port()) +
                  " of 127.0.0.1: Address already in use\nUse --port or --serial-port to choose another");
}

TEST_F(Simulate, MissingIpmiSimNamesItsPackage) {
  const std::string before = std::getenv("PATH");
  setenv("PATH", "/nowhere", 1);
  ExpectError(arguments_, EFailure::kUnreachable,
              "ipmi_sim is not installed; it is in the Debian package openipmi (apt install openipmi)");
  setenv("PATH", before.c_str(), 1);
}

/// Puts a script called ipmi_sim into a folder, and makes that folder the only one on PATH.
class SimulateWithScript : public Simulate {
 protected:
  ~SimulateWithScript() override { setenv("PATH", before_.c_str(), 1); }
  void Script(const std::string& name, const std::string& body) {
    const std::string file = folder_.Write(name, "#!/bin/sh\n" + body);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    setenv("PATH", folder_.Path().c_str(), 1);
  }
  std::string before_ = std::getenv("PATH");
};

TEST_F(SimulateWithScript, IpmiSimInheritsNeitherVariablesNorDescriptors) {
  setenv("VELHOST_IPMI_PASSWORD", "s3cret", 1);
  const int foreign = dup(STDERR_FILENO);  // not closed by execve
  // The shell itself adds PWD, and sometimes _ and SHLVL; one of the descriptors is ls's own, for the folder.
  Script("ipmi_sim", "env | grep -vE '^(PWD|SHLVL|_|OLDPWD)=' | sort; ls /proc/self/fd | tr '\\n' ' '; exit 7\n");
  ExpectError(arguments_, EFailure::kUnreachable,
              "ipmi_sim ended during startup (exit status 7): LC_ALL=C\n"
              "PATH=/usr/sbin:/usr/bin:/sbin:/bin\n0 1 2 3 ");
  close(foreign);
  unsetenv("VELHOST_IPMI_PASSWORD");
}

TEST_F(SimulateWithScript, SignalThatEndedIpmiSimIsNamed) {
  Script("ipmi_sim", "kill -KILL $$\n");
  ExpectError(arguments_, EFailure::kUnreachable,
              "ipmi_sim ended during startup (signal 9, SIGKILL), and gave no reason");
}

TEST_F(SimulateWithScript, ProgramInTheCurrentFolderIsNotRun) {
  Script("ipmi_sim", "echo planted; exit 1\n");
  const auto here = std::filesystem::current_path();
  std::filesystem::current_path(folder_.Path());
  for (const char* const path : {"", ":", ".", "/nowhere::.", "./"}) {
    setenv("PATH", path, 1);
    ExpectError(arguments_, EFailure::kUnreachable,
                "ipmi_sim is not installed; it is in the Debian package openipmi (apt install openipmi)");
  }
  std::filesystem::current_path(here);
}

TEST_F(Simulate, MissingModuleIsNamed) {
  SKIP_WITHOUT_IPMI_SIM();
  ExpectError(arguments_, EFailure::kUnreachable,
              "the module for ipmi_sim is not installed: /nowhere/lib/velhost/modules/velbmcsim.so\n"
              "It is part of the package velhost; \"cmake --build build/release --target velbmcsim\" builds it",
              "/nowhere/bin");
}

TEST_F(Simulate, RefusesWhatIpmiSimCannotDo) {
  arguments_.file = folder_.Write("lost.toml", std::string(kServer) + "[[fault]]\non = \"open\"\nlost = true\n");
  ExpectError(
      arguments_, EFailure::kMalformed,
      arguments_.file +
          ":10:1: error: found lost = true, but ipmi_sim answers every request; expected another fault, such as "
          "completion_code = 0xC3 (timeout)");
}

TEST_F(Simulate, NodeMissingFromTheFileIsAUsageError) {
  arguments_.node = 1;
  ExpectError(arguments_, EFailure::kInvalidArgument,
              arguments_.file + ": there is no BMC node 1; the server has node 0 alone");
}

TEST_F(Simulate, BadServerFileIsReportedWithItsPlace) {
  arguments_.file = folder_.Write("bad.toml", "machine_type = 7\n");
  try {
    SimulateCommand(arguments_, TInstallation(VELHOST_PROGRAM_DIR));
    FAIL() << "no error";
  } catch (const THostError& error) {
    EXPECT_EQ(error.Kind(), EFailure::kMalformed);
    EXPECT_THAT(error.what(), StartsWith(arguments_.file + ":1:"));
  }
}

// Otherwise the pipe's reader would wait for as long as the folder exists.
TEST(PrivateFolder, KeeperHoldsNoDescriptorOfItsParent) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  const TPrivateFolder folder;
  close(ends[1]);
  char byte = 0;
  EXPECT_EQ(read(ends[0], &byte, 1), 0);
  close(ends[0]);
  EXPECT_TRUE(std::filesystem::exists(folder.Path()));
}

TEST(IpmiSimConfiguration, SaysWhatIsServedAndWhere) {
  TIpmiSimSettings settings;
  settings.module = "/m/velbmcsim.so";
  settings.serverFile = "/s f/server.toml";
  settings.node = 1;
  settings.port = 9623;
  settings.serialPort = 9002;
  settings.user = "ipmiusr";
  settings.password = "test";
  EXPECT_EQ(IpmiSimConfiguration(settings), R"(name "velhost"
set_working_mc 0x20
startlan 1
  addr 127.0.0.1 9623
  priv_limit admin
  allowed_auths_callback none md2 md5 straight
  allowed_auths_user none md2 md5 straight
  allowed_auths_operator none md2 md5 straight
  allowed_auths_admin none md2 md5 straight
  guid 76656c686f737473696d756c61746564
endlan
serial 15 127.0.0.1 9002 codec VM
user 2 true "ipmiusr" "test" admin 60 none md2 md5 straight
loadlib "/m/velbmcsim.so" "1 /s f/server.toml"
)");
}

TEST(IpmiSimCommands, GiveFru0TheMachineType) {
  TIpmiSimSettings settings;
  settings.machineType = "6203";
  EXPECT_EQ(IpmiSimCommands(settings),
            "mc_setbmc 0x20\n"
            "mc_add 0x20 0 no-device-sdrs 0x01 1 0 0x9f 0x003039 0x0001\n"
            "mc_add_fru_data 0x20 0 48 data"
            " 0x01 0x00 0x00 0x00 0x01 0x00 0x00 0xFE"
            " 0x01 0x05 0x19"
            " 0xC7 0x76 0x65 0x6C 0x68 0x6F 0x73 0x74"
            " 0xD0 0x53 0x69 0x6D 0x75 0x6C 0x61 0x74 0x65 0x64 0x20 0x73 0x65 0x72 0x76 0x65 0x72"
            " 0xC4 0x36 0x32 0x30 0x33"
            " 0xC0 0xC0 0xC0 0xC0 0xC1 0x00 0x96\n"
            "mc_enable 0x20\n");
}

TEST(FruInventory, HoldsUpTo63BytesOfTheMachineTypeAndNeverAnEndMark) {
  // The field's type and length are at byte 36, after the header, the area's start, the manufacturer and the name.
  const auto lengthIn = [](const std::string& machineType) { return FruInventory(machineType).at(36); };
  EXPECT_EQ(lengthIn(""), 0xC0);
  EXPECT_EQ(lengthIn("7"), 0xC2);
  EXPECT_EQ(lengthIn("62"), 0xC2);
  EXPECT_EQ(lengthIn(std::string(63, 'x')), 0xFF);
  EXPECT_EQ(lengthIn(std::string(64, 'x')), 0xFF);
  for (std::size_t size = 0; size < 70; ++size) {
    const std::vector<std::uint8_t> inventory = FruInventory(std::string(size, 'x'));
    EXPECT_EQ(inventory.size(), 8U + 8U * inventory[9]) << size;
    EXPECT_EQ(std::accumulate(inventory.begin(), inventory.end(), 0) % 256, 0) << size;
  }
}

TEST(IpmiSimConfiguration, RefusesAPathThatItCannotWrite) {
  TIpmiSimSettings settings;
  for (const std::string& path :
       {std::string("/a\"b"), std::string("/a\\b"), std::string("/a\nb"), std::string(801, 'x')}) {
    settings.serverFile = path;
    EXPECT_THROW(IpmiSimConfiguration(settings), THostError) << path;
  }
  settings.serverFile = std::string(800, 'x');
  EXPECT_NO_THROW(IpmiSimConfiguration(settings));
}

}  // namespace
}  // namespace tests
