#include "host/output/planwriter.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/output/externaltool.h"
#include "tests/output/outputfixture.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

using CollectorProfile::EPath;

// A bridge with a register of one address and one of two, a class of register blocks, and capture files, on a server
// with two BMC nodes and two service processors.
class PlanWriter : public TOutputTest {
 protected:
  PlanWriter() {
    plan_.machineType = "6203";
    plan_.server = {2, true, true, true, 2};
    plan_.blocks = 2;
    Add("KROSG_Bridge", EPath::kR8, 2, {"Count", "Log"});
    plan_.classes[0].isBridge = true;
    plan_.classes[0].registers[0].addresses = {0x0ABCDE};
    plan_.classes[0].registers[1].addresses = {0x000001, 0xFFFFFF};
    plan_.classes[0].readsOfInstance = 3;
    Add("KROSG_Block", EPath::kJfr, 1, {"First"});
    plan_.classes[1].registers[0].index = 84;
    Add("KROSG_DCAPFile", EPath::kCapture, 0, {});
  }

  void Add(const std::string& name, EPath path, unsigned instances, const std::vector<std::string>& registers) {
    std::vector<TPropertyDefinition> properties;
    for (const std::string& property : registers) properties.push_back(Property(property, TType::kUint8, true));
    TPlannedClass planned;
    planned.cimClass = Define(name, "", properties);
    planned.path = path;
    planned.turn = ETurn::kPlanned;
    planned.hasWay = true;
    planned.instances = instances;
    for (std::size_t i = 0; i < registers.size(); ++i) planned.registers.emplace_back().property = i;
    plan_.requests.push_back({{TPlannedTurn{plan_.classes.size()}}});
    plan_.classes.push_back(planned);
  }
  std::string Json() const {
    TStringSink sink;
    WritePlanAsJson(plan_, sink);
    return sink.Text();
  }
  std::string Table() const {
    TStringSink sink;
    WritePlanAsTable(plan_, sink, {});
    return sink.Text();
  }

  TPlan plan_;
};

const char* const kDocument =
    R"({"kind":"plan","format_version":2,"machine_type":"6203","classes":[
{"class":"KROSG_Bridge","path":"r8","instances":[{"key":"KROSG_Bridge/node0/instance0","origin":{"path":"r8","node":0,"chip":1,"instance":0},"reads":[{"property":"Count","address":"0x0ABCDE"},{"property":"Log","address":"0x000001"},{"property":"Log","address":"0xFFFFFF"}]},
{"key":"KROSG_Bridge/node0/instance1","origin":{"path":"r8","node":0,"chip":2,"instance":1},"reads":[{"property":"Count","address":"0x0ABCDE"},{"property":"Log","address":"0x000001"},{"property":"Log","address":"0xFFFFFF"}]}]},
{"class":"KROSG_Block","path":"jfr","instances":[{"key":"KROSG_Block/sp0/instance0","origin":{"path":"jfr","service_processor":0,"instance":0},"reads":[{"property":"First","index":84}]},
{"key":"KROSG_Block/sp1/instance0","origin":{"path":"jfr","service_processor":1,"instance":0},"reads":[{"property":"First","index":84}]}]},
{"class":"KROSG_DCAPFile","path":"ffdc","instances":[{"key":"KROSG_DCAPFile/node0/cpu_err","origin":{"path":"ffdc","node":0},"reads":[]},
{"key":"KROSG_DCAPFile/node1/cpu_err","origin":{"path":"ffdc","node":1},"reads":[]},
{"key":"KROSG_DCAPFile/node0/ioh_err","origin":{"path":"ffdc","node":0},"reads":[]},
{"key":"KROSG_DCAPFile/node1/ioh_err","origin":{"path":"ffdc","node":1},"reads":[]},
{"key":"KROSG_DCAPFile/node0/zyn_err","origin":{"path":"ffdc","node":0},"reads":[]},
{"key":"KROSG_DCAPFile/node1/zyn_err","origin":{"path":"ffdc","node":1},"reads":[]}]}
],"dot_commands":[
{"class":"KROSG_Block","service_processor":0},
{"class":"KROSG_Block","service_processor":1}
],"areas":[
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/cpu_err","node":0,"area":"cpu_err"},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node1/cpu_err","node":1,"area":"cpu_err"},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/ioh_err","node":0,"area":"ioh_err"},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node1/ioh_err","node":1,"area":"ioh_err"},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/zyn_err","node":0,"area":"zyn_err"},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node1/zyn_err","node":1,"area":"zyn_err"}
],"total":8}
)";

TEST_F(PlanWriter, JsonListsReadsDotCommandsAndAreas) { EXPECT_EQ(Json(), kDocument); }

TEST_F(PlanWriter, JsonIsValid) {
  TTemporaryFolder folder;
  Add("KROSG_Unserved", EPath::kNone, 0, {});
  plan_.classes[3].turn = ETurn::kIdle;
  const std::string command = std::string(PYTHON) + " " + SOURCE_FOLDER + "/validate_json.py " + SCHEMA + " ";
  const TToolResult result = RunTool(command + folder.Write("plan.json", Json()));
  if (result.exitStatus == 77) GTEST_SKIP() << result.output;
  EXPECT_EQ(result.exitStatus, 0) << result.output;
}

TEST_F(PlanWriter, TableHasALineForEachRead) {
  EXPECT_EQ(Table(), R"(Machine type: 6203

KROSG_Bridge  node0/instance0
  Count  0x0ABCDE
  Log    0x000001
  Log    0xFFFFFF

KROSG_Bridge  node0/instance1
  Count  0x0ABCDE
  Log    0x000001
  Log    0xFFFFFF

KROSG_Block  sp0/instance0
  First  index 84

KROSG_Block  sp1/instance0
  First  index 84

Dot commands
  KROSG_Block  service processor 0
  KROSG_Block  service processor 1

Capture files
  KROSG_DCAPFile  node0/cpu_err
  KROSG_DCAPFile  node1/cpu_err
  KROSG_DCAPFile  node0/ioh_err
  KROSG_DCAPFile  node1/ioh_err
  KROSG_DCAPFile  node0/zyn_err
  KROSG_DCAPFile  node1/zyn_err

total: 6 register reads, 2 dot commands, 6 capture files
)");
}

TEST_F(PlanWriter, TheSecondTurnHasKeysOfItsOwn) {
  plan_.requests = {{{TPlannedTurn{0}}}, {{TPlannedTurn{0, 2}}}};
  plan_.classes[0].instances = 1;
  EXPECT_NE(Json().find(R"("key":"KROSG_Bridge/node0/instance0#2")"), std::string::npos);
  EXPECT_NE(Table().find("KROSG_Bridge  node0/instance0#2\n"), std::string::npos);
}

TEST_F(PlanWriter, LeavesOutWhatTheCollectorDoesNotReach) {
  plan_.requests = {{{TPlannedTurn{2}, TPlannedTurn{0, 1, false}}}};
  plan_.server.bmcNodes = 1;
  EXPECT_EQ(Json().find("KROSG_Bridge"), std::string::npos);
  EXPECT_EQ(Table(),
            "Machine type: 6203\n\nCapture files\n  KROSG_DCAPFile  node0/cpu_err\n  KROSG_DCAPFile  node0/ioh_err\n"
            "  KROSG_DCAPFile  node0/zyn_err\n\ntotal: 0 register reads, 0 dot commands, 3 capture files\n");
}

TEST_F(PlanWriter, SaysWhyAClassHasNoInstances) {
  plan_.requests = {{{TPlannedTurn{0}}}, {{TPlannedTurn{1}}}};
  plan_.classes[0].turn = ETurn::kUnknown;
  plan_.classes[1].turn = ETurn::kIdle;
  plan_.classes[1].whyNotServed = "its machine types are \"4411\"";
  EXPECT_EQ(Table(),
            "Machine type: 6203\n\nKROSG_Bridge\n  what is read of it cannot be told in advance\n\n"
            "KROSG_Block\n  not served: its machine types are \"4411\"\n\n"
            "total: 0 register reads, 0 dot commands, 0 capture files\n");
  EXPECT_EQ(Json(),
            "{\"kind\":\"plan\",\"format_version\":2,\"machine_type\":\"6203\",\"classes\":[\n"
            "{\"class\":\"KROSG_Bridge\",\"path\":\"r8\",\"instances\":[]},\n"
            "{\"class\":\"KROSG_Block\",\"path\":\"jfr\",\"instances\":[]}\n"
            "],\"dot_commands\":[],\"areas\":[],\"total\":0}\n");
}

TEST_F(PlanWriter, WithoutRegistersOnlyBlocksGiveInstances) {
  plan_.classes[0].registers.clear();
  plan_.classes[1].registers.clear();
  EXPECT_EQ(Json().find("KROSG_Bridge/node0"), std::string::npos);
  EXPECT_NE(Json().find("KROSG_Block/sp0/instance0"), std::string::npos);
}

TEST_F(PlanWriter, WithoutTheDriverThereAreNoAreas) {
  plan_.server.ipmiDriver = false;
  EXPECT_NE(Json().find("\"areas\":[],\"total\":8}"), std::string::npos);
}

TEST_F(PlanWriter, WithoutCommunicationThereAreNoDotCommands) {
  plan_.blocks = 0;
  plan_.server.communicates = false;
  EXPECT_NE(Json().find("\"dot_commands\":[],"), std::string::npos);
  EXPECT_NE(Json().find("KROSG_Block/sp1/instance0"), std::string::npos) << "planned all the same";
}

TEST_F(PlanWriter, ABlockClassHasTheLowEightBitsOfTheServiceProcessors) {
  plan_.server.serviceProcessors = 257;
  EXPECT_NE(Json().find("KROSG_Block/sp0/instance0"), std::string::npos);
  EXPECT_EQ(Json().find("KROSG_Block/sp1/instance0"), std::string::npos);
}

}  // namespace
}  // namespace tests
