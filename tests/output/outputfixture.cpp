#include "tests/output/outputfixture.h"

#include <limits>

#include "tests/support/hostileresult.h"

namespace tests {

TPropertyDefinition Property(const std::string& name, TType type, bool isArray) {
  TPropertyDefinition property;
  property.name = name;
  property.type = type;
  property.isArray = isArray;
  return property;
}

TCIMValue Bytes(const std::vector<int>& bytes) {
  std::vector<TCIMValue> elements;
  elements.reserve(bytes.size());
  for (const int byte : bytes) elements.emplace_back(static_cast<unsigned char>(byte));
  return Array(TType::kUint8, elements);
}

TCIMValue Array(TType type, const std::vector<TCIMValue>& elements) {
  return TCIMValue(type, static_cast<unsigned int>(elements.size()), elements);
}

TCIMValue NullOf(TType type) {
  TCIMValue value;
  value.SetNullValue(type.GetCode(), 0);
  return value;
}

TCIMDateTime Moment() { return TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60); }

boost::shared_ptr<TCIMClass> TOutputTest::Define(const std::string& name, const std::string& superClass,
                                                 const std::vector<TPropertyDefinition>& properties) {
  if (auto known = cimNamespace_->FindClass(name)) return known;
  TClassDefinition definition;
  definition.name = name;
  definition.superClass = superClass;
  definition.properties = properties;
  return cimNamespace_->AddClass(definition);
}

TInstancePtr TOutputTest::Make(const boost::shared_ptr<TCIMClass>& cimClass,
                               const std::vector<std::pair<std::string, TCIMValue>>& values) {
  auto instance = boost::dynamic_pointer_cast<TInstance>(cimClass->CreateInstance({}));
  for (const auto& [name, value] : values) instance->SetProperty(name, value, {});
  return instance;
}

TInstancePtr TOutputTest::One(TType type, const TCIMValue& value) {
  cimNamespace_ = TNamespace::Create();
  TPropertyDefinition property = Property("P", type, value.IsArray());
  if (type == TType::kReference) property.referenceClass = "KROSG_Target";
  return Make(Define("KROSG_One", "", {property}), {{"P", value}});
}

TInstancePtr TOutputTest::Capture(const std::string& rawData) {
  const auto cimClass = Define("KROSG_DCAPFile", "",
                               {Property("RecordID", TType::kString), Property("MessageTimestamp", TType::kDateTime),
                                Property("FileName", TType::kString), Property("ErrRawData", TType::kString),
                                Property("SourceNode", TType::kString)});
  return Make(cimClass, {{"RecordID", TCIMValue("0")},
                         {"MessageTimestamp", TCIMValue(Moment())},
                         {"FileName", TCIMValue("cpu_err")},
                         {"ErrRawData", TCIMValue(rawData)},
                         {"SourceNode", TCIMValue("1")}});
}

TPlan TOutputTest::PlanOfTwo() {
  using CollectorProfile::EPath;
  const auto classes = TNamespace::Create();
  TPlan plan;
  for (const auto& [name, path] : {std::pair("KROSG_A", EPath::kR8), std::pair("KROSG_B", EPath::kJfr)}) {
    TClassDefinition definition;
    definition.name = name;
    plan.classes.emplace_back().cimClass = classes->AddClass(definition);
    plan.classes.back().path = path;
    plan.requests.emplace_back().turns.emplace_back().planClass = plan.classes.size() - 1;
  }
  return plan;
}

TResultHeader TOutputTest::Header() {
  TResultHeader header;
  header.run = {"0f8fad5b-d9cb-4d9f-a165-70867728950e", "2026-01-31T12:34:56.789+01:00", "collector", "2.0", {}};
  header.source.sp = {"lan:admin@bmc0"};
  header.source.target = "lan:bmc0";
  header.machineType = "6203";
  header.plugin = {"Engineering Information Collector", "1.0", "1.1"};
  header.schema = {{"schema"}, std::string(64, 'a'), false};
  return header;
}

TInstanceFacts TOutputTest::Unplaced(const TInstance& instance) {
  TInstanceFacts facts;
  facts.key = instance.Class().Name() + "/?1";
  return facts;
}

TResultSummary TOutputTest::Complete() {
  TResultSummary summary;
  summary.exchanges = 42;
  summary.elapsedMs = 1234;
  return summary;
}

TResultSummary TOutputTest::Partial() const {
  TResultSummary summary = Complete();
  summary.status = EResultStatus::kPartial;
  summary.exitStatus = 3;
  summary.message = "interrupted; KROSG_A: said \"no\"";
  summary.reasons = {{EReason::kStopped, "", 1, "interrupted"}, {EReason::kRequestFailed, "KROSG_A", 1, "said \"no\""}};
  TExchangeFailure refused;
  refused.kind = EExchangeKind::kRegister;
  refused.how = {EHow::kCompletionCode, 0xC3};
  refused.address = 0x2D0100;
  TExchangeFailure lost;
  lost.turn = 1;
  lost.kind = EExchangeKind::kDot;
  lost.owner = 1;
  summary.failed = {refused, lost};
  summary.plan = &plan_;
  return summary;
}

TDocument TOutputTest::Hostile(const std::string& text) {
  return {HostileHeader(text), {{One(TType::kString, TCIMValue("x")), HostileFacts(text)}}, HostileSummary(text)};
}

std::string TOutputTest::Written(EOutputForm form, const std::vector<TInstancePtr>& instances,
                                 const TResultSummary& summary, const TTableOptions& options) {
  TDocument document = {Header(), {}, summary};
  for (const auto& instance : instances) document.instances.emplace_back(instance, Unplaced(*instance));
  return Written(form, document, options);
}

std::string TOutputTest::Written(EOutputForm form, const TDocument& document, const TTableOptions& options) {
  TStringSink sink;
  const auto writer = MakeWriter(form, sink, options);
  writer->Begin(document.header);
  for (const auto& [instance, facts] : document.instances) writer->Instance(*instance, facts);
  writer->End(document.summary);
  return sink.Text();
}

TInstancePtr TAwkwardTest::Awkward() {
  const std::vector<std::pair<TPropertyDefinition, TCIMValue>> entries = {
      {Property("Quotes", TType::kString), TCIMValue(R"(say "hi" \ <&>)")},
      {Property("Controls", TType::kString), TCIMValue(std::string("t\tn\nr\re\x1bz\0d\x7f", 12))},
      {Property("NonAscii", TType::kString), TCIMValue("Gr\u00fc\u00dfe \u6f22 \U0001F600")},
      {Property("Invalid", TType::kString), TCIMValue("a\xff"
                                                      "b\xe2\x82")},
      {Property("Empty", TType::kString), TCIMValue("")},
      {Property("Nothing", TType::kString), NullOf(TType::kString)},
      {Property("Bytes", TType::kUint8, true),
       Array(TType::kUint8, {TCIMValue(static_cast<unsigned char>(0)), NullOf(TType::kUint8),
                             TCIMValue(static_cast<unsigned char>(255))})},
      {Property("NoBytes", TType::kUint8, true), Bytes({})},
      {Property("Texts", TType::kString, true),
       Array(TType::kString, {TCIMValue("a\"b"), NullOf(TType::kString), TCIMValue("")})},
      {Property("Lowest", TType::kSint64), TCIMValue::FromInteger(TType::kSint64, 0x8000000000000000ULL)},
      {Property("Highest", TType::kUint64), TCIMValue::FromInteger(TType::kUint64, 0xFFFFFFFFFFFFFFFFULL)},
      {Property("Yes", TType::kBoolean), TCIMValue::FromInteger(TType::kBoolean, 1)},
      {Property("No", TType::kBoolean), TCIMValue::FromInteger(TType::kBoolean, 0)},
      {Property("Tenth", TType::kReal32), TCIMValue::FromReal(TType::kReal32, 0.1)},
      {Property("Huge", TType::kReal64), TCIMValue::FromReal(TType::kReal64, 1e300)},
      {Property("Endless", TType::kReal64),
       TCIMValue::FromReal(TType::kReal64, std::numeric_limits<double>::infinity())},
      {Property("Accent", TType::kChar16), TCIMValue::FromInteger(TType::kChar16, 0xE9)},
      {Property("Moment", TType::kDateTime), TCIMValue(Moment())},
      {Property("Span", TType::kDateTime), TCIMValue(TCIMDateTime::FromString("00000001132312.000000:000"))},
  };
  std::vector<TPropertyDefinition> properties;
  std::vector<std::pair<std::string, TCIMValue>> values;
  for (const auto& [property, value] : entries) {
    properties.push_back(property);
    values.emplace_back(property.name, value);
  }
  properties.push_back(Property("Unset", TType::kString));
  return Make(Define("KROSG_Awkward", "", properties), values);
}

}  // namespace tests
