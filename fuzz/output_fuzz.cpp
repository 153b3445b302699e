// Arbitrary bytes as values of every type: every machine-readable format must preserve the values.
#include "host/base/cimdatetime.h"
#include "host/output/writers.h"
#include "host/schema/schemareader.h"
#include "tests/support/hostileresult.h"
#include "tests/support/memoryreader.h"
#include "tests/support/outputreading.h"

using namespace NKROVEL20;
using namespace velhost;
using namespace tests;

static constexpr const char* kSchema =
    "class KROSG_DCAPFile { string ErrRawData; string Texts[]; uint8 Bytes[]; uint64 Number; real64 Real; char16 Char;"
    " datetime Time; KROSG_DCAPFile REF Path; };";

static std::string Written(EOutputForm form, const TInstance& instance, const std::string& text) {
  TStringSink sink;
  const auto writer = MakeWriter(form, sink, {40 + static_cast<int>(text.size() % 100), false});
  writer->Begin(HostileHeader(text));
  writer->Instance(instance, HostileFacts(text));
  writer->End(HostileSummary(text));
  Require(Repaired(sink.Text(), false) == sink.Text());
  return sink.Text();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::uint64_t bits = 0;
  std::copy_n(data, std::min(size, sizeof bits), reinterpret_cast<std::uint8_t*>(&bits));
  const std::string text(data, data + size);
  TMemoryReader files;
  files.Add("schema.mof", kSchema);
  static const auto cimClass = ReadSchema({"schema.mof"}, files).cimNamespace->FindClass("KROSG_DCAPFile");
  TInstance instance(cimClass, {});
  instance.SetProperty("ErrRawData", text, {});
  instance.SetProperty("Texts", TCIMValue(TType::kString, 2, {text, TCIMValue()}), {});
  instance.SetProperty("Bytes", TCIMValue(TType::kUint8, 0, std::vector<TCIMValue>(data, data + size)), {});
  instance.SetProperty("Number", TCIMValue::FromInteger(TType::kUint64, bits), {});
  instance.SetProperty("Real", TCIMValue::FromReal(TType::kReal64, std::bit_cast<double>(bits)), {});
  instance.SetProperty("Char", TCIMValue::FromInteger(TType::kChar16, bits), {});
  instance.SetProperty("Time", TCIMDateTime(2000, 1, bits & 0x3F, bits >> 8 & 0x1F, 0, 0, 0, 0), {});
  instance.SetProperty("Path", TCIMValue::FromText(TType::kReference, text), {});
  Written(EOutputForm::kTable, instance, text);
  const nlohmann::json properties = PropertiesOf(instance);
  Require(nlohmann::json::parse(Written(EOutputForm::kJson, instance, text))["instances"][0]["properties"] ==
          properties);
  const std::string lines = Written(EOutputForm::kJsonl, instance, text);
  Require(nlohmann::json::parse(lines.substr(0, lines.find('\n')))["properties"] == properties);
  Require(nlohmann::json::accept(lines.substr(lines.find('\n') + 1)));
  RequireXml(Written(EOutputForm::kCimXml, instance, text), properties);
  files.Add("instance.mof", Written(EOutputForm::kMof, instance, text));
  const TSchemaResult read = ReadSchema({"schema.mof", "instance.mof"}, files);
  nlohmann::json readBack = PropertiesOf(*read.instances.at(0));
  if (!IsCimDateTime(properties["Time"].get<std::string>())) readBack["Time"] = properties["Time"];  // null in MOF
  Require(!read.HasErrors() && readBack == properties);
  return 0;
}
