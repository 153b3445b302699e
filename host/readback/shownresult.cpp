#include "host/readback/shownresult.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/meaning/compile.h"
#include "host/meaning/field.h"
#include "host/model/failures.h"
#include "host/readback/shownsummary.h"
#include "nkrovel20/tvelexception.h"

namespace velhost {

namespace {

/// The registers of one instance as the writers take them: their meaning and their fields refer to what was read.
class TShownRegisters {
 public:
  TShownRegisters(const std::vector<TReadRegister>& read, const TCIMClass& cimClass, THexFields* hexFields)
      : hexFields_(hexFields), meanings_(read.size()) {
    for (std::size_t i = 0; i < read.size(); ++i) Add(read[i], cimClass, meanings_[i]);
  }
  std::vector<TRegisterFacts>& Facts() { return facts_; }

 private:
  void Add(const TReadRegister& read, const TCIMClass& cimClass, TRegisterMeaning& meaning) {
    meaning.property = cimClass.FindProperty(read.name);
    meaning.width = read.Width();
    meaning.role = read.role;
    meaning.isMsb0 = read.isMsb0;
    meaning.unit = read.unit;
    TRegisterFacts& facts = facts_.emplace_back();
    facts.property = meaning.property;
    facts.isIndex = read.isIndex;
    facts.place = read.place;
    facts.isNarrow = read.isNarrow;
    facts.value = read.value;
    facts.upper = read.upper;
    facts.folded = read.folded;
    facts.identification = read.identification;
    facts.meaning = &meaning;
    for (const TReadField& field : read.fields) {
      const bool isHex = hexFields_ != nullptr && hexFields_->Has(cimClass, facts.property, read.isNarrow, field.bits);
      facts.fields.push_back({field.bits, field.name, field.value, field.text, isHex});
      // Writers ask whether there are any.
      meaning.fields.push_back({field.bits, isHex, field.name.value_or(std::string()), {}});
    }
  }

  THexFields* hexFields_;                   // null without a schema
  std::vector<TRegisterMeaning> meanings_;  // never grows
  std::vector<TRegisterFacts> facts_;
};

bool HasAllProperties(const TCIMClass& cimClass, const TReadInstance& read) {
  const auto has = [&cimClass](const std::string& name) {
    return cimClass.FindProperty(name) < cimClass.Properties().size();
  };
  return std::all_of(read.properties.begin(), read.properties.end(),
                     [&has](const auto& one) { return has(one.name); }) &&
         std::all_of(read.facts.missing.begin(), read.facts.missing.end(),
                     [&has](const auto& one) { return has(one.property); });
}

// What is set, then what is missing: a result does not say where that is among the others.
std::vector<TPropertyDefinition> PropertiesOf(const TReadInstance& read) {
  std::vector<TPropertyDefinition> properties;
  std::set<std::string> names;
  const auto add = [&](const std::string& name, const TCIMValue& value) {
    if (!names.insert(FoldName(name)).second) return;
    TPropertyDefinition& property = properties.emplace_back();
    property.name = name;
    property.type =
        value.GetType().GetCode() == TCIMValue::TCIMType::kNone ? TCIMValue::TCIMType::kString : value.GetType();
    property.isArray = value.IsArray();
  };
  for (const TReadProperty& one : read.properties) add(one.name, one.value);
  for (const TMissing& one : read.facts.missing) add(one.property, {});
  return properties;
}

bool IsSame(const TPropertyDefinition& a, const TPropertyDefinition& b) {
  return a.name == b.name && a.type == b.type && a.isArray == b.isArray;
}

// A character has the type char16 only in its schema.
TCIMValue Fitted(const TCIMValue& value, const TPropertyDefinition& property) {
  using TType = TCIMValue::TCIMType;
  const bool isText = value.GetType() == TType::kString && !value.IsNull() && !value.IsArray();
  if (property.type != TType::kChar16 || !isText) return value;
  return TCIMValue::FromInteger(TType::kChar16, NextCodePoint(value.ToString(10) + '\0', 0).value);
}

}  // namespace

const THexFields::TFields& THexFields::At(const TCIMClass& cimClass, std::size_t property, bool isNarrow) {
  const auto [known, isNew] = known_.try_emplace({&cimClass, property, isNarrow});
  if (!isNew || property == cimClass.Properties().size()) return known->second;
  // One register at a time: what it says of others does not matter here.
  const TClassMeaning meaning = CompileMeaning(cimClass, {{property, isNarrow}}, nullptr);
  const TRegisterMeaning& one = meaning.registers.front();
  for (const TFieldMeaning& field : one.fields) {
    if (!field.isHex) continue;
    known->second.bits.push_back(field.bits);
    known->second.texts.push_back(BitsText(field.bits, isNarrow ? 32 : 64, one.isMsb0));
  }
  return known->second;
}

bool THexFields::Has(const TCIMClass& cimClass, std::size_t property, bool isNarrow, TBits bits) {
  const std::vector<TBits>& known = At(cimClass, property, isNarrow).bits;
  return std::find(known.begin(), known.end(), bits) != known.end();
}

bool THexFields::Has(const TCIMClass& cimClass, std::size_t property, bool isNarrow, const std::string& bits) {
  const std::vector<std::string>& known = At(cimClass, property, isNarrow).texts;
  return std::find(known.begin(), known.end(), bits) != known.end();
}

TShownResult::TShownResult(TResultReader& reader, const TNamespace* schema, ESchemaUse use)
    : reader_(reader), schema_(schema), use_(use) {
  for (const TReadFinding& read : reader.Result().findings) findings_[read.key].push_back(Finding(read));
}

void TShownResult::Write(IResultWriter& writer) {
  const TReadResult& result = reader_.Result();
  TShownSummary summary(reader_.Path(), result);
  std::vector<TFinding> findings;
  for (const TReadFinding& read : result.findings) findings.push_back(Finding(read));
  summary.SetFindings(std::move(findings));
  TResultHeader header = result.header;
  header.onlyFindings = result.isFiltered;
  writer.Begin(header);
  reader_.ForEach([&](const TReadInstance& instance, const TJsonPlace&) { WriteInstance(writer, instance); });
  writer.End(summary.Summary());
}

TFinding TShownResult::Finding(const TReadFinding& read) {
  TFinding finding = FindingOf(read);
  const auto cimClass = use_ == ESchemaUse::kNone ? nullptr : schema_->FindClass(read.className);
  if (!cimClass) return finding;
  const std::size_t property = cimClass->FindProperty(read.registerName);
  finding.isHex = hexFields_.Has(*cimClass, property, read.isNarrow, read.bits);
  return finding;
}

void TShownResult::WriteInstance(IResultWriter& writer, const TReadInstance& read) {
  const boost::shared_ptr<TCIMClass> cimClass = ClassOf(read);
  TInstance instance(cimClass, {});
  try {
    for (const TReadProperty& one : read.properties) {
      const std::size_t index = cimClass->FindProperty(one.name);
      if (index == cimClass->Properties().size()) {
        Fail("the class " + cimClass->Name() + " of the schema has no property " + Quoted(one.name));
      }
      instance.SetProperty(one.name, Fitted(one.value, cimClass->Properties()[index]->Definition()), {});
    }
  } catch (const TVELException&) {
    Fail("a value does not fit the schema: " + LastFailureDetail());
  }
  TInstanceFacts facts = read.facts;
  if (const auto found = findings_.find(facts.key); found != findings_.end()) facts.findings = found->second;
  std::optional<TShownRegisters> registers;
  if (read.registers) {
    const bool isOfSchema = schema_ != nullptr && schema_->FindClass(read.className) == cimClass;
    registers.emplace(*read.registers, *cimClass, isOfSchema ? &hexFields_ : nullptr);
    for (const TRegisterFacts& one : registers->Facts()) {
      if (one.property == cimClass->Properties().size())
        Fail("found a register without its property in " + Quoted(facts.key));
    }
    facts.registers = std::move(registers->Facts());
  }
  writer.Instance(instance, facts);
}

boost::shared_ptr<TCIMClass> TShownResult::ClassOf(const TReadInstance& read) {
  if (use_ == ESchemaUse::kNone) return OwnClass(read);
  boost::shared_ptr<TCIMClass> found = schema_->FindClass(read.className);
  if (use_ == ESchemaUse::kAlways) {
    if (!found) Fail("the schema has no class " + Quoted(read.className));
    return found;
  }
  return found && HasAllProperties(*found, read) ? found : OwnClass(read);
}

boost::shared_ptr<TCIMClass> TShownResult::OwnClass(const TReadInstance& read) {
  TOwnClass& own = classes_[read.className];
  std::vector<TPropertyDefinition> properties = PropertiesOf(read);
  if (own.cimClass &&
      std::equal(properties.begin(), properties.end(), own.properties.begin(), own.properties.end(), &IsSame)) {
    return own.cimClass;
  }
  own.properties = properties;
  own.cimNamespace = TNamespace::Create();
  TClassDefinition definition;
  definition.name = read.className;
  definition.properties = std::move(properties);
  own.cimClass = own.cimNamespace->AddClass(std::move(definition));
  return own.cimClass;
}

void TShownResult::Fail(const std::string& message) const {
  throw THostError(EFailure::kMalformed, SafeText(reader_.Path()) + ": " + message);
}

}  // namespace velhost
