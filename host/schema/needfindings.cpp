#include "host/schema/needfindings.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "host/base/text.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

TClassPaths::TClassPaths(const TNamespace& cimNamespace) {
  for (const std::string_view name : CollectorProfile::kJfrBaseClasses) {
    if (const auto base = cimNamespace.FindClass(name)) bases_.push_back(base);
  }
}

TClassPaths::TClasses TClassPaths::BasesOf(const TCIMClass& cimClass) const {
  TClasses above;
  std::copy_if(bases_.begin(), bases_.end(), std::back_inserter(above),
               [&cimClass](const auto& base) { return cimClass.DescendsFrom(*base); });
  return above;
}

bool TClassPaths::IsBase(const TCIMClass& cimClass) const {
  return std::any_of(bases_.begin(), bases_.end(), [&cimClass](const auto& base) { return base.get() == &cimClass; });
}

bool TClassPaths::IsR8(const TCIMClass& cimClass) {
  const auto& names = CollectorProfile::kR8Classes;
  return std::find(names.begin(), names.end(), cimClass.Name()) != names.end();
}

TNeedFindings::TNeedFindings(const TSchemaSources* sources, std::size_t most) : sources_(sources), most_(most) {
  if (sources == nullptr) return;
  for (const auto& source : *sources) {
    if (source->IsHidden()) hiddenFiles_.insert(source->Name());
  }
}

bool TNeedFindings::Keeps() const { return findings_.size() < most_; }

void TNeedFindings::Add(EDiagnosticSeverity severity, const TSourceLocation& location, std::string message) {
  const bool isError = severity == EDiagnosticSeverity::kError;
  hasError_ = hasError_ || isError;
  if (!Keeps()) {
    ++dropped_;
    if (isError) worstDropped_ = severity;
    return;
  }
  TTextDiagnostic finding;
  finding.severity = severity;
  finding.location = location;
  finding.message = std::move(message);
  if (const TSchemaSource* source = SourceOf(location)) {
    SetSourceLine(finding, source->Line(location.line));
    if (!MayQuote(location) || (class_ != nullptr && !MayQuote(class_->Location()))) finding.message = kHiddenMessage;
  }
  findings_.push_back(std::move(finding));
}

const TSchemaSource* TNeedFindings::SourceOf(const TSourceLocation& location) const {
  if (sources_ == nullptr || location.line == 0) return nullptr;
  const auto source = std::find_if(sources_->begin(), sources_->end(),
                                   [&](const auto& candidate) { return candidate->Name() == location.file; });
  return source == sources_->end() ? nullptr : source->get();
}

std::vector<TTextDiagnostic> TNeedFindings::Finish(const std::string& schemaName) {
  if (dropped_ > 0) {
    findings_.push_back({worstDropped_, {schemaName, 0, 0}, "and " + Counted(dropped_, "more finding"), {}});
  }
  return std::move(findings_);
}

std::string Named(const TCIMClass& cimClass) { return "the class " + SingleQuoted(cimClass.Name()); }

std::string Named(const TCIMClass& cimClass, const TPropertyDecl& property) {
  return "the register " + SingleQuoted(property.Definition().name) + " of " + Named(cimClass);
}

bool IsInteger(const TCIMValue& value) {
  using TType = TCIMValue::TCIMType;
  return value.GetType().GetCode() >= TType::kUint8 && value.GetType().GetCode() <= TType::kSint64;
}

}  // namespace velhost
