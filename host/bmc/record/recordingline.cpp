#include "host/bmc/record/recordingline.h"

#include <algorithm>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <utility>

#include "host/base/digits.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/base/textdiagnostic.h"
#include "nkrovel20/tvelexception.h"

namespace velhost {

namespace {

using TJson = nlohmann::json;
using TBytes = std::vector<std::uint8_t>;
using TNames = std::initializer_list<std::string_view>;

constexpr std::size_t kLongestShownVersion = 20;
constexpr int kAnyInt = std::numeric_limits<int>::max();
constexpr std::string_view kBlanks = " \t\r\n";

/// The place of a member in a line. The line is valid JSON.
struct TMemberPlace {
  std::uint32_t name = 1;  // columns, from 1
  std::uint32_t value = 1;
};

std::size_t EndOfString(std::string_view line, std::size_t quote) {
  std::size_t end = quote + 1;
  while (end < line.size() && line[end] != '"') end += line[end] == '\\' ? 2U : 1U;
  return end;
}

/// The place of the last member of that name; the start of the line if the name is written with escapes.
TMemberPlace PlaceOfMember(std::string_view line, std::string_view name) {
  TMemberPlace place;
  for (std::size_t at = line.find('"'); at < line.size(); at = line.find('"', at)) {
    const std::size_t end = EndOfString(line, at);
    const std::size_t colon = line.find_first_not_of(kBlanks, end + 1);
    if (colon < line.size() && line[colon] == ':' && line.substr(at + 1, end - at - 1) == name) {
      const std::size_t value = std::min(line.find_first_not_of(kBlanks, colon + 1), line.size() - 1);
      place = {static_cast<std::uint32_t>(at + 1), static_cast<std::uint32_t>(value + 1)};
    }
    at = end + 1;
  }
  return place;
}

/// A line and its number, for diagnostics.
class TLineText {
 public:
  TLineText(const std::string& file, std::string_view line, std::uint32_t number)
      : file_(file), line_(line), number_(number) {}

  [[noreturn]] void Fail(std::uint32_t column, const std::string& message) const {
    TTextDiagnostic diagnostic;
    diagnostic.location = {file_, number_, column};
    diagnostic.message = message;
    SetSourceLine(diagnostic, line_);
    throw TDiagnosedError(EFailure::kMalformed, diagnostic);
  }
  [[noreturn]] void FailAt(std::string_view member, const std::string& message) const {
    Fail(PlaceOfMember(line_, member).value, message);
  }
  [[noreturn]] void FailAtName(std::string_view member, const std::string& message) const {
    Fail(PlaceOfMember(line_, member).name, message);
  }
  std::string_view Line() const { return line_; }

 private:
  const std::string& file_;
  std::string_view line_;
  std::uint32_t number_;
};

std::string Described(const TJson& value) {
  switch (value.type()) {
    case TJson::value_t::null: return "null";
    case TJson::value_t::object: return "an object";
    case TJson::value_t::array: return "an array";
    case TJson::value_t::string: return "a string";
    case TJson::value_t::boolean: return "a boolean";
    case TJson::value_t::number_float: return "a floating-point number";
    default: return "an integer";
  }
}

// The JSON library's message is "[json.exception.parse_error.101] parse error at line 1, column 5: syntax error ...",
// or the same without a place.
std::string ReasonOf(const TJson::exception& error) {
  const std::string text = error.what();
  const std::size_t name = text.find("] ");
  const std::size_t place = text.find(": ");
  if (place != std::string::npos) return text.substr(place + 2);
  return name == std::string::npos ? text : text.substr(name + 2);
}

/// The object on a line; no member may occur twice.
TJson ParseObject(const TLineText& text) {
  if (text.Line().size() > kLongestRecordingLine) {
    text.Fail(1, "found a line of more than " + std::to_string(kLongestRecordingLine) + " bytes");
  }
  std::set<std::string> names;
  std::optional<std::string> twice;
  std::size_t values = 0;
  const auto note = [&](int depth, TJson::parse_event_t event, TJson& parsed) {
    if (depth > kDeepestRecordedValue)
      text.Fail(1, "found values nested too deeply, expected at most one object in another");
    if (++values > kMostRecordedValues) {
      text.Fail(1, "found more than " + std::to_string(kMostRecordedValues) + " values in one line, expected at most " +
                       std::to_string(kMostRecordedValues));
    }
    if (event == TJson::parse_event_t::key && !names.insert(parsed.get<std::string>()).second) twice = parsed;
    return true;
  };
  TJson object;
  try {
    object = TJson::parse(text.Line(), note);
  } catch (const TJson::parse_error& error) {
    text.Fail(static_cast<std::uint32_t>(std::max<std::size_t>(error.byte, 1)), "cannot read JSON: " + ReasonOf(error));
  } catch (const TJson::exception& error) {
    text.Fail(1, "cannot read JSON: " + ReasonOf(error));
  }
  if (!object.is_object()) text.Fail(1, "found " + Described(object) + ", expected a JSON object");
  if (twice) text.FailAtName(*twice, "found a second " + Quoted(*twice) + ", expected each member once");
  return object;
}

/// Reads the members of one object; anything unexpected is an error at its place.
class TMembers {
 public:
  TMembers(const TLineText& text, const TJson& object) : text_(text), object_(object) {}

  void AllowOnly(TNames names) const {
    for (const auto& [name, value] : object_.items()) {
      if (std::find(names.begin(), names.end(), name) != names.end()) continue;
      const std::string_view nearest = NearestName(name, {names.begin(), names.size()});
      text_.FailAtName(name, "found the unknown member " + Quoted(name) + ", expected one of " + Listed(names, ", ") +
                                 Suggestion(nearest, "\""));
    }
  }
  bool Has(const char* name) const { return object_.contains(name); }

  std::string String(const char* name) const {
    const TJson& value = Require(name, "a string", &TJson::is_string);
    return value.get<std::string>();
  }
  bool Boolean(const char* name) const { return Require(name, "true or false", &TJson::is_boolean).get<bool>(); }

  std::int64_t Integer(const char* name, std::int64_t low, std::int64_t high) const {
    const std::string expected = "an integer from " + std::to_string(low) + " to " + std::to_string(high);
    const TJson& value = Require(name, expected, &TJson::is_number_integer);
    const bool fits = !value.is_number_unsigned() || value.get<std::uint64_t>() <= static_cast<std::uint64_t>(high);
    if (!fits || value.get<std::int64_t>() < low || value.get<std::int64_t>() > high) {
      text_.FailAt(name, "found " + value.dump() + " for " + Quoted(name) + ", expected " + expected);
    }
    return value.get<std::int64_t>();
  }
  int Int(const char* name, int low, int high) const { return static_cast<int>(Integer(name, low, high)); }

  TBytes Bytes(const char* name, std::size_t most) const {
    const std::string value = String(name);
    THexPairs pairs = ParseHexPairs(value);
    if (pairs.errorAt != std::string_view::npos) {
      const std::string found =
          pairs.errorAt < value.size() ? Quoted(value.substr(pairs.errorAt, 1)) : "the end of the text";
      text_.FailAt(name, "found " + found + " in " + Quoted(name) + ", expected pairs of hexadecimal digits");
    }
    if (pairs.bytes.size() > most) {
      text_.FailAt(name, "found " + Counted(pairs.bytes.size(), "byte") + " in " + Quoted(name) +
                             ", expected at most " + std::to_string(most));
    }
    return std::move(pairs.bytes);
  }

  std::vector<std::string> Strings(const char* name) const {
    const std::string expected = "an array of strings";
    std::vector<std::string> strings;
    for (const TJson& value : Require(name, expected, &TJson::is_array)) {
      if (!value.is_string()) {
        text_.FailAt(name, "found " + Described(value) + " in " + Quoted(name) + ", expected " + expected);
      }
      strings.push_back(value.get<std::string>());
    }
    return strings;
  }
  /// Empty if the member is absent.
  std::string OptionalString(const char* name) const { return Has(name) ? String(name) : std::string(); }

  TMembers Object(const char* name) const { return TMembers(text_, Require(name, "an object", &TJson::is_object)); }

 private:
  const TJson& Require(const char* name, const std::string& expected, bool (TJson::*is)() const noexcept) const {
    const auto found = object_.find(name);
    if (found == object_.end()) text_.Fail(1, "found no " + Quoted(name) + ", expected " + expected);
    if (!((*found).*is)()) {
      text_.FailAt(name, "found " + Described(*found) + " for " + Quoted(name) + ", expected " + expected);
    }
    return *found;
  }

  const TLineText& text_;
  const TJson& object_;
};

void ReadAnswer(const TLineText& text, const TMembers& members, int largest, TRecordedLine& line) {
  line.answered = members.Boolean("ok");
  line.us = members.Integer("us", 0, kLongestRecordedUs);
  // An exchange without an answer may have both; they are ignored.
  if (line.answered || members.Has("response")) {
    line.response = members.Bytes("response", static_cast<std::size_t>(largest));
  }
  if (line.answered || members.Has("length")) line.length = members.Int("length", 0, largest);
  if (line.kind == TRecordedLine::EKind::kDot && line.response.size() > static_cast<std::size_t>(line.length)) {
    text.FailAt("response", "found " + Counted(line.response.size(), "byte") +
                                " in \"response\", expected at most \"length\", " + std::to_string(line.length));
  }
}

void ReadIpmi(const TLineText& text, const TMembers& members, TRecordedLine& line) {
  members.AllowOnly({"kind", "node", "request", "ok", "response", "length", "us"});
  line.kind = TRecordedLine::EKind::kIpmi;
  line.node = members.Int("node", -kAnyInt, kAnyInt);
  line.request = members.Bytes("request", wire::TCommandBuffer::kSize);
  while (!line.request.empty() && line.request.back() == 0) line.request.pop_back();
  ReadAnswer(text, members, static_cast<int>(wire::TCommandBuffer::kSize), line);
}

void ReadDot(const TLineText& text, const TMembers& members, TRecordedLine& line) {
  members.AllowOnly({"kind", "sp", "command", "identifier", "parameters", "ok", "response", "length", "us"});
  line.kind = TRecordedLine::EKind::kDot;
  line.node = members.Int("sp", -kAnyInt, kAnyInt);
  line.command = static_cast<std::uint8_t>(members.Int("command", 0, 0xFF));
  line.identifier = members.Bytes("identifier", kLargestRecordedBlock);
  line.parameters = members.Bytes("parameters", kLargestRecordedBlock);
  ReadAnswer(text, members, kLargestRecordedBlock, line);
}

void ReadClock(const TLineText& text, const TMembers& members, TRecordedLine& line) {
  members.AllowOnly({"kind", "local_time"});
  line.kind = TRecordedLine::EKind::kClock;
  const std::string moment = members.String("local_time");
  line.localTime = ParseMoment(moment);
  if (!line.localTime) {
    text.FailAt("local_time",
                "found " + Quoted(moment) + " for \"local_time\", expected a time such as 2026-01-31T12:34:56+01:00");
  }
}

using TOrdered = nlohmann::ordered_json;

void AddUnlessEmpty(TOrdered& object, const char* name, const std::string& text) {
  if (!text.empty()) object[name] = text;
}

void AddRun(TOrdered& line, const TRecordedRun& run) {
  TOrdered source = {{"sp", run.source.sp}, {"target", run.source.target}, {"simulated", run.source.isSimulated}};
  AddUnlessEmpty(source, "recorded", run.source.recorded);
  TOrdered server = TOrdered::object();
  AddUnlessEmpty(server, "serial", run.source.serialNumber);
  AddUnlessEmpty(server, "uuid", run.source.uuid);
  if (!server.empty()) source["server"] = server;
  line["source"] = source;
  line["classes"] = run.classes;
  line["single_request"] = run.singleRequest;
  line["schema_sha256"] = run.schemaSha256;
}

TRecordedSource ReadSource(const TMembers& members) {
  members.AllowOnly({"sp", "target", "simulated", "recorded", "server"});
  TRecordedSource source;
  source.sp = members.Strings("sp");
  source.target = members.String("target");
  source.isSimulated = members.Boolean("simulated");
  source.recorded = members.OptionalString("recorded");
  if (!members.Has("server")) return source;
  const TMembers server = members.Object("server");
  server.AllowOnly({"serial", "uuid"});
  source.serialNumber = server.OptionalString("serial");
  source.uuid = server.OptionalString("uuid");
  return source;
}

TRecordedRun ReadRun(const TMembers& members) {
  TRecordedRun run;
  run.source = ReadSource(members.Object("source"));
  run.classes = members.Strings("classes");
  run.singleRequest = members.Boolean("single_request");
  run.schemaSha256 = members.String("schema_sha256");
  return run;
}

/// The version, after a check of the members that every recording begins with.
int ReadVersion(const TLineText& text, const TJson& object, const TMembers& members) {
  if (!members.Has("format")) text.Fail(1, "found no \"format\", expected \"velhost-recording\"");
  const std::string format = members.String("format");
  if (format != "velhost-recording") {
    text.FailAt("format", "found " + Quoted(format) + " for \"format\", expected \"velhost-recording\"");
  }
  const std::string expected = "version 1 or 2, which this velhost reads";
  if (!members.Has("version")) text.Fail(1, "found no \"version\", expected " + expected);
  const TJson& version = object["version"];
  if (!version.is_number_integer() || (version != 1 && version != 2)) {
    text.FailAt("version",
                "found version " + version.dump().substr(0, kLongestShownVersion) + ", expected " + expected);
  }
  return version.get<int>();
}

}  // namespace

std::string FormatRecordingHeader(const TRecordingHeader& header) {
  const TDiscovery& found = header.discovery;
  const TOrdered discovery = {{"bmc_nodes", found.bmcNodes},
                              {"ipmi_driver", found.ipmiDriver},
                              {"dot_command", found.dotCommands},
                              {"sp_comm", found.communicates},
                              {"service_processors", found.serviceProcessors}};
  TOrdered line = {{"format", "velhost-recording"},
                   {"version", header.run ? 2 : 1},
                   {"machine_type", header.machineType},
                   {"started", header.started},
                   {"utc_offset_minutes", header.utcOffsetMinutes}};
  if (header.run) AddRun(line, *header.run);
  line["discovery"] = discovery;
  // A machine type from SMBIOS may contain any bytes.
  return line.dump(-1, ' ', false, TOrdered::error_handler_t::replace);
}

TRecordingHeader ParseRecordingHeader(const std::string& file, std::string_view line) {
  const TLineText text(file, line, 1);
  const TJson object = ParseObject(text);
  const TMembers members(text, object);
  const bool hasRun = ReadVersion(text, object, members) == 2;
  if (hasRun) {
    members.AllowOnly({"format", "version", "machine_type", "started", "utc_offset_minutes", "source", "classes",
                       "single_request", "schema_sha256", "discovery"});
  } else {
    members.AllowOnly({"format", "version", "machine_type", "started", "utc_offset_minutes", "discovery"});
  }
  const TMembers discovery = members.Object("discovery");
  discovery.AllowOnly({"bmc_nodes", "ipmi_driver", "dot_command", "sp_comm", "service_processors"});
  TRecordingHeader header;
  header.machineType = members.String("machine_type");
  header.started = members.String("started");
  header.utcOffsetMinutes = members.Int("utc_offset_minutes", -kLargestUtcOffset, kLargestUtcOffset);
  header.discovery.bmcNodes = discovery.Int("bmc_nodes", 0, kMostRecordedNodes);
  header.discovery.ipmiDriver = discovery.Boolean("ipmi_driver");
  header.discovery.dotCommands = discovery.Boolean("dot_command");
  header.discovery.communicates = discovery.Boolean("sp_comm");
  header.discovery.serviceProcessors = discovery.Int("service_processors", 0, kMostRecordedServiceProcessors);
  if (hasRun) header.run = ReadRun(members);
  return header;
}

TRecordedLine ParseRecordedLine(const std::string& file, std::string_view line, std::uint32_t number) {
  const TLineText text(file, line, number);
  const TJson object = ParseObject(text);
  const TMembers members(text, object);
  TRecordedLine recorded;
  recorded.number = number;
  const std::string kind = members.String("kind");
  if (kind == "ipmi") {
    ReadIpmi(text, members, recorded);
  } else if (kind == "dot") {
    ReadDot(text, members, recorded);
  } else if (kind == "clock") {
    ReadClock(text, members, recorded);
  } else {
    text.FailAt("kind", "found " + Quoted(kind) + " for \"kind\", expected one of ipmi, dot, clock");
  }
  return recorded;
}

std::optional<TCIMDateTime> ParseMoment(const std::string& text) {
  static const std::regex kIso(
      R"((\d{4})-(\d\d)-(\d\d)T(\d\d):(\d\d):(\d\d)(?:\.(\d{1,6}))?(?:Z|([+-])(\d\d):([0-5]\d)))");
  std::string cim = text;
  std::smatch parts;
  if (text.size() <= 32 && std::regex_match(text, parts, kIso)) {
    const int offset = parts[8].matched ? std::stoi(parts[9]) * 60 + std::stoi(parts[10]) : 0;
    std::string micros = parts[7];
    std::string minutes = std::to_string(offset);
    micros.resize(6, '0');
    if (minutes.size() < 3) minutes.insert(0, 3 - minutes.size(), '0');
    cim = parts[1].str() + parts[2].str() + parts[3].str() + parts[4].str() + parts[5].str() + parts[6].str() + "." +
          micros + (parts[8].matched ? parts[8].str() : "+") + minutes;
  }
  try {
    return TCIMDateTime::FromString(cim);
  } catch (const TVELException&) {
    return std::nullopt;
  }
}

}  // namespace velhost
