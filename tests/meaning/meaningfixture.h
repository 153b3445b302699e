// A class whose meaning is compiled: its registers with their qualifiers, and the slips as texts.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/meaning/compile.h"
#include "host/model/cimnamespace.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {

class TCompiled {
 public:
  explicit TCompiled(const TQualifiers& qualifiers = {}) : builder_("C") {
    for (const auto& [name, value] : qualifiers) builder_.With(name, value);
    builder_.Text("InstanceID");
  }

  TCompiled& Wide(const std::string& name, const TQualifiers& qualifiers = {}) { return Add(name, false, qualifiers); }
  TCompiled& Narrow(const std::string& name, const TQualifiers& qualifiers = {}) { return Add(name, true, qualifiers); }

  const TRegisterMeaning& operator[](std::size_t index) {
    Compile();
    return meaning_.registers.at(index);
  }
  /// "REGISTER.QUALIFIER[ELEMENT]+OFFSET: MESSAGE" of each, without the offset if the whole qualifier is meant, and
  /// with "warning: " before those that are only warnings.
  std::vector<std::string> Slips() {
    Compile();
    std::vector<std::string> texts;
    for (const TMeaningSlip& slip : slips_) {
      std::string text = slip.severity == EDiagnosticSeverity::kWarning ? "warning: " : "";
      text += slip.property ? class_->Properties()[*slip.property]->Definition().name + "." : "";
      text += slip.qualifier ? slip.qualifier->Name() + "[" + std::to_string(slip.element) + "]" : "";
      if (slip.offset) text += "+" + std::to_string(*slip.offset);
      texts.push_back(text + ": " + slip.message);
    }
    return texts;
  }

 private:
  TCompiled& Add(const std::string& name, bool isNarrow, const TQualifiers& qualifiers) {
    builder_.Bytes(name, qualifiers);
    shapes_.push_back({shapes_.size() + 1, isNarrow});
    return *this;
  }
  void Compile() {
    class_ = TNamespace::Create()->AddClass(builder_);
    slips_.clear();
    meaning_ = CompileMeaning(*class_, shapes_, &slips_);
  }

  TClassBuilder builder_;
  std::vector<TRegisterShape> shapes_;
  boost::shared_ptr<TCIMClass> class_;
  TClassMeaning meaning_;
  std::vector<TMeaningSlip> slips_;
};

}  // namespace tests
