#include "host/meaning/qualifierreader.h"

#include <memory>
#include <utility>

#include "host/base/text.h"
#include "host/meaning/words.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost {

void TSlipNotes::Add(TMeaningSlip slip) {
  if (slips_ == nullptr) return;
  if (kept_ == kMostMeaningSlips) {
    ++left_;
    return;
  }
  slips_->push_back(std::move(slip));
  ++kept_;
}

void TSlipNotes::Finish() {
  if (left_ == 0) return;
  TMeaningSlip last;
  last.message = "and " + Counted(left_, "more slip") + " in the qualifiers of this class";
  slips_->push_back(std::move(last));
}

boost::shared_ptr<const TQualifier> TQualifierReader::Find(std::string_view name) const {
  auto qualifier = qualifiers_.Find(std::string(name));
  const auto* const known = Meaning::FindQualifier(name);
  if (!qualifier || known == nullptr) return {};
  const TCIMValue& value = qualifier->GetValue();
  const bool isSwitchedOff = value.GetType() != TCIMValue::TCIMType::kString || value.IsArray() != known->isArray;
  return isSwitchedOff ? boost::shared_ptr<const TQualifier>() : qualifier;
}

boost::shared_ptr<const TQualifier> TQualifierReader::FindValue(std::string_view name) const {
  auto qualifier = Find(name);
  if (!qualifier || !qualifier->GetValue().IsNull()) return qualifier;
  Note(name, "the qualifier " + SingleQuoted(name) + " has no value");
  return {};
}

std::optional<TQualifierText> TQualifierReader::Text(std::string_view name) const {
  const auto qualifier = FindValue(name);
  if (!qualifier) return std::nullopt;
  return TQualifierText{qualifier, 0, qualifier->GetValue().ToString(10)};
}

std::vector<TQualifierText> TQualifierReader::Texts(std::string_view name) const {
  std::vector<TQualifierText> texts;
  const auto qualifier = FindValue(name);
  if (!qualifier) return texts;
  const std::vector<TCIMValue>& elements = qualifier->GetValue();
  texts.reserve(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) {
    TQualifierText text{qualifier, i, elements[i].ToString(10)};
    if (elements[i].IsNull()) {
      Note(text, 0, "found null, expected a string");
    } else {
      texts.push_back(std::move(text));
    }
  }
  return texts;
}

void TQualifierReader::Note(const TQualifierText& text, std::size_t offset, std::string message) const {
  notes_.Add({EDiagnosticSeverity::kError, property_, text.qualifier, text.element, offset, std::move(message)});
}

void TQualifierReader::Note(std::string_view name, std::string message, EDiagnosticSeverity severity) const {
  notes_.Add({severity, property_, Find(name), 0, std::nullopt, std::move(message)});
}

}  // namespace velhost
