// What JSON says of the meaning of registers, and of what is wrong.
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/output/foundserver.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using nlohmann::json;

class JsonFindings : public TFoundServer {
 protected:
  json Result() { return json::parse(Written(EOutputForm::kJson, document_)); }
};

TEST_F(JsonFindings, RegistersHaveRoleUnitNumberingAndFields) {
  const json registers = Result()["instances"][0]["registers"];
  EXPECT_EQ(registers["ErrorStatus"].dump(),
            R"({"address":"0x2D0100","fields":[{"bits":"16","name":"Unexpected completion","value":1},)"
            R"({"bits":"18","name":"Malformed TLP","value":1},{"bits":"20","name":"Unsupported request","value":1}],)"
            R"("role":"errors","value":"0x00150000","width":32})");
  EXPECT_EQ(registers["ErrorSeverity"]["fields"].dump(),
            R"([{"bits":"18","name":null,"value":1},{"bits":"20","name":null,"value":1}])");
  EXPECT_EQ(registers["ReplayCount"].dump(),
            R"({"address":"0x2D0130","fields":[],"role":"counter","unit":"packets","value":"0x00000011","width":32})");
  EXPECT_EQ(registers["LinkStatus"].dump(),
            R"({"address":"0x2D0138","fields":[{"bits":"28:31","name":"Speed","text":"2.5 GT/s","value":1},)"
            R"({"bits":"22:27","name":"Lanes","value":4}],"numbering":"msb0","value":"0x00000041","width":32})");
}

TEST_F(JsonFindings, WideFieldsAreHexText) {
  EXPECT_EQ(Result()["instances"][0]["registers"]["HeaderLog"]["fields"].dump(),
            R"([{"bits":"15:0","name":"Requester","value":4},)"
            R"({"bits":"63:24","name":"Rest","value":"0x0000004A00000104"}])");
}

TEST_F(JsonFindings, AZeroWithATextIsAField) {
  EXPECT_EQ(Result()["instances"][1]["registers"]["LinkStatus"]["fields"].dump(),
            R"([{"bits":"28:31","name":"Speed","text":"no link","value":0}])");
}

TEST_F(JsonFindings, FindingsComeFromTheWorst) {
  const json findings = Result()["findings"];
  ASSERT_EQ(findings.size(), 6U);
  EXPECT_EQ(findings[0].dump(),
            R"({"bits":"18","class":"KROSG_VO_PCIIOBRIDGE_StatisticData",)"
            R"("evidence":{"HeaderLog":"0x4A00000104000004"},"first":true,)"
            R"("key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance0","known":false,"masked":false,)"
            R"("name":"Malformed TLP","origin":{"chip":1,"instance":0,"node":0,"path":"r8"},"register":"ErrorStatus",)"
            R"("register_value":"0x00150000","severity":"fatal","unknown":[],"value":1})");
  EXPECT_EQ(findings[1]["name"], "Unexpected completion");
  EXPECT_EQ(findings[1]["severity"], "error");
  EXPECT_EQ(findings[1]["first"], false);
  EXPECT_EQ(findings[1]["evidence"], json::object());
  EXPECT_EQ(findings[3]["name"], "Receiver error");
  EXPECT_EQ(findings[3]["severity"], "corrected");
  EXPECT_EQ(findings[3]["evidence"].dump(), R"({"ReplayCount":"0x00000011"})");
  EXPECT_EQ(findings[4]["name"], nullptr);
  EXPECT_EQ(findings[4]["bits"], "7");
  EXPECT_EQ(findings[5]["name"], "Unsupported request");
  EXPECT_EQ(findings[5]["masked"], true);
  EXPECT_EQ(findings[5]["severity"], "fatal");
}

TEST_F(JsonFindings, SayWhatTheyWereJudgedWithout) {
  const json finding = Result()["findings"][2];
  EXPECT_EQ(finding["key"], "KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1");
  EXPECT_EQ(finding["severity"], "error");
  EXPECT_EQ(finding["unknown"].dump(), R"(["ErrorMask","FirstErrorPointer"])");
  EXPECT_EQ(finding["evidence"].dump(), R"({"HeaderLog":null})");
}

TEST_F(JsonFindings, HaveATextAndWideValuesToo) {
  TFinding& finding = document_.summary.findings[0];
  finding.text = "fatal \x1b";
  finding.width = 33;
  finding.value = 0x123456789;
  finding.isKnown = true;
  const json written = Result()["findings"][0];
  EXPECT_EQ(written["text"], "fatal \x1b");
  EXPECT_EQ(written["value"], "0x0000000123456789");
  EXPECT_EQ(written["known"], true);
}

TEST_F(JsonFindings, TheSummaryOfLinesHasThem) {
  std::istringstream lines(Written(EOutputForm::kJsonl, document_));
  std::string last;
  for (std::string line; std::getline(lines, line);) last = line;
  EXPECT_EQ(json::parse(last)["findings"], Result()["findings"]);
}

TEST_F(JsonFindings, AFilteredResultHasOnlyInstancesWithAFinding) {
  document_.instances[1].second.findings.clear();
  document_.instances[1].second.missing.clear();
  EXPECT_FALSE(Result().contains("filtered"));
  EXPECT_EQ(Result()["instances"].size(), 2U);
  document_.header.onlyFindings = true;
  const json result = Result();
  EXPECT_EQ(result["filtered"], true);
  ASSERT_EQ(result["instances"].size(), 1U);
  EXPECT_EQ(result["instances"][0]["key"], "KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance0");
  EXPECT_EQ(result["findings"].size(), 6U);
}

TEST_F(JsonFindings, AFilteredResultWithoutAFindingIsWhole) {
  document_.header.onlyFindings = true;
  for (auto& [instance, facts] : document_.instances) {
    facts.findings.clear();
    facts.missing.clear();
  }
  document_.summary.findings.clear();
  EXPECT_EQ(Result()["instances"], json::array());
  EXPECT_EQ(Result()["findings"], json::array());
}

TEST_F(JsonFindings, AFilteredResultKeepsAnInstanceWithSomethingUnread) {
  document_.header.onlyFindings = true;
  for (auto& [instance, facts] : document_.instances) facts.findings.clear();
  document_.instances[0].second.missing = {{"Log", {}, {EHow::kCompletionCode, 0xCB}}};
  document_.instances[1].second.missing = {{"Log", {}, {EHow::kLost, 0}}};
  ASSERT_EQ(Result()["instances"].size(), 1U);  // what is absent could not have been read
  EXPECT_EQ(Result()["instances"][0]["missing"][0]["lost"], true);
}

}  // namespace
}  // namespace tests
