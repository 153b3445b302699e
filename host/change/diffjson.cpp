// The JSON form of differences.
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/change/diffwriters.h"
#include "host/meaning/words.h"
#include "host/output/jsontext.h"
#include "host/output/planturns.h"

namespace velhost {

namespace {

constexpr unsigned kWidestNumber = 32;

class TDiffJson {
 public:
  explicit TDiffJson(ITextSink& sink) : json_(sink) {}

  void Write(const TDifferences& found) {
    json_.Raw(R"({"kind":"diff","format_version":2,"exit_status":)");
    json_.Signed(StatusOf(found));
    json_.Raw(",\n");
    Side("before", found.before);
    Side("after", found.after);
    if (found.HasOtherMachineType()) Pair("machine_type", found.before.machineType, found.after.machineType);
    if (found.HasOtherSchema()) Pair("schema_sha256", found.before.schemaSha256, found.after.schemaSha256);
    List("keys", found.keys, [this](const TKeyChange& change) { Key(change); });
    List("registers", found.registers, [this](const TRegisterChange& change) { Register(change); });
    List("counters", found.counters, [this](const TCounterChange& change) { Counter(change); });
    List("files", found.files, [this](const TFileChange& change) { File(change); });
    List("missing", found.missing, [this](const TMissingChange& change) { Missing(change); });
    List("findings", found.findings, [this](const TFindingChange& change) { Finding(change); });
    List("uncompared", found.uncompared, [this](const TUncompared& one) { Uncompared(one); });
    List(
        "classes", found.unasked, [this](const TUnaskedClass& one) { Unasked(one); }, "");
    json_.Raw("}\n");
    json_.Flush();
  }

 private:
  template <typename TItems, typename TWrite>
  void List(std::string_view name, const TItems& items, const TWrite& write, std::string_view end = ",") {
    json_.Name(name);
    json_.Raw('[');
    AppendSeparated(json_, items, [&](const auto& item) {
      json_.Raw("\n{");
      write(item);
      json_.Raw('}');
    });
    json_.Raw(']');
    json_.Raw(end);
    json_.Raw('\n');
  }
  void Comma() { json_.Raw(','); }
  void Text(std::string_view name, std::string_view text) {
    Comma();
    json_.Member(name, text);
  }
  void Boolean(std::string_view name, bool value) {
    Comma();
    json_.Name(name);
    json_.Raw(value ? "true" : "false");
  }
  void Number(std::string_view name, std::uint64_t value) {
    Comma();
    json_.Name(name);
    json_.Unsigned(value);
  }
  // As fields have their values: a number, or hex text if it is wider than 32 bits.
  void Value(std::string_view name, std::uint64_t value, unsigned width) {
    if (width <= kWidestNumber) return Number(name, value);
    Hex(name, value, 64);
  }
  void Hex(std::string_view name, std::uint64_t value, unsigned width) {
    Comma();
    json_.Name(name);
    json_.Hex(value, static_cast<int>(width / 8));
  }
  void Place(const std::string& className, const std::string& key) {
    json_.Member("class", className);
    Text("key", key);
  }
  void Name(const std::optional<std::string>& name) {
    if (name) return Text("name", *name);
    json_.Raw(R"(,"name":null)");
  }

  void Side(std::string_view name, const TComparedRun& run) {
    json_.Name(name);
    json_.Raw('{');
    json_.Member("run_id", run.run.id);
    Text("started", run.run.started);
    Text("target", run.source.target);
    Boolean("simulated", run.source.simulated);
    if (!run.schemaSha256.empty()) {
      Text("machine_type", run.machineType);
      Text("schema_sha256", run.schemaSha256);
    }
    Text("status", NameOfStatus(run.status));
    Boolean("cut", run.isCut);
    json_.Raw("},\n");
  }
  void Pair(std::string_view name, const std::string& before, const std::string& after) {
    json_.Name(name);
    json_.Raw('{');
    json_.Member("before", before);
    Text("after", after);
    json_.Raw("},\n");
  }
  void Key(const TKeyChange& change) {
    Place(change.className, change.key);
    Text("change", change.hasAppeared ? "appeared" : "vanished");
    Boolean("absent", change.isAbsent);
  }
  void Register(const TRegisterChange& change) {
    Place(change.className, change.key);
    Text("register", change.registerName);
    Hex("before", change.before, change.beforeWidth);
    Hex("after", change.after, change.afterWidth);
    Fields("set", change, [](const TFieldChange& field) { return field.IsSet(); });
    Fields("cleared", change, [](const TFieldChange& field) { return field.IsCleared(); });
    Fields("changed", change, [](const TFieldChange& field) { return !field.IsSet() && !field.IsCleared(); });
  }
  template <typename TIs>
  void Fields(std::string_view name, const TRegisterChange& change, const TIs& is) {
    Comma();
    json_.Name(name);
    json_.Raw('[');
    std::vector<TFieldChange> fields;
    for (const TFieldChange& field : change.fields) {
      if (is(field)) fields.push_back(field);
    }
    AppendSeparated(json_, fields, [this](const TFieldChange& field) { Field(field); });
    json_.Raw(']');
  }
  void Field(const TFieldChange& field) {
    json_.Raw('{');
    json_.Member("bits", field.bits);
    Name(field.name);
    Value("before", field.before, field.width);
    Value("after", field.after, field.width);
    if (field.beforeText) Text("before_text", *field.beforeText);
    if (field.afterText) Text("after_text", *field.afterText);
    json_.Raw('}');
  }
  void Counter(const TCounterChange& change) {
    Place(change.className, change.key);
    Text("register", change.registerName);
    if (!change.bits.empty()) {
      Text("bits", change.bits);
      Text("name", change.name);
    }
    if (!change.unit.empty()) Text("unit", change.unit);
    Value("before", change.before, change.width);
    Value("after", change.after, change.width);
    if (change.HasDifference()) {
      Value("difference", change.after - change.before, change.width);
    } else {
      json_.Raw(R"(,"reset_or_wrapped":true)");
    }
  }
  void File(const TFileChange& change) {
    Place(change.className, change.key);
    Number("before_size", change.beforeSize);
    Number("after_size", change.afterSize);
    Number("first_difference", change.firstDifference);
    if (!change.isText) return;
    json_.Raw(R"(,"lines":[)");
    AppendSeparated(json_, change.lines, [this](const TLineChange& line) {
      json_.Raw('{');
      json_.Member("change", line.isAdded ? "added" : "removed");
      Number("line", line.number);
      Text("text", line.text);
      json_.Raw('}');
    });
    json_.Raw(']');
  }
  void Missing(const TMissingChange& change) {
    Place(change.className, change.key);
    Text("property", change.property);
    Text("change", change.hasAppeared ? "appeared" : "vanished");
  }
  void Finding(const TFindingChange& change) {
    const TReadFinding& any = change.after ? *change.after : *change.before;
    Place(any.className, any.key);
    Text("register", any.registerName);
    Text("bits", any.bits);
    Name(any.name);
    Text("change", !change.before ? "new" : !change.after ? "gone" : "changed");
    if (change.before) Judgement("before", *change.before);
    if (change.after) Judgement("after", *change.after);
  }
  void Judgement(std::string_view name, const TReadFinding& finding) {
    Comma();
    json_.Name(name);
    json_.Raw('{');
    json_.Member("severity", SeverityName(finding.severity));
    Boolean("masked", finding.isMasked);
    Boolean("first", finding.isFirst);
    Value("value", finding.value, finding.isWide ? 64 : 32);
    if (finding.text) Text("text", *finding.text);
    json_.Raw('}');
  }
  void Uncompared(const TUncompared& one) {
    // The class comes first, so that the separators are the same for all.
    json_.Member("class", one.className);
    if (!one.key.empty()) Text("key", one.key);
    if (!one.what.empty()) Text("property", one.what);
    if (!one.bits.empty()) Text("bits", one.bits);
    if (one.before != EUncompared::kNot) Text("before", NameOf(one.before));
    if (one.after != EUncompared::kNot) Text("after", NameOf(one.after));
  }
  void Unasked(const TUnaskedClass& one) {
    json_.Member("class", one.className);
    Text("asked_for_by", one.askedFor == ESide::kBefore ? "before" : "after");
  }

  TJsonText json_;
};

}  // namespace

void WriteDifferencesAsJson(const TDifferences& differences, ITextSink& sink) { TDiffJson(sink).Write(differences); }

const char* NameOf(EUncompared why) {
  static constexpr std::array<const char*, 7> kNames = {"",    "unread",      "unknown-place",   "not-collected",
                                                        "cut", "not-planned", "unknown-register"};
  return kNames.at(static_cast<std::size_t>(why));
}

int StatusOf(const TDifferences& differences) {
  if (differences.Count() > 0) return 1;
  return differences.uncompared.empty() ? 0 : 3;
}

}  // namespace velhost
