// Any bytes as values of every type: each form stays one that its readers take.
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <sstream>

#include "host/output/utf8.h"
#include "host/output/writers.h"
#include "host/schema/schemareader.h"

using namespace NKROVEL20;
using TType = TCIMValue::TCIMType;

static constexpr const char* kSchema =
    "class KROSG_DCAPFile { string ErrRawData; string Texts[]; uint8 Bytes[]; uint64 Number; real64 Real; char16 Char;"
    " datetime Time; KROSG_DCAPFile REF Path; };";

static void Require(bool condition) { condition ? void() : std::abort(); }
static std::string Written(EOutputForm form, const TInstance& instance, const std::string& text) {
  struct : ITextSink {
    void Write(std::string_view more) override { content += more; }
    std::string content;
  } sink;
  const auto writer = MakeWriter(form, sink, {40 + static_cast<int>(text.size() % 100), false});
  writer->Begin({text, text, text, text});
  writer->Instance(instance, true);
  const std::optional<std::uint8_t> code = text.empty() ? std::nullopt : std::optional<std::uint8_t>(text.back());
  writer->End({text.size() % 2 == 0, text, {{text, text}}, 1, {{text, 1, text, code}}, 1});
  for (std::size_t at = 0; at < sink.content.size(); at += NextCodePoint(sink.content, at).size) {
    Require(NextCodePoint(sink.content, at).valid);
  }
  return sink.content;
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
  Require(nlohmann::json::accept(Written(EOutputForm::kJson, instance, text)));
  std::istringstream lines(Written(EOutputForm::kJsonl, instance, text));
  for (std::string line; std::getline(lines, line);) Require(nlohmann::json::accept(line));
  Require(pugi::xml_document().load_string(Written(EOutputForm::kCimXml, instance, text).c_str()));
  files.Add("instance.mof", Written(EOutputForm::kMof, instance, text));
  const TSchemaResult read = ReadSchema({"schema.mof", "instance.mof"}, files);
  Require(!read.HasErrors() && *read.instances.at(0)->Find("Bytes") == *instance.Find("Bytes"));
  return 0;
}
