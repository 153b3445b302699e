#include <algorithm>

#include "tests/output/outputfixture.h"

namespace tests {
namespace {

class JsonValue : public TOutputTest {
 protected:
  /// The text after "P": for a property with that type and value.
  std::string Json(TType type, const TCIMValue& value) {
    const std::string text = Written(EOutputForm::kJsonl, {One(type, value)}, Complete());
    const std::string before = R"("key":"KROSG_One/?1","properties":{"P":)";
    const std::size_t start = text.find(before) + before.size();
    return text.substr(start, text.find("}}\n") - start);
  }
};

TEST_F(JsonValue, EscapesQuotesBackslashesAndControlCharacters) {
  EXPECT_EQ(Json(TType::kString, TCIMValue("a\"b\\c")), R"("a\"b\\c")");
  EXPECT_EQ(Json(TType::kString, TCIMValue("\b\f\n\r\t")), R"("\b\f\n\r\t")");
  EXPECT_EQ(Json(TType::kString, TCIMValue(std::string("\0\x1b\x1f", 3))), R"("\u0000\u001b\u001f")");
}

TEST_F(JsonValue, KeepsCharactersBeyondAscii) {
  EXPECT_EQ(Json(TType::kString, TCIMValue("\u00e9\u20ac\U0001F600")), "\"\u00e9\u20ac\U0001F600\"");
}

TEST_F(JsonValue, ReplacesBytesThatAreNotCharacters) {
  EXPECT_EQ(Json(TType::kString, TCIMValue("a\xff"
                                           "b")),
            "\"a\uFFFDb\"");
  EXPECT_EQ(Json(TType::kString, TCIMValue("\xe2\x82")), "\"\uFFFD\"");                  // cut short
  EXPECT_EQ(Json(TType::kString, TCIMValue("\xc0\xaf")), "\"\uFFFD\uFFFD\"");            // overlong
  EXPECT_EQ(Json(TType::kString, TCIMValue("\xed\xa0\x80")), "\"\uFFFD\uFFFD\uFFFD\"");  // a surrogate
}

TEST_F(JsonValue, WritesIntegersAtTheirLimits) {
  EXPECT_EQ(Json(TType::kUint8, TCIMValue(static_cast<unsigned char>(255))), "255");
  EXPECT_EQ(Json(TType::kSint8, TCIMValue::FromInteger(TType::kSint8, 0x80)), "-128");
  EXPECT_EQ(Json(TType::kSint64, TCIMValue::FromInteger(TType::kSint64, 1ULL << 63)), "-9223372036854775808");
  EXPECT_EQ(Json(TType::kUint64, TCIMValue::FromInteger(TType::kUint64, ~0ULL)), "18446744073709551615");
}

TEST_F(JsonValue, WritesTheShortestRealThatReadsBack) {
  EXPECT_EQ(Json(TType::kReal64, TCIMValue::FromReal(TType::kReal64, 0.1)), "0.1");
  EXPECT_EQ(Json(TType::kReal32, TCIMValue::FromReal(TType::kReal32, 0.1)), "0.1");
  EXPECT_EQ(Json(TType::kReal64, TCIMValue::FromReal(TType::kReal64, -3)), "-3.0");
  EXPECT_EQ(Json(TType::kReal64, TCIMValue::FromReal(TType::kReal64, 1e300)), "1.0e+300");
  EXPECT_EQ(Json(TType::kReal64, TCIMValue::FromReal(TType::kReal64, 2.2250738585072014e-308)),
            "2.2250738585072014e-308");
}

TEST_F(JsonValue, WritesNullForRealsThatJsonCannotHold) {
  EXPECT_EQ(Json(TType::kReal64, TCIMValue::FromReal(TType::kReal64, std::numeric_limits<double>::infinity())), "null");
  EXPECT_EQ(Json(TType::kReal32, TCIMValue::FromReal(TType::kReal32, std::numeric_limits<double>::quiet_NaN())),
            "null");
}

TEST_F(JsonValue, WritesByteArraysAsNumbersWithNullElements) {
  EXPECT_EQ(Json(TType::kUint8, Bytes({0, 9, 10, 99, 100, 255})), "[0,9,10,99,100,255]");
  EXPECT_EQ(Json(TType::kUint8, Bytes({})), "[]");
  EXPECT_EQ(
      Json(TType::kUint8, Array(TType::kUint8, {NullOf(TType::kUint8), TCIMValue(static_cast<unsigned char>(1))})),
      "[null,1]");
}

TEST_F(JsonValue, WritesDatetimesAsCimWritesThem) {
  EXPECT_EQ(Json(TType::kDateTime, TCIMValue(Moment())), R"("20260131123456.000000+060")");
  EXPECT_EQ(Json(TType::kDateTime, TCIMValue(TCIMDateTime::FromString("00000001132312.000000:000"))),
            R"("00000001132312.000000:000")");
}

TEST_F(JsonValue, WritesBooleansCharactersAndNulls) {
  EXPECT_EQ(Json(TType::kBoolean, TCIMValue::FromInteger(TType::kBoolean, 1)), "true");
  EXPECT_EQ(Json(TType::kChar16, TCIMValue::FromInteger(TType::kChar16, 0xE9)), "\"\u00e9\"");
  EXPECT_EQ(Json(TType::kChar16, TCIMValue::FromInteger(TType::kChar16, 0xD800)), "\"\uFFFD\"");
  EXPECT_EQ(Json(TType::kString, NullOf(TType::kString)), "null");
}

using JsonWriter = TAwkwardTest;

constexpr const char* kHeader =
    R"("source":{"sp":["lan:admin@bmc0"],"target":"lan:bmc0","simulated":false},)"
    "\n"
    R"("machine_type":"6203",)"
    "\n"
    R"("plugin":{"name":"Engineering Information Collector","version":"1.0","interface_version":"1.1"},)"
    "\n"
    R"("schema":{"paths":["schema"],"sha256":"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",)"
    R"("example":false},)";
constexpr const char* kRun =
    R"("run":{"id":"0f8fad5b-d9cb-4d9f-a165-70867728950e","started":"2026-01-31T12:34:56.789+01:00",)"
    R"("elapsed_ms":1234,"host":"collector","velhost":"2.0","labels":{}}})"
    "\n";

std::string WithoutBreaks(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\n'), text.end());
  return text;
}

TEST_F(JsonWriter, WritesOneObjectOfACollection) {
  const auto first = Make(Define("KROSG_A", "", {Property("Name", TType::kString), Property("N", TType::kUint16)}),
                          {{"N", TCIMValue(7)}});
  const auto second = Make(Define("KROSG_A", "", {}), {{"Name", TCIMValue("x")}, {"N", TCIMValue(8)}});
  EXPECT_EQ(Written(EOutputForm::kJson, {first, second}, Complete()),
            std::string("{\"kind\":\"instancecollection\",\"format_version\":2,\n") + kHeader +
                "\n\"instances\":[\n"
                R"({"kind":"instance","class":"KROSG_A","key":"KROSG_A/?1","properties":{"N":7}},)"
                "\n"
                R"({"kind":"instance","class":"KROSG_A","key":"KROSG_A/?1","properties":{"Name":"x","N":8}})"
                "\n],\n\"status\":\"complete\",\"exit_status\":0,\n\"reasons\":[],\n\"findings\":[],\n"
                R"("exchanges":{"total":42,"failed":[]},)"
                "\n\"unread\":[],\n" +
                kRun);
}

constexpr const char* kInterrupted =
    R"("status":"partial","exit_status":3,"message":"interrupted; KROSG_A: said \"no\"",)"
    "\n\"reasons\":[\n"
    R"({"code":"stopped","count":1,"message":"interrupted"},)"
    "\n"
    R"({"code":"request-failed","class":"KROSG_A","count":1,"message":"said \"no\""}],)"
    "\n\"findings\":[],\n"
    R"("exchanges":{"total":42,"failed":[)"
    "\n"
    R"({"class":"KROSG_A","address":"0x2D0100","node":0,"kind":"register","completion_code":195},)"
    "\n"
    R"({"class":"KROSG_B","service_processor":1,"kind":"dot","lost":true}]},)"
    "\n\"unread\":[],\n";

TEST_F(JsonWriter, SaysWhyACollectionIsPartial) {
  const std::string text = Written(EOutputForm::kJson, {}, Partial());
  EXPECT_EQ(text.substr(text.find("\"instances\"")), std::string("\"instances\":[\n],\n") + kInterrupted + kRun);
}

TEST_F(JsonWriter, WritesAnAwkwardInstance) {
  const std::string text = Written(EOutputForm::kJsonl, {Awkward()}, Complete());
  EXPECT_EQ(text.substr(0, text.find('\n')),
            R"({"kind":"instance","class":"KROSG_Awkward",)"
            R"("run_id":"0f8fad5b-d9cb-4d9f-a165-70867728950e","labels":{},"key":"KROSG_Awkward/?1",)"
            R"("properties":{"Quotes":"say \"hi\" \\ <&>",)"
            R"("Controls":"t\tn\nr\re\u001bz\u0000d)"
            "\\u007f"
            R"(","NonAscii":")"
            "Gr\u00fc\u00dfe \u6f22 \U0001F600"
            R"(","Invalid":")"
            "a\uFFFDb\uFFFD"
            R"(","Empty":"","Nothing":null,"Bytes":[0,null,255],"NoBytes":[],"Texts":["a\"b",null,""],)"
            R"("Lowest":-9223372036854775808,"Highest":18446744073709551615,"Yes":true,"No":false,"Tenth":0.1,)"
            R"("Huge":1.0e+300,"Endless":null,"Accent":")"
            "\u00e9"
            R"(","Moment":"20260131123456.000000+060","Span":"00000001132312.000000:000"}})");
}

TEST_F(JsonWriter, FlushesEachLineAndEndsWithASummary) {
  TFlushedSink sink;
  const auto writer = MakeWriter(EOutputForm::kJsonl, sink, {});
  TResultHeader header = Header();
  header.run.labels = {{"rack", "7"}, {"room", "a b"}};
  writer->Begin(header);
  const auto one = One(TType::kString, TCIMValue("x"));
  writer->Instance(*one, Unplaced(*one));
  const std::string identity = R"("run_id":"0f8fad5b-d9cb-4d9f-a165-70867728950e","labels":{"rack":"7","room":"a b"},)";
  const std::string line = R"({"kind":"instance","class":"KROSG_One",)" + identity +
                           R"("key":"KROSG_One/?1","properties":{"P":"x"}})"
                           "\n";
  EXPECT_EQ(sink.Text(), line);
  EXPECT_EQ(sink.flushedAt, std::vector<std::size_t>{line.size()});
  writer->End(Partial());
  std::string run = kRun;
  run.replace(run.find("{}"), 2, R"({"rack":"7","room":"a b"})");
  EXPECT_EQ(sink.Text().substr(line.size()),
            WithoutBreaks(R"({"kind":"summary","format_version":2,)" + identity + kHeader + kInterrupted + run) + "\n");
}

TEST_F(JsonWriter, ListsInheritedPropertiesFirst) {
  Define("KROSG_Base", "", {Property("Z", TType::kString)});
  const auto derived = Define("KROSG_Derived", "KROSG_Base", {Property("A", TType::kString)});
  const auto instance = Make(derived, {{"A", TCIMValue("2")}, {"Z", TCIMValue("1")}});
  const std::string text = Written(EOutputForm::kJsonl, {instance}, Complete());
  EXPECT_EQ(text.substr(0, text.find('\n')),
            R"({"kind":"instance","class":"KROSG_Derived","run_id":"0f8fad5b-d9cb-4d9f-a165-70867728950e",)"
            R"("labels":{},"key":"KROSG_Derived/?1","properties":{"Z":"1","A":"2"}})");
}

}  // namespace
}  // namespace tests
