// Differences in words.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/change/diffwriters.h"
#include "host/meaning/words.h"
#include "host/output/tablelayout.h"

namespace velhost {

namespace {

constexpr std::size_t kMostLines = 40;  // of one file

std::string WordsOf(EUncompared why) {
  static constexpr std::array<const char*, 7> kWords = {"was read",
                                                        "was not read",
                                                        "is at an unknown place",
                                                        "was not collected",
                                                        "was cut",
                                                        "is not read",
                                                        "depends on a register that was not read"};
  return kWords.at(static_cast<std::size_t>(why));
}

// "16 Unexpected completion", "16 (not described)"
std::string FieldName(const std::string& bits, const std::optional<std::string>& name) {
  return SafeText(bits + " " + name.value_or("(not described)"));
}

// "2.5 GT/s" or the number
std::string FieldText(std::uint64_t value, const std::optional<std::string>& text) {
  return text ? SafeText(*text) : std::to_string(value);
}

class TDiffText {
 public:
  TDiffText(ITextSink& sink, const TTableOptions& options) : layout_(sink, options) {}

  void Write(const TDifferences& found) {
    Sides(found);
    Section("Instances", found.keys, [this](const TKeyChange& change) { Key(change); });
    Section("Findings", found.findings, [this](const TFindingChange& change) { Finding(change); });
    Section("Registers", found.registers, [this](const TRegisterChange& change) { Register(change); });
    Section("Counters", found.counters, [this](const TCounterChange& change) { Counter(change); });
    Section("Files", found.files, [this](const TFileChange& change) { File(change); });
    Section("Missing", found.missing, [this](const TMissingChange& change) { Missing(change); });
    Section("Not compared", found.uncompared, [this](const TUncompared& one) { Uncompared(one); });
    Section("Not asked for by both", found.unasked, [this](const TUnaskedClass& one) { Unasked(one); });
    Summary(found);
    layout_.Flush();
  }

 private:
  template <typename TItems, typename TWrite>
  void Section(std::string_view title, const TItems& items, const TWrite& write) {
    if (items.empty()) return;
    layout_.Line(title, EEmphasis::kHeading);
    lastKey_.clear();
    for (const auto& item : items) write(item);
    layout_.BlankLine();
  }

  void Row(std::string_view label, const std::string& text, EEmphasis emphasis = EEmphasis::kNone) {
    layout_.Row(2, label, 16, text, emphasis);
  }
  static std::string Described(const TComparedRun& run) {
    return SafeText(run.run.started + ", " + run.source.target) + (run.source.simulated ? " (simulated)" : "") +
           (run.isCut ? ", cut" : "");
  }
  void Sides(const TDifferences& found) {
    layout_.Line("Compared", EEmphasis::kHeading);
    Row("Before", Described(found.before));
    Row("After", Described(found.after));
    if (found.HasOtherMachineType()) {
      Row("Machine type", SafeText(found.before.machineType) + " -> " + SafeText(found.after.machineType),
          EEmphasis::kFailure);
    }
    if (found.HasOtherSchema()) {
      Row("Schema",
          "SHA-256 " + SafeText(found.before.schemaSha256) + " -> " + SafeText(found.after.schemaSha256) +
              "; each result has its own fields",
          EEmphasis::kFailure);
    }
    layout_.BlankLine();
  }

  // The key as a line of its own, where it differs from the one before.
  void KeyLine(const std::string& key) {
    if (key == lastKey_) return;
    lastKey_ = key;
    layout_.Paragraph(2, SafeText(key));
  }
  void Key(const TKeyChange& change) {
    const std::string what = change.hasAppeared ? (change.isAbsent ? "appeared; it was absent" : "appeared")
                                                : (change.isAbsent ? "is absent now" : "vanished");
    layout_.Paragraph(2, (change.hasAppeared ? "+ " : "- ") + SafeText(change.key) + ": " + what, EEmphasis::kFailure);
  }
  void Register(const TRegisterChange& change) {
    KeyLine(change.key);
    layout_.Paragraph(4, fmt::format("{}: 0x{:0{}X} -> 0x{:0{}X}", SafeText(change.registerName), change.before,
                                     change.beforeWidth / 4, change.after, change.afterWidth / 4));
    for (const TFieldChange& field : change.fields) Field(field);
  }
  void Field(const TFieldChange& field) {
    const std::string name = FieldName(field.bits, field.name);
    const std::string before = FieldText(field.before, field.beforeText);
    const std::string after = FieldText(field.after, field.afterText);
    const bool isFlag = field.width == 1 && !field.beforeText && !field.afterText;
    const std::string sign = field.IsSet() ? "+ " : field.IsCleared() ? "- " : "~ ";
    layout_.Paragraph(6, sign + name + (isFlag ? "" : ": " + before + " -> " + after),
                      field.IsCleared() ? EEmphasis::kNone : EEmphasis::kFailure);
  }
  void Counter(const TCounterChange& change) {
    KeyLine(change.key);
    std::string text = SafeText(change.registerName);
    if (!change.bits.empty()) text += ", " + SafeText(change.bits + " " + change.name);
    text += fmt::format(": {} -> {}, ", change.before, change.after);
    text += change.HasDifference() ? fmt::format("+{}", change.after - change.before) : "reset or wrapped";
    if (!change.unit.empty()) text += " (" + SafeText(change.unit) + ")";
    layout_.Paragraph(4, text);
  }
  void File(const TFileChange& change) {
    KeyLine(change.key);
    std::string text = Counted(change.beforeSize, "byte") + " -> " + Counted(change.afterSize, "byte");
    if (!change.isText || change.lines.empty())
      text += "; they differ from offset " + std::to_string(change.firstDifference) + " on";
    layout_.Paragraph(4, text);
    for (std::size_t i = 0; i < std::min(change.lines.size(), kMostLines); ++i) {
      const TLineChange& line = change.lines[i];
      layout_.Paragraph(6, (line.isAdded ? "+ " : "- ") + std::to_string(line.number) + ": " + SafeText(line.text));
    }
    if (change.lines.size() > kMostLines) {
      layout_.Paragraph(6, "... " + Counted(change.lines.size() - kMostLines, "more line") + "; --format json has all");
    }
  }
  void Missing(const TMissingChange& change) {
    KeyLine(change.key);
    layout_.Paragraph(
        4, SafeText(change.property) + (change.hasAppeared ? ": appeared; it was absent" : ": is absent now"),
        EEmphasis::kFailure);
  }
  static std::string Judgement(const TReadFinding& finding) {
    std::string text(SeverityName(finding.severity));
    if (finding.isMasked) text += ", masked";
    if (finding.isFirst) text += ", first";
    return text;
  }
  void Finding(const TFindingChange& change) {
    const TReadFinding& any = change.after ? *change.after : *change.before;
    KeyLine(any.key);
    std::string text = !change.before ? "+ " : !change.after ? "- " : "~ ";
    if (change.before && change.after) text += Judgement(*change.before) + " -> ";
    text += Judgement(any) + ": " + SafeText(any.registerName) + " " + FieldName(any.bits, any.name);
    if (change.before && change.after && change.before->value != change.after->value) {
      text += ": " + FieldText(change.before->value, change.before->text) + " -> " +
              FieldText(change.after->value, change.after->text);
    } else if (any.text) {
      text += ": " + SafeText(*any.text);
    }
    layout_.Paragraph(4, text, change.after ? EEmphasis::kFailure : EEmphasis::kNone);
  }
  void Uncompared(const TUncompared& one) {
    std::string what = SafeText(one.key.empty() ? one.className : one.key);
    if (what.empty()) what = "what follows the cut, and the findings";
    if (!one.what.empty()) what += " " + SafeText(one.what);
    if (!one.bits.empty()) what += " " + SafeText(one.bits);
    std::string why;
    if (one.before != EUncompared::kNot) why = "before: " + WordsOf(one.before);
    if (one.after != EUncompared::kNot) why += (why.empty() ? "after: " : "; after: ") + WordsOf(one.after);
    layout_.Paragraph(2, what + "; " + why);
  }
  void Unasked(const TUnaskedClass& one) {
    layout_.Paragraph(2, SafeText(one.className) + ": only " + (one.askedFor == ESide::kBefore ? "before" : "after"));
  }
  void Summary(const TDifferences& found) {
    layout_.Line("Summary", EEmphasis::kHeading);
    const std::size_t count = found.Count();
    Row("Differences", count == 0 ? "none" : std::to_string(count),
        count == 0 ? EEmphasis::kNone : EEmphasis::kFailure);
    const std::size_t uncompared = found.uncompared.size();
    Row("Not compared", uncompared == 0 ? "nothing" : std::to_string(uncompared),
        uncompared == 0 ? EEmphasis::kNone : EEmphasis::kFailure);
  }

  TTableLayout layout_;
  std::string lastKey_;
};

}  // namespace

void WriteDifferencesAsText(const TDifferences& differences, ITextSink& sink, const TTableOptions& options) {
  TDiffText(sink, options).Write(differences);
}

}  // namespace velhost
