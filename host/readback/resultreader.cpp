#include "host/readback/resultreader.h"

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/readback/readparts.h"

namespace velhost {

namespace {

constexpr std::string_view kDocument = "instancecollection";
constexpr std::string_view kInstance = "instance";
constexpr std::string_view kSummary = "summary";
constexpr std::string_view kVersion1 =
    "found a result of version 1, expected version 2; if the run was recorded, its recording can be read instead";

std::vector<std::string_view> MembersAnd(std::initializer_list<std::string_view> more) {
  std::vector<std::string_view> names = more;
  names.insert(names.end(), ResultMembers().begin(), ResultMembers().end());
  return names;
}

// What is unknown of a result that was cut is filled with values that every form can show.
void FillUnknown(TReadResult& result) {
  const auto fill = [](std::string& text, const char* filler) {
    if (text.empty()) text = filler;
  };
  TResultHeader& header = result.header;
  fill(header.run.id, "00000000-0000-4000-8000-000000000000");
  fill(header.run.started, "1970-01-01T00:00:00.000+00:00");
  fill(header.run.velhost, "unknown");
  fill(header.source.target, "unknown");
  if (header.source.sp.empty()) header.source.sp.emplace_back("unknown");
  if (header.schema.sha256.empty()) header.schema.sha256 = std::string(64, '0');
  result.status = EResultStatus::kFailed;
  result.exitStatus = 65;
  result.message = "the result was cut after " + Counted(result.instances, "instance");
}

}  // namespace

// What the first object says of the whole text.
struct TResultReader::TFirstObject {
  std::string kind;
  bool hasVersion = false;
  bool hasKey = false;
  TJsonPlace place;
};

TResultReader::TResultReader(const std::string& path, TStoredBytes text, EReadDetail detail, ISourceReader* reader,
                             const TInstanceCallback& onInstance)
    : path_(path), json_(path, std::move(text), reader), detail_(detail) {
  const TFirstObject first = LookAtFirst();
  isLines_ = first.kind != kDocument;
  const bool isOld = first.kind == kInstance ? !first.hasKey : !first.hasVersion;
  if (first.kind != kDocument && first.kind != kInstance && first.kind != kSummary) {
    json_.FailAt(first.place, first.kind.empty() ? "found an object without \"kind\", expected a result"
                                                 : "found the kind " + Quoted(first.kind) + ", expected a result");
  }
  if (isOld) json_.FailAt(first.place, std::string(kVersion1));
  json_.GoTo({});
  CheckAll(onInstance);
  isChecked_ = true;
}

// velhost writes these members first, so little is read twice.
TResultReader::TFirstObject TResultReader::LookAtFirst() {
  TFirstObject first;
  first.place = json_.Place();
  std::string_view name;
  try {
    json_.EnterObject("a result, which begins with {");
    while (json_.NextMember(name)) {
      first.hasVersion = first.hasVersion || name == "format_version";
      first.hasKey = first.hasKey || name == "key";
      if (name == "format") json_.FailAt(first.place, "found a recording, expected a result");
      if (name == "kind") {
        first.kind = ReadText(json_);
      } else if (name == "format_version") {
        const std::uint64_t version = json_.Number("a version").magnitude;
        if (version == 1) json_.Fail(std::string(kVersion1));
        if (version != 2)
          json_.Fail("found version " + std::to_string(version) + ", expected version 2, which this velhost reads");
      } else {
        json_.Skip();
      }
      if (!first.kind.empty() && (first.hasVersion || first.hasKey)) break;
    }
  } catch (const TEndOfJson&) {
    if (first.kind.empty()) throw;
    first.hasVersion = first.hasVersion || first.kind == kSummary;
  }
  return first;
}

void TResultReader::CheckAll(const TInstanceCallback& onInstance) {
  try {
    if (isLines_) {
      ReadLines(onInstance);
    } else {
      ReadDocument(onInstance);
    }
    if (!json_.IsAtEnd()) json_.FailAt(json_.Place(), "found more text, expected the end of the result");
  } catch (const TEndOfJson& end) {
    NoteCut(end);
  }
}

void TResultReader::NoteCut(const TDiagnosedError& end) {
  result_.isCut = true;
  result_.isServerKnown = !result_.header.schema.sha256.empty();
  if (isLines_ && result_.header.run.id.empty()) {
    result_.header.run.id = runId_;
    result_.header.run.labels = labels_;
  }
  FillUnknown(result_);
  cutWarning_ = end.Diagnostic();
  cutWarning_->severity = EDiagnosticSeverity::kWarning;
  cutWarning_->message =
      "the result was cut here; it is read up to its last whole instance, " + Counted(result_.instances, "instance");
}

void TResultReader::ReadDocument(const TInstanceCallback& onInstance) {
  static const std::vector<std::string_view> kMembers = MembersAnd({"kind", "instances"});
  TJsonObject object(json_, kMembers, "a result");
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "kind") {
      json_.Text("a kind");
    } else if (name == "instances") {
      instances_ = json_.Place();
      ReadInstances(onInstance);
    } else {
      ReadResultMember(json_, name, detail_ == EReadDetail::kAll, result_);
    }
  }
  object.Require({"format_version", "run", "source", "machine_type", "plugin", "schema", "status", "exit_status",
                  "reasons", "exchanges", "unread", "instances"});
}

void TResultReader::ReadInstances(const TInstanceCallback& onInstance) {
  json_.EnterArray("an array of instances");
  while (json_.NextElement()) {
    ReadOne(onInstance);
    ++result_.instances;
  }
}

void TResultReader::ReadOne(const TInstanceCallback& onInstance) {
  const TJsonPlace place = json_.Place();
  TLineIdentity identity;
  const EProperties compared = isChecked_ ? EProperties::kCheckedBefore : EProperties::kCaptureBytes;
  ReadInstance(json_, detail_ == EReadDetail::kAll ? EProperties::kAll : compared, isLines_ ? &identity : nullptr,
               instance_);
  if (isLines_) {
    if (!runId_.empty() && runId_ != identity.runId) {
      json_.FailAt(place, "found a line of the run " + Quoted(identity.runId) + ", expected the run " + Quoted(runId_));
    }
    runId_ = std::move(identity.runId);
    labels_ = std::move(identity.labels);
  }
  if (onInstance) onInstance(instance_, place);
}

void TResultReader::ReadLines(const TInstanceCallback& onInstance) {
  static const std::vector<std::string_view> kMembers = MembersAnd({"kind", "run_id", "labels"});
  for (;;) {
    const TJsonPlace place = json_.Place();
    const std::string kind = LookAtFirst().kind;
    json_.GoTo(place);
    if (kind == kSummary) break;
    ReadOne(onInstance);
    ++result_.instances;
  }
  TJsonObject object(json_, kMembers, "a summary");
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "kind" || name == "run_id") {
      json_.Text("a string");
    } else if (name == "labels") {
      ReadLabels(json_);
    } else {
      ReadResultMember(json_, name, detail_ == EReadDetail::kAll, result_);
    }
  }
  object.Require({"format_version", "run_id", "labels", "run", "source", "machine_type", "plugin", "schema", "status",
                  "exit_status", "reasons", "exchanges", "unread"});
  if (!runId_.empty() && runId_ != result_.header.run.id) {
    json_.FailAt(object.Place(), "found the summary of the run " + Quoted(result_.header.run.id) +
                                     ", expected the run " + Quoted(runId_));
  }
}

void TResultReader::ForEach(const TInstanceCallback& onInstance) {
  json_.GoTo(instances_);
  if (result_.instances == 0) return;
  if (!isLines_) json_.EnterArray("an array of instances");
  for (std::uint64_t i = 0; i < result_.instances; ++i) {
    if (!isLines_) json_.NextElement();
    ReadOne(onInstance);
  }
}

const TReadInstance& TResultReader::ReadAt(const TJsonPlace& place) {
  json_.GoTo(place);
  ReadOne({});
  return instance_;
}

}  // namespace velhost
