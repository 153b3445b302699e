// Every message about a recording, word for word.
#include "host/bmc/record/recordingline.h"
#include "host/bmc/record/replay.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

const std::string kHead =
    R"({"format":"velhost-recording","version":1,"machine_type":"","started":"...","utc_offset_minutes":0,)"
    R"("discovery":{"bmc_nodes":1,"ipmi_driver":true,"dot_command":true,"sp_comm":true,"service_processors":1}})"
    "\n";

std::string Refusal(const std::string& text) {
  return MessageOf([&] { TReplay("r.jsonl", Stored(text)); });
}

struct TBadLine {
  std::string line;
  int column;
  std::string message;
};

void PrintTo(const TBadLine& bad, std::ostream* out) { *out << bad.line; }

/// The expected diagnostic at a column of a line of fewer than 160 bytes.
constexpr std::size_t kWholeLine = 78;  // bytes

std::string Expected(int number, const TBadLine& bad) {
  const std::string first =
      "r.jsonl:" + std::to_string(number) + ":" + std::to_string(bad.column) + ": error: " + bad.message + "\n  ";
  if (bad.line.size() > kWholeLine) return first;
  return first + bad.line + "\n  " + std::string(static_cast<std::size_t>(bad.column - 1), ' ') + "^\n";
}

// Only part of a long line is shown; the diagnostics' own tests cover that.
std::string Shown(const std::string& refusal, const TBadLine& bad) {
  return bad.line.size() > kWholeLine ? refusal.substr(0, refusal.find('\n') + 3) : refusal;
}

class BadRecordedLine : public testing::TestWithParam<TBadLine> {};

TEST_P(BadRecordedLine, IsRefusedWithPlaceAndReason) {
  EXPECT_EQ(Shown(Refusal(kHead + GetParam().line + "\n"), GetParam()), Expected(2, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    Form, BadRecordedLine,
    testing::Values(TBadLine{"[]", 1, "found an array, expected a JSON object"},
                    TBadLine{"null", 1, "found null, expected a JSON object"},
                    TBadLine{"{}", 1, "found no \"kind\", expected a string"},
                    TBadLine{R"({"kind":1})", 9, "found an integer for \"kind\", expected a string"},
                    TBadLine{R"({"kind":"end"})", 9, "found \"end\" for \"kind\", expected one of ipmi, dot, clock"},
                    TBadLine{R"({"kind":"clock","kind":"clock"})", 17,
                             "found a second \"kind\", expected each member once"},
                    TBadLine{R"({"kind" : "clock", "local_tim":"x"})", 20,
                             "found the unknown member \"local_tim\", expected one of kind, local_time; did you mean "
                             "\"local_time\"?"},
                    TBadLine{R"({"kind":"clock","node":0})", 17,
                             "found the unknown member \"node\", expected one of kind, local_time"},
                    TBadLine{R"({"kind":"clock"})", 1, "found no \"local_time\", expected a string"},
                    TBadLine{R"({"kind":"clock","local_time":"noon"})", 30,
                             "found \"noon\" for \"local_time\", expected a time such as 2026-01-31T12:34:56+01:00"},
                    TBadLine{R"({"kind":"clock","local_time":"2026-13-31T12:34:56+01:00"})", 30,
                             "found \"2026-13-31T12:34:56+01:00\" for \"local_time\", expected a time such as "
                             "2026-01-31T12:34:56+01:00"}));

INSTANTIATE_TEST_SUITE_P(
    Ipmi, BadRecordedLine,
    testing::Values(
        TBadLine{R"({"kind":"ipmi","node":0.5,"request":"","ok":false,"us":1})", 23,
                 "found a floating-point number for \"node\", expected an integer from -2147483647 to 2147483647"},
        TBadLine{R"({"kind":"ipmi","node":2147483648,"request":"","ok":false,"us":1})", 23,
                 "found 2147483648 for \"node\", expected an integer from -2147483647 to 2147483647"},
        TBadLine{R"({"kind":"ipmi","node":18446744073709551615,"request":"","ok":false,"us":1})", 23,
                 "found 18446744073709551615 for \"node\", expected an integer from -2147483647 to 2147483647"},
        TBadLine{R"({"kind":"ipmi","node":0,"request":"0g","ok":false,"us":1})", 35,
                 "found \"g\" in \"request\", expected pairs of hexadecimal digits"},
        TBadLine{R"({"kind":"ipmi","node":0,"request":"01 2","ok":false,"us":1})", 35,
                 "found the end of the text in \"request\", expected pairs of hexadecimal digits"},
        TBadLine{R"({"kind":"ipmi","node":0,"request":"","ok":1,"us":1})", 43,
                 "found an integer for \"ok\", expected true or false"},
        TBadLine{R"({"kind":"ipmi","node":0,"request":"","ok":true,"us":1})", 1,
                 "found no \"response\", expected a string"},
        TBadLine{R"({"kind":"ipmi","node":0,"request":"","ok":true,"response":"","us":1})", 1,
                 "found no \"length\", expected an integer from 0 to 256"},
        TBadLine{R"({"kind":"ipmi","node":0,"request":"","ok":true,"response":"","length":257,"us":1})", 71,
                 "found 257 for \"length\", expected an integer from 0 to 256"},
        TBadLine{R"({"kind":"ipmi","node":0,"request":"","ok":false})", 1,
                 "found no \"us\", expected an integer from 0 to 86400000000"},
        TBadLine{R"({"kind":"ipmi","node":0,"request":"","ok":false,"us":-1})", 54,
                 "found -1 for \"us\", expected an integer from 0 to 86400000000"},
        TBadLine{R"({"kind":"ipmi","node":0,"request":"","ok":false,"us":1,"sp":0})", 56,
                 "found the unknown member \"sp\", expected one of kind, node, request, ok, response, length, us"}));

INSTANTIATE_TEST_SUITE_P(
    Dot, BadRecordedLine,
    testing::Values(
        TBadLine{R"({"kind":"dot","command":2,"identifier":"","parameters":"","ok":false,"us":1})", 1,
                 "found no \"sp\", expected an integer from -2147483647 to 2147483647"},
        TBadLine{R"({"kind":"dot","sp":0,"command":256,"identifier":"","parameters":"","ok":false,"us":1})", 32,
                 "found 256 for \"command\", expected an integer from 0 to 255"},
        TBadLine{R"({"kind":"dot","sp":0,"command":2,"parameters":"","ok":false,"us":1})", 1,
                 "found no \"identifier\", expected a string"},
        TBadLine{R"({"kind":"dot","sp":0,"command":2,"identifier":"","parameters":[],"ok":false,"us":1})", 63,
                 "found an array for \"parameters\", expected a string"},
        TBadLine{
            R"({"kind":"dot","sp":0,"command":2,"identifier":"","parameters":"","ok":true,"response":"0102","length":1,"us":1})",
            87, "found 2 bytes in \"response\", expected at most \"length\", 1"}));

INSTANTIATE_TEST_SUITE_P(
    Json, BadRecordedLine,
    testing::Values(
        TBadLine{
            R"({"kind")", 8,
            "cannot read JSON: syntax error while parsing object separator - unexpected end of input; expected ':'"},
        TBadLine{R"({"kind":1e999})", 1, "cannot read JSON: number overflow parsing '1e999'"}));

TEST(BadRecording, RefusesALongRequest) {
  std::string pairs;
  for (int i = 0; i < 257; ++i) pairs += "00 ";
  const std::string line = R"({"kind":"ipmi","node":0,"request":")" + pairs + R"(","ok":false,"us":1})";
  EXPECT_THAT(Refusal(kHead + line + "\n"),
              testing::StartsWith("r.jsonl:2:35: error: found 257 bytes in \"request\", expected at most 256\n"));
}

TEST(BadRecording, RefusesAnEmptyLine) {
  EXPECT_EQ(
      Refusal(kHead + "\n"),
      "r.jsonl:2:1: error: cannot read JSON: syntax error while parsing value - unexpected end of input; expected "
      "'[', '{', or a literal\n");
}

TEST(BadRecording, RefusesALineLongerThanAnyWriterMakes) {
  EXPECT_THAT(Refusal(kHead + std::string((std::size_t{4} << 20U) + 1, '[') + "\n"),
              testing::StartsWith("r.jsonl:2:1: error: found a line of more than 4194304 bytes\n"));
}

TEST(BadRecording, SurvivesALineOfManyBrackets) {
  EXPECT_THAT(Refusal(kHead + std::string(300'000, '[') + "\n"),
              testing::StartsWith(
                  "r.jsonl:2:1: error: found values nested too deeply, expected at most one object in another\n"));
}

class BadRecordingHeader : public testing::TestWithParam<TBadLine> {};

TEST_P(BadRecordingHeader, IsRefusedWithPlaceAndReason) {
  EXPECT_EQ(Shown(Refusal(GetParam().line + "\n"), GetParam()), Expected(1, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    All, BadRecordingHeader,
    testing::Values(
        TBadLine{R"({"machine_type":"6203"})", 1, "found no \"format\", expected \"velhost-recording\""},
        TBadLine{R"({"format":"other"})", 11, "found \"other\" for \"format\", expected \"velhost-recording\""},
        TBadLine{R"({"format":"velhost-recording"})", 1,
                 "found no \"version\", expected version 1 or 2, which this velhost reads"},
        TBadLine{R"({"format":"velhost-recording","version":3})", 41,
                 "found version 3, expected version 1 or 2, which this velhost reads"},
        TBadLine{R"({"format":"velhost-recording","version":"1"})", 41,
                 "found version \"1\", expected version 1 or 2, which this velhost reads"},
        TBadLine{R"({"format":"velhost-recording","version":1,"machine":"6203"})", 43,
                 "found the unknown member \"machine\", expected one of format, version, machine_type, started, "
                 "utc_offset_minutes, discovery; did you mean \"machine_type\"?"},
        TBadLine{R"({"format":"velhost-recording","version":1})", 1, "found no \"discovery\", expected an object"},
        TBadLine{R"({"format":"velhost-recording","version":1,"discovery":[]})", 55,
                 "found an array for \"discovery\", expected an object"},
        TBadLine{R"({"format":"velhost-recording","version":1,"discovery":{"bmc_nods":1}})", 56,
                 "found the unknown member \"bmc_nods\", expected one of bmc_nodes, ipmi_driver, dot_command, sp_comm, "
                 "service_processors; did you mean \"bmc_nodes\"?"},
        TBadLine{R"({"format":"velhost-recording","version":1,"discovery":{}})", 1,
                 "found no \"machine_type\", expected a string"},
        TBadLine{R"({"format":"velhost-recording","version":1,"discovery":{},"machine_type":"","started":""})", 1,
                 "found no \"utc_offset_minutes\", expected an integer from -1439 to 1439"}));

/// A first line of version 2 with this in place of the members that version 1 does not have.
TBadLine OfVersion2(const std::string& members, const std::string& value, const std::string& message) {
  const std::string line = R"({"format":"velhost-recording","version":2,"machine_type":"","started":"",)"
                           R"("utc_offset_minutes":0,"discovery":{"bmc_nodes":1,"ipmi_driver":true,)"
                           R"("dot_command":false,"sp_comm":false,"service_processors":0})" +
                           members + "}";
  return {line, value.empty() ? 1 : static_cast<int>(line.rfind(value)) + 1, message};
}

INSTANTIATE_TEST_SUITE_P(
    OfVersion2, BadRecordingHeader,
    testing::Values(
        OfVersion2("", "", "found no \"source\", expected an object"),
        OfVersion2(R"(,"source":"sim")", R"("sim")", "found a string for \"source\", expected an object"),
        OfVersion2(R"(,"source":{})", "", "found no \"sp\", expected an array of strings"),
        OfVersion2(R"(,"source":{"sp":"sim"})", R"("sim")", "found a string for \"sp\", expected an array of strings"),
        OfVersion2(R"(,"source":{"sp":["sim",7]})", R"(["sim",7])",
                   "found an integer in \"sp\", expected an array of strings"),
        OfVersion2(
            R"(,"source":{"sp":[],"target":"","simulatd":true})", R"("simulatd")",
            "found the unknown member \"simulatd\", expected one of sp, target, simulated, recorded, server; did "
            "you mean \"simulated\"?"),
        OfVersion2(R"(,"source":{"sp":[],"target":"","simulated":1})", "1}",
                   "found an integer for \"simulated\", expected true or false"),
        OfVersion2(R"(,"source":{"sp":[],"target":"","simulated":true,"server":{"name":""}})", R"("name")",
                   "found the unknown member \"name\", expected one of serial, uuid"),
        OfVersion2(R"(,"source":{"sp":[],"target":"","simulated":true})", "",
                   "found no \"classes\", expected an array of strings"),
        OfVersion2(R"(,"source":{"sp":[],"target":"","simulated":true},"classes":[])", "",
                   "found no \"single_request\", expected true or false"),
        OfVersion2(R"(,"source":{"sp":[],"target":"","simulated":true},"classes":[],"single_request":false)", "",
                   "found no \"schema_sha256\", expected a string")));

TEST(BadRecording, BoundsWhatWasDiscovered) {
  const auto with = [](const std::string& from, const std::string& to) {
    std::string head = kHead;
    return Refusal(head.replace(head.find(from), from.size(), to));
  };
  EXPECT_THAT(with("\"bmc_nodes\":1", "\"bmc_nodes\":1025"),
              testing::HasSubstr("found 1025 for \"bmc_nodes\", expected an integer from 0 to 1024"));
  EXPECT_THAT(with("processors\":1", "processors\":-1"),
              testing::HasSubstr("found -1 for \"service_processors\", expected an integer from 0 to 65535"));
  EXPECT_THAT(with("minutes\":0", "minutes\":1440"),
              testing::HasSubstr("found 1440 for \"utc_offset_minutes\", expected an integer from -1439 to 1439"));
  EXPECT_THAT(with("\"sp_comm\":true", "\"sp_comm\":1"),
              testing::HasSubstr("found an integer for \"sp_comm\", expected true or false"));
}

TEST(BadRecording, DistinguishesAnotherFileFromACutRecording) {
  EXPECT_THAT(Refusal("machine_type = \"6203\""), testing::StartsWith("r.jsonl:1:1: error: cannot read JSON: "));
  EXPECT_THAT(Refusal("\n"), testing::StartsWith("r.jsonl:1:1: error: cannot read JSON: "));
}

TEST(BadRecording, LimitsTheMemoryOfALine) {
  const auto head = [](const std::string& value) {
    return kHead.substr(0, kHead.size() - 2) + ",\"x\":" + value + "}\n";
  };
  EXPECT_THAT(Refusal(head("[[[[5]]]]")),
              testing::StartsWith(
                  "r.jsonl:1:1: error: found values nested too deeply, expected at most one object in another\n"));
  EXPECT_THAT(Refusal(head("[[[5]]]")), testing::HasSubstr("found the unknown member \"x\""));
  std::string many = "[5";
  for (int i = 0; i < 10'000; ++i) many += ",5";
  EXPECT_THAT(
      Refusal(head(many + "]")),
      testing::StartsWith("r.jsonl:1:1: error: found more than 10000 values in one line, expected at most 10000\n"));
}

TEST(BadRecording, MayBeMissing) {
  TMemoryReader reader;
  ExpectHostError(EFailure::kAbsent, "cannot open none.jsonl: No such file or directory",
                  [&] { TCheckedRecording::Open("none.jsonl", reader); });
}

TEST(Moment, IsIso8601OrACimDatetime) {
  const auto cim = [](const std::string& text) {
    const auto moment = ParseMoment(text);
    return moment ? moment->ToString() : "none";
  };
  EXPECT_EQ(cim("2026-01-31T12:34:56+01:00"), "20260131123456.000000+060");
  EXPECT_EQ(cim("2026-01-31T12:34:56.5-12:30"), "20260131123456.500000-750");
  EXPECT_EQ(cim("2026-01-31T12:34:56.123456Z"), "20260131123456.123456+000");
  EXPECT_EQ(cim("20260131123456.000789-210"), "20260131123456.000789-210");
  EXPECT_EQ(cim("2026-01-31T12:34:56.1234567Z"), "none");
  EXPECT_EQ(cim("2026-01-31T12:34:56"), "none");
  EXPECT_EQ(cim("2026-01-31T24:34:56Z"), "none");
  EXPECT_EQ(cim("2026-01-31T12:34:56+01:60"), "none");
  EXPECT_EQ(cim(""), "none");
}

}  // namespace
}  // namespace tests
