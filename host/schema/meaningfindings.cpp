#include "host/schema/meaningfindings.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "host/base/text.h"
#include "host/meaning/words.h"
#include "host/schema/schemalog.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;

constexpr std::size_t kMostWarnings = 100;

// Registers, and the strings of their arrays.
std::size_t StepsOf(const TCIMClass& cimClass, const std::vector<TRegisterShape>& registers) {
  std::size_t steps = registers.size();
  for (const TRegisterShape& shape : registers) {
    for (const std::string_view name : {Meaning::kFields, Meaning::kEvidence}) {
      const auto qualifier = cimClass.Properties()[shape.property]->Qualifiers().Find(std::string(name));
      if (!qualifier || !qualifier->GetValue().IsArray()) continue;
      steps += static_cast<const std::vector<TCIMValue>&>(qualifier->GetValue()).size();
    }
  }
  return steps;
}

}  // namespace

TMeaningFindings::TPlacedSlip TMeaningFindings::Placed(const TCIMClass& cimClass, const TMeaningSlip& slip) {
  if (!slip.qualifier) return {cimClass.Location(), &slip, false};
  const TSourceLocation& whole = slip.qualifier->Location();
  const TSchemaSource* const source = findings_.SourceOf(whole);
  // A slip that is only counted needs no place.
  if (!slip.offset || source == nullptr || !findings_.Keeps()) return {whole, &slip, false};
  if (walked_ != slip.qualifier.get()) {
    walk_.emplace(*source, *slip.qualifier);
    walked_ = slip.qualifier.get();
  }
  const auto place = walk_->Locate(slip.element, *slip.offset);
  return {place.value_or(whole), &slip, !place};
}

void TMeaningFindings::AddPlaced(const TPlacedSlip& placed) {
  const TMeaningSlip& slip = *placed.slip;
  std::string message = slip.message;
  if (placed.isDefault) {
    // It may be declared in a file of which nothing must be shown.
    message = "the declared default of the qualifier " + SingleQuoted(slip.qualifier->Name()) + " does not fit here" +
              (findings_.HidesNothing() ? ": " + message : "");
  }
  findings_.Add(onlyWarnings_ ? EDiagnosticSeverity::kWarning : slip.severity, placed.place, std::move(message));
}

void TMeaningFindings::Add(const TCIMClass& cimClass, const std::vector<TMeaningSlip>& slips) {
  findings_.Begin(cimClass);
  std::vector<TPlacedSlip> placed;
  for (const TMeaningSlip& slip : slips) {
    const bool isNew =
        !findings_.Keeps() || !slip.qualifier || added_.emplace(slip.qualifier.get(), slip.element, slip.offset).second;
    if (isNew) placed.push_back(Placed(cimClass, slip));
  }
  std::stable_sort(placed.begin(), placed.end(), [](const TPlacedSlip& a, const TPlacedSlip& b) {
    return std::tie(a.place.file, a.place.line, a.place.column) < std::tie(b.place.file, b.place.line, b.place.column);
  });
  for (const TPlacedSlip& one : placed) AddPlaced(one);
}

void TMeaningCheck::Check(const TCIMClass& cimClass) {
  const bool isR8 = TClassPaths::IsR8(cimClass);
  if (!isR8 && !paths_.IsJfr(cimClass)) return;
  isCut_ = steps_ > mostSteps_;
  if (isCut_) return;
  const auto registers = CollectorProfile::RegisterShapesOf(cimClass, isR8 ? EPath::kR8 : EPath::kJfr);
  steps_ += StepsOf(cimClass, registers);
  std::vector<TMeaningSlip> slips;
  CompileMeaning(cimClass, registers, &slips);
  slips_.Add(cimClass, slips);
}

void TMeaningCheck::Finish(const TSourceLocation& nowhere) {
  if (isCut_) findings_.Warning(nowhere, "there are too many fields to check those of all classes");
}

std::vector<TTextDiagnostic> MeaningWarnings(const TPlan& plan, const std::string& schemaName,
                                             const TSchemaSources& sources) {
  TNeedFindings findings(&sources, kMostWarnings);
  TMeaningFindings slips(findings, true);
  for (const TPlannedClass& planned : plan.classes) slips.Add(*planned.cimClass, planned.slips);
  return findings.Finish(schemaName);
}

}  // namespace velhost
