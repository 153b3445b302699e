// Validates whole documents with awkward values against the published grammars, using external tools.
#include "tests/output/externaltool.h"
#include "tests/output/smallserver.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

// Validates the documents against the JSON Schema. Exit status 77 means that a package is missing.
TToolResult Validate(const std::string& files) {
  return RunTool(std::string(PYTHON) + " " + SOURCE_FOLDER + "/validate_json.py " + SCHEMA + " " + files);
}

class Validity : public TAwkwardTest {
 protected:
  std::vector<TInstancePtr> Instances() {
    const auto empty = Make(Define("KROSG_Empty", "", {}), {});
    const auto invalidTime = Make(Define("KROSG_Time", "", {Property("T", TType::kDateTime)}),
                                  {{"T", TCIMValue(TCIMDateTime(2255, 255, 255, 255, 255, 255, 0, 0))}});
    return {Awkward(), Capture("0a ff 00 "), empty, invalidTime, References()};
  }
  TInstancePtr References() {
    std::vector<TPropertyDefinition> properties;
    std::vector<std::pair<std::string, TCIMValue>> values;
    const std::vector<std::string> paths = {"KROSG_A.Key=\"<v>\",N=-5,B=TRUE",
                                            "root/cimv2:KROSG_A.Key=\"v\"",
                                            "//host:5989/root/cimv2:KROSG_A.Key=\"v\"",
                                            "KROSG_A",
                                            "root:KROSG_A",
                                            "//host/root:KROSG_A",
                                            "KROSG_A=@",
                                            "no path <at> all",
                                            ""};
    for (const std::string& path : paths) {
      properties.push_back(Property("R" + std::to_string(properties.size()), TType::kReference));
      properties.back().referenceClass = "KROSG_A";
      values.emplace_back(properties.back().name, TCIMValue::FromText(TType::kReference, path));
    }
    properties.push_back(Property("Null", TType::kReference));
    values.emplace_back("Null", NullOf(TType::kReference));
    return Make(Define("KROSG_References", "", properties), values);
  }
  TTemporaryFolder folder_;
};

TEST_F(Validity, CimXmlIsValid) {
  if (RunTool("xmllint --version").exitStatus != 0) GTEST_SKIP() << "xmllint is missing (package libxml2-utils)";
  for (const auto& summary : {Complete(), Partial()}) {
    const std::string file = folder_.Write("all.xml", Written(EOutputForm::kCimXml, Instances(), summary));
    const auto result = RunTool("xmllint --noout --dtdvalid " SOURCE_FOLDER "/cim-declarations.dtd " + file);
    EXPECT_EQ(result.exitStatus, 0) << result.output;
  }
}

TEST_F(Validity, CimXmlWithoutInstancesIsValid) {
  if (RunTool("xmllint --version").exitStatus != 0) GTEST_SKIP() << "xmllint is missing (package libxml2-utils)";
  const std::string file = folder_.Write("none.xml", Written(EOutputForm::kCimXml, {}, Complete()));
  const auto result = RunTool("xmllint --noout --dtdvalid " SOURCE_FOLDER "/cim-declarations.dtd " + file);
  EXPECT_EQ(result.exitStatus, 0) << result.output;
}

TEST_F(Validity, XmlReadersGetTheTextBack) {
  if (RunTool("xmllint --version").exitStatus != 0) GTEST_SKIP() << "xmllint is missing (package libxml2-utils)";
  const auto instance = One(TType::kString, TCIMValue(" <a> & \"b\"\r\n\t\u00e9 "));
  const std::string file = folder_.Write("one.xml", Written(EOutputForm::kCimXml, {instance}, Complete()));
  EXPECT_EQ(RunTool("xmllint --xpath 'string(//VALUE)' " + file).output, " <a> & \"b\"\r\n\t\u00e9 \n");
}

TEST_F(Validity, JsonFollowsItsSchema) {
  const std::string files = folder_.Write("all.json", Written(EOutputForm::kJson, Instances(), Partial())) + " " +
                            folder_.Write("none.json", Written(EOutputForm::kJson, {}, Complete())) + " " +
                            folder_.Write("all.jsonl", Written(EOutputForm::kJsonl, Instances(), Partial()));
  const auto result = Validate(files);
  if (result.exitStatus == 77) GTEST_SKIP() << "the package python3-jsonschema is missing";
  EXPECT_EQ(result.exitStatus, 0) << result.output;
}

using ValidityOfFacts = TSmallServer;

TEST_F(ValidityOfFacts, JsonFollowsItsSchema) {
  const TTemporaryFolder folder;
  const std::string files = folder.Write("small.json", Written(EOutputForm::kJson, document_)) + " " +
                            folder.Write("small.jsonl", Written(EOutputForm::kJsonl, document_));
  const auto result = Validate(files);
  if (result.exitStatus == 77) GTEST_SKIP() << "the package python3-jsonschema is missing";
  EXPECT_EQ(result.exitStatus, 0) << result.output;
}

TEST_F(ValidityOfFacts, CimXmlIsValid) {
  if (RunTool("xmllint --version").exitStatus != 0) GTEST_SKIP() << "xmllint is missing (package libxml2-utils)";
  const TTemporaryFolder folder;
  const std::string file = folder.Write("small.xml", Written(EOutputForm::kCimXml, document_));
  const auto result = RunTool("xmllint --noout --dtdvalid " SOURCE_FOLDER "/cim-declarations.dtd " + file);
  EXPECT_EQ(result.exitStatus, 0) << result.output;
}

TEST_F(Validity, TheSchemaRejectsWhatIsNotACollection) {
  if (Validate("").exitStatus == 77) GTEST_SKIP() << "the package python3-jsonschema is missing";
  const std::string start =
      R"({"kind":"instance","run_id":"0f8fad5b-d9cb-4d9f-a165-70867728950e","labels":{},"class":"A","key":"A/?1",)";
  const std::string line = start + R"("properties":{"P":)";
  EXPECT_EQ(Validate(folder_.Write("good.jsonl", line + "[1,null]}}\n")).exitStatus, 0);
  EXPECT_EQ(Validate(folder_.Write("nested.jsonl", line + "[[1]]}}\n")).exitStatus, 1);
  EXPECT_EQ(Validate(folder_.Write("nan.jsonl", line + "NaN}}\n")).exitStatus, 1);
  EXPECT_EQ(Validate(folder_.Write("flag.jsonl", start + R"("incomplete":false,"properties":{}})")).exitStatus, 1);
  EXPECT_EQ(Validate(folder_.Write("kind.jsonl", R"({"kind":"other"})")).exitStatus, 1);
}

}  // namespace
}  // namespace tests
