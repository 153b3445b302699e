// The qualifier Override: which inherited element it names.
#include "host/schema/classbuilder.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>
#include "host/schema/mofscan.h"
#include "host/schema/namehint.h"

namespace velhost {

namespace {

// The string value of Override on the element; null if there is none.
const Mof::TLiteral* OverrideOf(const TSchemaUnit& unit, const Mof::TFeature& feature) {
  for (std::uint32_t i = 0; i < feature.qualifiers.count; ++i) {
    const Mof::TQualifierUse& use = unit.file->uses[feature.qualifiers.first + i];
    if (!EqualNames(unit.Text(use.name), "Override") || !use.value.given || use.value.isArray) continue;
    const Mof::TLiteral& literal = unit.file->literals[use.value.literals.first];
    return literal.kind == Mof::ELiteral::kString ? &literal : nullptr;
  }
  return nullptr;
}

const char* KindOf(bool isMethod) { return isMethod ? "method" : "property"; }

}  // namespace

void TClassBuilder::CheckOverrideName(const TEntry& entry, const Mof::TFeature& feature, const TEntry* above) {
  const TSchemaUnit& unit = entry.unit;
  const Mof::TLiteral* literal = OverrideOf(unit, feature);
  // If the superclass could not be resolved, nothing is known about the inherited elements.
  const bool isRoot = entry.syntax->superClass.begin == entry.syntax->superClass.end;
  if (literal == nullptr || (above == nullptr && !isRoot)) return;
  const std::string text = StringOf(unit, *literal);
  const std::size_t dot = text.rfind('.');
  const std::string_view name = std::string_view(text).substr(dot == std::string::npos ? 0 : dot + 1);
  const std::string subject = std::string("the ") + KindOf(feature.isMethod) + " " + unit.Quoted(feature.name);
  std::string problem;
  if (!EqualNames(name, unit.Text(feature.name))) {
    problem = " overrides " + Mof::Quoted(name) + ", expected " + unit.Quoted(feature.name) +
              "; only an element of the same name can be overridden";
  } else if (above == nullptr) {
    problem = " overrides nothing: the class " + unit.Quoted(entry.syntax->name) + " has no superclass";
  } else {
    problem =
        OverrideProblem(feature.isMethod, name, std::string_view(text).substr(0, text.size() - name.size()), *above);
  }
  if (!problem.empty()) log_.Error(unit.Place(literal->span), subject + problem);
}

// `qualification` is "CLASS." or empty.
std::string TClassBuilder::OverrideProblem(bool isMethod, std::string_view name, std::string_view qualification,
                                           const TEntry& above) {
  const TEntry* from = &above;
  if (!qualification.empty()) {
    const std::string_view className = qualification.substr(0, qualification.size() - 1);
    while (from != nullptr && !EqualNames(from->unit.Text(from->syntax->name), className)) {
      from = from->above;
    }
    if (from == nullptr) return " overrides nothing: no superclass is named " + Mof::Quoted(className);
  }
  if (Exposes(*from, isMethod, name)) return {};
  const std::string owner = from->unit.Quoted(from->syntax->name);
  if (Exposes(*from, !isMethod, name)) {
    return " overrides nothing: in the class " + owner + " this is a " + KindOf(!isMethod);
  }
  TNameHint hint(name, log_.NameSearchSteps());
  if (!isMethod && log_.Shows()) OfferProperties(*from->built, log_, hint);
  return " overrides nothing: the class " + owner + " has no " + KindOf(isMethod) + " of this name" + hint.Text();
}

bool TClassBuilder::Exposes(const TEntry& entry, bool isMethod, std::string_view name) {
  if (isMethod) return FindMethod(&entry, name) != nullptr;
  return entry.built->FindProperty(name) < entry.built->Properties().size();
}

}  // namespace velhost
