// The formats `json` and `jsonl`: an instance collection modelled on CIM-RS (DSP0211), as one object or as one object
// per line, version 2. instance-collection.schema.json describes them.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/output/jsontext.h"
#include "host/output/planturns.h"
#include "host/output/resulttext.h"
#include "host/output/writers.h"

namespace velhost {

namespace {

/// Writes what `json` and `jsonl` have in common.
class TJsonResult {
 public:
  enum class ELayout {
    kDocument,  ///< long lists have a line for each entry
    kLines      ///< no line breaks, and the run's identity in each instance
  };

  TJsonResult(ITextSink& sink, ELayout layout) : json_(sink), layout_(layout) {}

  /// Whether the instance belongs to the result. With findings only, one without a finding does so if something of it
  /// could not be read, because nothing else in the document says what.
  bool IsWanted(const TInstanceFacts& facts) const {
    return !header_.onlyFindings || !facts.findings.empty() ||
           !std::all_of(facts.missing.begin(), facts.missing.end(),
                        [](const TMissing& missing) { return IsAbsent(missing); });
  }
  /// Keeps the header and writes nothing.
  void SetHeader(const TResultHeader& header) { header_ = header; }
  /// "format_version" to "schema".
  void Header();
  /// {"kind":"instance",...}
  void Instance(const TInstance& instance, const TInstanceFacts& facts);
  /// "status" to "run".
  void Summary(const TResultSummary& summary);
  TJsonText& Text() { return json_; }

 private:
  void NewLine();
  void RunIdentity();
  void Labels();
  void Run(std::int64_t elapsedMs);
  void Source(const TSourceFacts& source);
  void Server(const TSourceFacts& source);
  void Plugin(const TPluginFacts& plugin);
  void Schema(const TSchemaFacts& schema);
  void Properties(const TInstance& instance);
  void Registers(const TInstance& instance, const std::vector<TRegisterFacts>& registers);
  void Reason(const TReason& reason);
  void Exchanges(const TResultSummary& summary, const TPlanTurns& turns);
  void Failure(const TExchangeFailure& failure, const TPlanTurns& turns);
  void Unread(const TUnread& unread, const TPlanTurns& turns);
  void Findings(const std::vector<TFinding>& findings);

  TJsonText json_;
  ELayout layout_;
  TResultHeader header_;
};

/// Writes one object incrementally: the instances precede the status, which is only known at the end.
class TJsonWriter : public IResultWriter {
 public:
  explicit TJsonWriter(ITextSink& sink) : result_(sink, TJsonResult::ELayout::kDocument) {}
  void Begin(const TResultHeader& header) override;
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

 private:
  TJsonResult result_;
  bool first_ = true;
};

/// Writes a line for each instance and flushes it at once. The last line has the kind "summary" and the members that
/// `json` has besides its instances. Every line names its run.
class TJsonLinesWriter : public IResultWriter {
 public:
  explicit TJsonLinesWriter(ITextSink& sink) : result_(sink, TJsonResult::ELayout::kLines) {}
  void Begin(const TResultHeader& header) override { result_.SetHeader(header); }
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

 private:
  TJsonResult result_;
};

void AppendStrings(TJsonText& json, const std::vector<std::string>& texts) {
  json.Raw('[');
  AppendSeparated(json, texts, [&json](const std::string& text) { json.String(text); });
  json.Raw(']');
}

}  // namespace

void TJsonResult::NewLine() {
  if (layout_ == ELayout::kDocument) json_.Raw('\n');
}

void TJsonResult::Header() {
  json_.Raw(R"("format_version":2,)");
  if (layout_ == ELayout::kLines) RunIdentity();
  NewLine();
  Source(header_.source);
  NewLine();
  json_.Member("machine_type", header_.machineType);
  json_.Raw(',');
  NewLine();
  Plugin(header_.plugin);
  NewLine();
  Schema(header_.schema);
  if (!header_.onlyFindings) return;
  NewLine();
  json_.Raw(R"("filtered":true,)");
}

// With a trailing comma.
void TJsonResult::RunIdentity() {
  json_.Member("run_id", header_.run.id);
  json_.Raw(',');
  Labels();
  json_.Raw(',');
}

void TJsonResult::Labels() {
  json_.Raw(R"("labels":{)");
  AppendSeparated(json_, header_.run.labels, [this](const auto& label) { json_.Member(label.first, label.second); });
  json_.Raw('}');
}

void TJsonResult::Source(const TSourceFacts& source) {
  json_.Raw(R"("source":{"sp":)");
  AppendStrings(json_, source.sp);
  json_.Raw(',');
  json_.Member("target", source.target);
  json_.Raw(source.simulated ? R"(,"simulated":true)" : R"(,"simulated":false)");
  if (!source.recorded.empty()) {
    json_.Raw(',');
    json_.Member("recorded", source.recorded);
  }
  Server(source);
  json_.Raw("},");
}

void TJsonResult::Server(const TSourceFacts& source) {
  if (source.serial.empty() && source.uuid.empty()) return;
  json_.Raw(R"(,"server":{)");
  if (!source.serial.empty()) json_.Member("serial", source.serial);
  if (!source.serial.empty() && !source.uuid.empty()) json_.Raw(',');
  if (!source.uuid.empty()) json_.Member("uuid", source.uuid);
  json_.Raw('}');
}

void TJsonResult::Plugin(const TPluginFacts& plugin) {
  json_.Raw(R"("plugin":{)");
  json_.Member("name", plugin.name);
  json_.Raw(',');
  json_.Member("version", plugin.version);
  json_.Raw(',');
  json_.Member("interface_version", plugin.interfaceVersion);
  json_.Raw("},");
}

void TJsonResult::Schema(const TSchemaFacts& schema) {
  json_.Raw(R"("schema":{"paths":)");
  AppendStrings(json_, schema.paths);
  json_.Raw(',');
  json_.Member("sha256", schema.sha256);
  json_.Raw(schema.example ? R"(,"example":true},)" : R"(,"example":false},)");
}

void TJsonResult::Instance(const TInstance& instance, const TInstanceFacts& facts) {
  json_.Raw(R"({"kind":"instance",)");
  json_.Member("class", instance.Class().Name());
  json_.Raw(',');
  if (layout_ == ELayout::kLines) RunIdentity();
  json_.Member("key", facts.key);
  if (facts.origin) {
    json_.Raw(',');
    AppendOrigin(json_, *facts.origin);
  }
  if (facts.file) {
    json_.Raw(',');
    AppendFile(json_, *facts.file);
  }
  if (!facts.missing.empty()) {
    json_.Raw(R"(,"incomplete":true,"missing":[)");
    AppendSeparated(json_, facts.missing, [this](const TMissing& missing) { AppendMissing(json_, missing); });
    json_.Raw(']');
  }
  Properties(instance);
  if (facts.registers) Registers(instance, *facts.registers);
  json_.Raw('}');
}

void TJsonResult::Properties(const TInstance& instance) {
  json_.Raw(R"(,"properties":{)");
  bool first = true;
  const auto& properties = instance.Class().Properties();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (!instance.IsSet(i)) continue;
    if (!first) json_.Raw(',');
    first = false;
    json_.Name(properties[i]->Definition().name);
    json_.Value(instance.Value(i));
  }
  json_.Raw('}');
}

void TJsonResult::Registers(const TInstance& instance, const std::vector<TRegisterFacts>& registers) {
  const auto& properties = instance.Class().Properties();
  json_.Raw(R"(,"registers":{)");
  AppendSeparated(json_, registers, [&](const TRegisterFacts& facts) {
    json_.Name(properties.at(facts.property)->Definition().name);
    AppendRegister(json_, facts);
  });
  json_.Raw('}');
}

void TJsonResult::Summary(const TResultSummary& summary) {
  const TPlanTurns turns(summary.plan);
  json_.Member("status", NameOfStatus(summary.status));
  json_.Raw(R"(,"exit_status":)");
  json_.Signed(summary.exitStatus);
  json_.Raw(',');
  if (summary.status != EResultStatus::kComplete) {
    json_.Member("message", summary.message);
    json_.Raw(',');
  }
  NewLine();
  json_.Raw(R"("reasons":[)");
  AppendSeparated(json_, summary.reasons, [this](const TReason& reason) { Reason(reason); });
  json_.Raw("],");
  NewLine();
  Findings(summary.findings);
  Exchanges(summary, turns);
  json_.Raw(R"("unread":[)");
  AppendSeparated(json_, summary.unread, [&](const TUnread& unread) { Unread(unread, turns); });
  json_.Raw("],");
  NewLine();
  Run(summary.elapsedMs);
}

void TJsonResult::Reason(const TReason& reason) {
  NewLine();
  json_.Raw('{');
  json_.Member("code", NameOfReason(reason.code));
  json_.Raw(',');
  if (!reason.className.empty()) {
    json_.Member("class", reason.className);
    json_.Raw(',');
  }
  json_.Raw(R"("count":)");
  json_.Unsigned(reason.count);
  json_.Raw(',');
  json_.Member("message", reason.message);
  json_.Raw('}');
}

void TJsonResult::Findings(const std::vector<TFinding>& findings) {
  json_.Raw(R"("findings":[)");
  AppendSeparated(json_, findings, [this](const TFinding& finding) {
    NewLine();
    AppendFinding(json_, finding);
  });
  json_.Raw("],");
  NewLine();
}

void TJsonResult::Exchanges(const TResultSummary& summary, const TPlanTurns& turns) {
  json_.Raw(R"("exchanges":{"total":)");
  json_.Unsigned(summary.exchanges);
  json_.Raw(R"(,"failed":[)");
  bool first = true;
  for (const TExchangeFailure& failure : summary.failed) {
    for (std::uint32_t i = 0; i < failure.repeat; ++i) {
      if (!first) json_.Raw(',');
      first = false;
      Failure(failure, turns);
    }
  }
  json_.Raw("]},");
  NewLine();
}

void TJsonResult::Failure(const TExchangeFailure& failure, const TPlanTurns& turns) {
  const bool isDot = failure.kind == EExchangeKind::kDot;
  NewLine();
  json_.Raw('{');
  json_.Member("class", turns.ClassName(failure.turn));
  json_.Raw(',');
  if (failure.isPlaced && !isDot) {
    json_.Member("key", turns.Key(failure.turn, failure.place));
    json_.Raw(',');
  }
  if (const std::string_view property = turns.PropertyOf(failure); !property.empty()) {
    json_.Member("property", property);
    json_.Raw(',');
  }
  if (failure.address) {
    json_.Raw(R"("address":)");
    AppendAddress(json_, *failure.address);
    json_.Raw(',');
  }
  json_.Raw(isDot ? R"("service_processor":)" : R"("node":)");
  json_.Signed(failure.owner);
  json_.Raw(',');
  json_.Member("kind", NameOfKind(failure.kind));
  json_.Raw(',');
  AppendHow(json_, failure.how);
  json_.Raw('}');
}

void TJsonResult::Unread(const TUnread& unread, const TPlanTurns& turns) {
  NewLine();
  json_.Raw('{');
  json_.Member("class", turns.ClassName(unread.turn));
  json_.Raw(',');
  json_.Member("key", turns.Key(unread.turn, unread.place));
  json_.Raw(',');
  AppendOrigin(json_, turns.Origin(unread.turn, unread.place));
  json_.Raw(',');
  json_.Member("code", NameOfUnread(unread.code));
  json_.Raw('}');
}

void TJsonResult::Run(std::int64_t elapsedMs) {
  const TRunFacts& run = header_.run;
  json_.Raw(R"("run":{)");
  json_.Member("id", run.id);
  json_.Raw(',');
  json_.Member("started", run.started);
  json_.Raw(R"(,"elapsed_ms":)");
  json_.Signed(elapsedMs);
  json_.Raw(',');
  json_.Member("host", run.host);
  json_.Raw(',');
  json_.Member("velhost", run.velhost);
  json_.Raw(',');
  Labels();
  json_.Raw('}');
}

void TJsonWriter::Begin(const TResultHeader& header) {
  result_.SetHeader(header);
  result_.Text().Raw(R"({"kind":"instancecollection",)");
  result_.Header();
  result_.Text().Raw("\n\"instances\":[");
}

void TJsonWriter::Instance(const TInstance& instance, const TInstanceFacts& facts) {
  if (!result_.IsWanted(facts)) return;
  result_.Text().Raw(first_ ? "\n" : ",\n");
  first_ = false;
  result_.Instance(instance, facts);
}

void TJsonWriter::End(const TResultSummary& summary) {
  result_.Text().Raw("\n],\n");
  result_.Summary(summary);
  result_.Text().Raw("}\n");
  result_.Text().Flush();
}

void TJsonLinesWriter::Instance(const TInstance& instance, const TInstanceFacts& facts) {
  if (!result_.IsWanted(facts)) return;
  result_.Instance(instance, facts);
  result_.Text().Raw('\n');
  result_.Text().Flush();
}

void TJsonLinesWriter::End(const TResultSummary& summary) {
  result_.Text().Raw(R"({"kind":"summary",)");
  result_.Header();
  result_.Summary(summary);
  result_.Text().Raw("}\n");
  result_.Text().Flush();
}

std::unique_ptr<IResultWriter> MakeJsonWriter(ITextSink& sink) { return std::make_unique<TJsonWriter>(sink); }

std::unique_ptr<IResultWriter> MakeJsonLinesWriter(ITextSink& sink) { return std::make_unique<TJsonLinesWriter>(sink); }

}  // namespace velhost
