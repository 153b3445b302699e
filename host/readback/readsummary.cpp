// What a result says besides its instances.
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/text.h"
#include "host/meaning/words.h"
#include "host/output/planturns.h"
#include "host/readback/readparts.h"

namespace velhost {

namespace {

using EKind = TJsonCursor::EKind;

constexpr std::uint64_t kAny64Bits = std::numeric_limits<std::uint64_t>::max();
constexpr std::int64_t kAnySigned = std::numeric_limits<std::int64_t>::max();
constexpr int kAnyInt = std::numeric_limits<int>::max();
constexpr int kLastExitStatus = 255;

// Reads an object whose members are all strings; `texts` is parallel to the names.
void ReadTextMembers(TJsonCursor& json, const std::vector<std::string_view>& names, std::string_view what,
                     const std::vector<std::string*>& texts) {
  TJsonObject object(json, names, what);
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (names[i] == name) *texts[i] = ReadText(json);
    }
  }
}

void ReadRun(TJsonCursor& json, TReadResult& result) {
  static const std::vector<std::string_view> kMembers = {"id", "started", "elapsed_ms", "host", "velhost", "labels"};
  TJsonObject object(json, kMembers, "a run");
  TRunFacts& run = result.header.run;
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "labels") {
      run.labels = ReadLabels(json);
    } else if (name == "elapsed_ms") {
      result.elapsedMs = json.Signed(0, kAnySigned);
    } else {
      (name == "id"        ? run.id
       : name == "started" ? run.started
       : name == "host"    ? run.host
                           : run.velhost) = ReadText(json);
    }
  }
  object.Require({"id", "started", "elapsed_ms", "host", "velhost", "labels"});
}

void ReadSource(TJsonCursor& json, TSourceFacts& source) {
  static const std::vector<std::string_view> kMembers = {"sp", "target", "simulated", "recorded", "server"};
  static const std::vector<std::string_view> kServerMembers = {"serial", "uuid"};
  TJsonObject object(json, kMembers, "a source");
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "sp") {
      source.sp = ReadTexts(json);
    } else if (name == "simulated") {
      source.simulated = json.Boolean();
    } else if (name == "server") {
      ReadTextMembers(json, kServerMembers, "a server", {&source.serial, &source.uuid});
    } else {
      (name == "target" ? source.target : source.recorded) = ReadText(json);
    }
  }
  object.Require({"sp", "target", "simulated"});
}

void ReadSchema(TJsonCursor& json, TSchemaFacts& schema) {
  static const std::vector<std::string_view> kMembers = {"paths", "sha256", "example"};
  TJsonObject object(json, kMembers, "a schema");
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "paths") {
      schema.paths = ReadTexts(json);
    } else if (name == "sha256") {
      schema.sha256 = ReadText(json);
    } else {
      schema.example = json.Boolean();
    }
  }
  object.Require({"paths", "sha256", "example"});
}

void ReadPlugin(TJsonCursor& json, TPluginFacts& plugin) {
  static const std::vector<std::string_view> kMembers = {"name", "version", "interface_version"};
  ReadTextMembers(json, kMembers, "a plugin", {&plugin.name, &plugin.version, &plugin.interfaceVersion});
}

TReason ReadReason(TJsonCursor& json) {
  static const std::vector<std::string_view> kMembers = {"code", "class", "count", "message"};
  TJsonObject object(json, kMembers, "a reason");
  TReason reason;
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "code") {
      reason.code = ReadWord(json, EReason::kNothingRead, &NameOfReason);
    } else if (name == "count") {
      reason.count = json.Unsigned(1, kAny64Bits);
    } else {
      (name == "class" ? reason.className : reason.message) = ReadText(json);
    }
  }
  object.Require({"code", "count", "message"});
  return reason;
}

TReadFailure ReadFailure(TJsonCursor& json) {
  static const std::vector<std::string_view> kMembers = [] {
    std::vector<std::string_view> names = {"class", "key", "property", "address", "index", "service_processor",
                                           "node",  "kind"};
    names.insert(names.end(), kHowMembers.begin(), kHowMembers.end());
    return names;
  }();
  TJsonObject object(json, kMembers, "a failed exchange");
  TReadFailure failure;
  THowReader how;
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (how.Take(json, name)) continue;
    if (name == "key") {
      failure.key = ReadKey(json, false);
    } else if (name == "kind") {
      failure.kind = ReadWord(json, EExchangeKind::kOther, &NameOfKind);
    } else if (name == "address") {
      failure.address = static_cast<std::uint32_t>(ReadHex(json, {6}).value);
    } else if (name == "index") {
      json.Unsigned(0, 0xFFFF);
    } else if (name == "node" || name == "service_processor") {
      failure.owner = static_cast<int>(json.Signed(0, kAnyInt));
    } else {
      (name == "class" ? failure.className : failure.property) = ReadText(json);
    }
  }
  object.Require({"class", "kind", failure.kind == EExchangeKind::kDot ? "service_processor" : "node"});
  failure.how = how.How(json, object.Place());
  return failure;
}

void ReadExchanges(TJsonCursor& json, bool keepAll, TReadResult& result) {
  static const std::vector<std::string_view> kMembers = {"total", "failed"};
  TJsonObject object(json, kMembers, "the exchanges");
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "total") {
      result.exchanges = json.Unsigned(0, kAny64Bits);
      continue;
    }
    ReadList(json, "an array of failed exchanges", [&] {
      TReadFailure failure = ReadFailure(json);
      if (keepAll) result.failed.push_back(std::move(failure));
    });
  }
  object.Require({"total", "failed"});
}

TReadUnread ReadUnread(TJsonCursor& json) {
  static const std::vector<std::string_view> kMembers = {"class", "key", "origin", "code"};
  TJsonObject object(json, kMembers, "an instance that was not delivered");
  TReadUnread unread;
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "class") {
      unread.className = ReadText(json);
    } else if (name == "key") {
      unread.key = ReadKey(json, false);
    } else if (name == "origin") {
      unread.origin = ReadOrigin(json);
    } else {
      unread.code = ReadWord(json, EUnread::kDiscarded, &NameOfUnread);
    }
  }
  object.Require({"class", "key", "origin", "code"});
  return unread;
}

std::optional<std::string> ReadName(TJsonCursor& json) {
  if (json.Kind() != EKind::kNull) return ReadText(json);
  json.Null();
  return std::nullopt;
}

std::vector<TReadEvidence> ReadEvidence(TJsonCursor& json) {
  std::vector<TReadEvidence> evidence;
  std::string_view name;
  json.EnterObject("an object of registers");
  while (json.NextMember(name)) {
    TReadEvidence& one = evidence.emplace_back();
    one.registerName = std::string(name);
    CheckEntries(json, evidence.size());
    if (json.Kind() == EKind::kNull) {
      json.Null();
      continue;
    }
    const THexText value = ReadHex(json, {8, 16});
    one.value = value.value;
    one.isNarrow = value.digits == 8;
  }
  return evidence;
}

void ReadFindingMember(TJsonCursor& json, std::string_view name, TReadFinding& finding) {
  if (name == "key") {
    finding.key = ReadKey(json, false);
  } else if (name == "origin") {
    finding.origin = ReadOrigin(json);
  } else if (name == "name") {
    finding.name = ReadName(json);
  } else if (name == "value") {
    const TFieldValue value = ReadFieldValue(json);
    finding.value = value.value;
    finding.isWide = value.isWide;
  } else if (name == "text") {
    finding.text = ReadText(json);
  } else if (name == "register_value") {
    const THexText value = ReadHex(json, {8, 16});
    finding.registerValue = value.value;
    finding.isNarrow = value.digits == 8;
  } else if (name == "severity") {
    finding.severity = ReadWord(json, ESeverity::kFatal, &SeverityName);
  } else if (name == "evidence") {
    finding.evidence = ReadEvidence(json);
  } else if (name == "unknown") {
    finding.unknown = ReadTexts(json);
  } else if (name == "masked" || name == "first" || name == "known") {
    (name == "masked" ? finding.isMasked : name == "first" ? finding.isFirst : finding.isKnown) = json.Boolean();
  } else {
    (name == "class" ? finding.className : name == "register" ? finding.registerName : finding.bits) = ReadText(json);
  }
}

TReadFinding ReadFinding(TJsonCursor& json) {
  static const std::vector<std::string_view> kMembers = {"key",    "class", "origin", "register",       "bits",
                                                         "name",   "value", "text",   "register_value", "severity",
                                                         "masked", "first", "known",  "evidence",       "unknown"};
  TJsonObject object(json, kMembers, "a finding");
  TReadFinding finding;
  for (auto name = object.Next(); !name.empty(); name = object.Next()) ReadFindingMember(json, name, finding);
  object.Require(
      {"key", "class", "register", "bits", "name", "value", "register_value", "severity", "masked", "first"});
  return finding;
}

void ReadLists(TJsonCursor& json, std::string_view name, bool keepAll, TReadResult& result) {
  if (name == "reasons") {
    ReadList(json, "an array of reasons", [&] { result.reasons.push_back(ReadReason(json)); });
  } else if (name == "exchanges") {
    ReadExchanges(json, keepAll, result);
  } else if (name == "unread") {
    ReadList(json, "an array of instances", [&] { result.unread.push_back(ReadUnread(json)); });
  } else {
    ReadList(json, "an array of findings", [&] { result.findings.push_back(ReadFinding(json)); });
  }
}

}  // namespace

const std::vector<std::string_view>& ResultMembers() {
  static const std::vector<std::string_view> kMembers = {
      "run",     "source",  "machine_type", "plugin",   "schema", "status",   "exit_status",
      "message", "reasons", "exchanges",    "findings", "unread", "filtered", "format_version"};
  return kMembers;
}

void ReadResultMember(TJsonCursor& json, std::string_view name, bool keepAll, TReadResult& result) {
  if (name == "run") {
    ReadRun(json, result);
  } else if (name == "source") {
    ReadSource(json, result.header.source);
  } else if (name == "machine_type") {
    result.header.machineType = ReadText(json);
  } else if (name == "plugin") {
    ReadPlugin(json, result.header.plugin);
  } else if (name == "schema") {
    ReadSchema(json, result.header.schema);
  } else if (name == "status") {
    result.status = ReadWord(json, EResultStatus::kFailed, &NameOfStatus);
  } else if (name == "exit_status") {
    result.exitStatus = static_cast<int>(json.Signed(0, kLastExitStatus));
  } else if (name == "message") {
    result.message = ReadText(json);
  } else if (name == "filtered") {
    result.isFiltered = json.Boolean();
  } else if (name == "format_version") {
    json.Unsigned(2, 2);
  } else {
    ReadLists(json, name, keepAll, result);
  }
}

}  // namespace velhost
