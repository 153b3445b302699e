#include "host/output/jsonresult.h"

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "host/base/hex.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;

constexpr int kAddressBytes = 3;

int BytesOf(const TRegisterFacts& facts) { return facts.isNarrow ? 4 : 8; }

// Calls `write` for each item, with a comma between two.
template <typename TItems, typename TWrite>
void Separated(TJsonText& json, const TItems& items, const TWrite& write) {
  bool first = true;
  for (const auto& item : items) {
    if (!first) json.Raw(',');
    first = false;
    write(item);
  }
}

void Strings(TJsonText& json, const std::vector<std::string>& texts) {
  json.Raw('[');
  Separated(json, texts, [&json](const std::string& text) { json.String(text); });
  json.Raw(']');
}

void Address(TJsonText& json, std::uint32_t address) { json.Hex(address, kAddressBytes); }

void Identification(TJsonText& json, const std::array<std::uint8_t, 3>& bytes) {
  json.Raw(R"(,"identification":")");
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i > 0) json.Raw(' ');
    json.Raw(UpperHexPair(bytes.at(i)));
  }
  json.Raw('"');
}

}  // namespace

void AppendOrigin(TJsonText& json, const TOrigin& origin) {
  json.Raw(R"("origin":{)");
  json.Member("path", NameOfOriginPath(origin.path));
  json.Raw(origin.path == EPath::kJfr ? R"(,"service_processor":)" : R"(,"node":)");
  json.Signed(origin.owner);
  if (origin.chip) {
    json.Raw(R"(,"chip":)");
    json.Signed(*origin.chip);
  }
  if (origin.instance) {
    json.Raw(R"(,"instance":)");
    json.Signed(*origin.instance);
  }
  if (!origin.timeRaw.empty()) {
    json.Raw(',');
    json.Member("time_raw", origin.timeRaw);
  }
  json.Raw('}');
}

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
  Separated(json_, header_.run.labels, [this](const auto& label) { json_.Member(label.first, label.second); });
  json_.Raw('}');
}

void TJsonResult::Source(const TSourceFacts& source) {
  json_.Raw(R"("source":{"sp":)");
  Strings(json_, source.sp);
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
  Strings(json_, schema.paths);
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
  if (facts.file) File(*facts.file);
  if (!facts.missing.empty()) {
    json_.Raw(R"(,"incomplete":true,"missing":[)");
    Separated(json_, facts.missing, [this](const TMissing& missing) { Missing(missing); });
    json_.Raw(']');
  }
  Properties(instance);
  if (facts.registers) Registers(instance, *facts.registers);
  json_.Raw('}');
}

void TJsonResult::File(const TFileFacts& file) {
  json_.Raw(R"(,"file":{)");
  json_.Member("area", file.area);
  json_.Raw(R"(,"reported_size":)");
  json_.Signed(file.reportedSize);
  json_.Raw(R"(,"received":)");
  json_.Unsigned(file.received);
  json_.Raw('}');
}

void TJsonResult::Missing(const TMissing& missing) {
  json_.Raw('{');
  json_.Member("property", missing.property);
  json_.Raw(',');
  Where(missing.where);
  How(missing.how);
  json_.Raw('}');
}

// With a trailing comma.
void TJsonResult::Where(const TWhere& where) {
  if (where.address) {
    json_.Raw(R"("address":)");
    Address(json_, *where.address);
  } else if (where.addresses) {
    json_.Raw(R"("addresses":[)");
    Separated(json_, *where.addresses, [this](std::uint32_t address) { Address(json_, address); });
    json_.Raw(']');
  } else if (where.index) {
    json_.Raw(R"("index":)");
    json_.Unsigned(*where.index);
  } else if (where.offset) {
    json_.Raw(R"("offset":)");
    json_.Unsigned(*where.offset);
  } else {
    return;
  }
  json_.Raw(',');
}

void TJsonResult::How(THow how) {
  switch (how.how) {
    case EHow::kLost: return json_.Raw(R"("lost":true)");
    case EHow::kNotSent: return json_.Raw(R"("not_sent":true)");
    case EHow::kNotRecorded: return json_.Raw(R"("not_recorded":true)");
    case EHow::kCompletionCode: json_.Raw(R"("completion_code":)"); break;
    case EHow::kShort: json_.Raw(R"("short":)"); break;
    case EHow::kAnswered: json_.Raw(R"("answered":)"); break;
  }
  json_.Unsigned(how.number);
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
  Separated(json_, registers, [&](const TRegisterFacts& facts) {
    json_.Name(properties.at(facts.property)->Definition().name);
    Register(facts);
  });
  json_.Raw('}');
}

void TJsonResult::Register(const TRegisterFacts& facts) {
  if (facts.isIndex) {
    json_.Raw(R"({"index":)");
    json_.Unsigned(facts.place);
  } else {
    json_.Raw(R"({"address":)");
    Address(json_, facts.place);
  }
  json_.Raw(facts.isNarrow ? R"(,"width":32,"value":)" : R"(,"width":64,"value":)");
  json_.Hex(facts.value, BytesOf(facts));
  if (facts.identification) Identification(json_, *facts.identification);
  if (facts.upper) {
    json_.Raw(R"(,"upper":)");
    json_.Hex(*facts.upper, 4);
  }
  if (facts.folded) {
    json_.Raw(R"(,"folded":)");
    json_.Hex(*facts.folded, 4);
  }
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
  Separated(json_, summary.reasons, [this](const TReason& reason) { Reason(reason); });
  json_.Raw("],");
  NewLine();
  Exchanges(summary, turns);
  json_.Raw(R"("unread":[)");
  Separated(json_, summary.unread, [&](const TUnread& unread) { Unread(unread, turns); });
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
    Address(json_, *failure.address);
    json_.Raw(',');
  }
  json_.Raw(isDot ? R"("service_processor":)" : R"("node":)");
  json_.Signed(failure.owner);
  json_.Raw(',');
  json_.Member("kind", NameOfKind(failure.kind));
  json_.Raw(',');
  How(failure.how);
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

}  // namespace velhost
