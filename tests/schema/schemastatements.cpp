#include "tests/schema/schemastatements.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "host/base/utf8.h"

namespace velhost {

/// What the schema reader keeps for itself.
struct TSchemaTestPeer {
  /// The methods that a class declares itself; null for an unknown class.
  static const TMethods* MethodsOf(TClassBuilder& classes, std::string_view className) {
    const auto* entry = classes.Find(className);
    return entry ? &entry->methods : nullptr;
  }
  /// All declared qualifiers, in order.
  static std::vector<const TDeclaredQualifier*> Declared(const TQualifierTable& table) {
    std::vector<const TDeclaredQualifier*> all;
    for (const std::string_view name : table.names_) all.push_back(&table.declared_.at(name));
    return all;
  }
};

}  // namespace velhost

namespace tests {

namespace {

using TType = TCIMValue::TCIMType;
const TPropertyMap kNoContext;

template <typename T>
std::string Shortest(T number) {
  std::array<char, 40> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string Escaped(const std::string& text, char quote) {
  static const std::string kLetters = "btnfr";
  static const std::string kCodes = "\b\t\n\f\r";
  std::string escaped(1, quote);
  for (const char c : text) {
    const std::size_t letter = kCodes.find(c);
    std::array<char, 8> hex{};
    std::snprintf(hex.data(), hex.size(), "\\x%04X", static_cast<unsigned char>(c));
    if (c == quote || c == '\\') {
      escaped += std::string("\\") + c;
    } else if (letter != std::string::npos) {
      escaped += std::string("\\") + kLetters[letter];
    } else {
      escaped += static_cast<unsigned char>(c) < 0x20 ? std::string(hex.data()) : std::string(1, c);
    }
  }
  return escaped + quote;
}

std::string CharacterStatement(const TCIMValue& value) {
  std::string text;
  AppendUtf8(text, static_cast<char32_t>(value.ToInteger()));
  return Escaped(text, '\'');
}

std::string Suffix(bool isArray, std::uint32_t size) {
  if (!isArray) return {};
  return size == 0 ? "[]" : "[" + std::to_string(size) + "]";
}

// " = VALUE", or nothing for null.
std::string Default(const TCIMValue& value) { return value.IsNull() ? "" : " = " + ValueStatement(value); }

std::string ScopeStatement(std::uint32_t scope) {
  if (scope == Mof::kScopeAny) return "any";
  const std::array names = {
      std::pair{Mof::kScopeClass, "class"},           std::pair{Mof::kScopeAssociation, "association"},
      std::pair{Mof::kScopeIndication, "indication"}, std::pair{Mof::kScopeQualifier, "qualifier"},
      std::pair{Mof::kScopeProperty, "property"},     std::pair{Mof::kScopeReference, "reference"},
      std::pair{Mof::kScopeMethod, "method"},         std::pair{Mof::kScopeParameter, "parameter"}};
  std::string text;
  for (const auto& [bit, name] : names) {
    if ((scope & bit) != 0) text += (text.empty() ? "" : ", ") + std::string(name);
  }
  return text;
}

bool IsTrue(const TQualifierSet& qualifiers, const char* name) {
  const auto found = qualifiers.Find(name);
  return found && found->GetValue().ToString(10) == "true";
}

}  // namespace

std::string ValueStatement(const TCIMValue& value) {
  if (value.IsNull()) return "null";
  if (value.IsArray()) {
    std::string text;
    for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
      text += (text.empty() ? "" : ", ") + ValueStatement(element);
    }
    return "{" + text + "}";
  }
  const std::string text = value.ToString(10);
  switch (value.GetType().GetCode()) {
    case TType::kReal32: return Shortest(static_cast<float>(value.ToReal()));
    case TType::kReal64: return Shortest(value.ToReal());
    case TType::kChar16: return CharacterStatement(value);
    case TType::kReference: return text[0] == '$' ? text : Escaped(text, '"');
    case TType::kString:
    case TType::kDateTime: return Escaped(text, '"');
    default: return text;
  }
}

TSchemaStatements::TSchemaStatements(const std::vector<std::string>& paths, ISourceReader& reader)
    : log_(100), qualifiers_(limits_, parsed_.mentionedQualifiers, log_), namespace_(TNamespace::Create()) {
  result_ = ReadSchema(paths, reader);
  parsed_ = LoadSchema(paths, reader, limits_, log_);
  for (const TSchemaDeclaration& declaration : parsed_.declarations) {
    if (declaration.production.kind != Mof::EProduction::kQualifier) continue;
    qualifiers_.Declare(declaration.unit, declaration.unit.file->qualifiers[declaration.production.index]);
  }
  classes_ = std::make_unique<TClassBuilder>(parsed_, qualifiers_, limits_, log_, EKeptValues::kAll);
  classes_->Build(*namespace_);
}

TStatements TSchemaStatements::QualifierTypes() const {
  TStatements statements;
  for (const TDeclaredQualifier* declared : TSchemaTestPeer::Declared(qualifiers_)) {
    const TQualifierFlavor& flavor = declared->flavor;
    statements.push_back(
        std::string(declared->name) + " " + TType(declared->slot.type).ToString() +
        Suffix(declared->slot.isArray, declared->slot.size) + Default(declared->defaultValue) + " scope(" +
        ScopeStatement(declared->scope) + ") flavor(" + (flavor.overridable ? "enableoverride" : "disableoverride") +
        ", " + (flavor.toSubclass ? "tosubclass" : "restricted") + (flavor.translatable ? ", translatable)" : ")"));
  }
  return statements;
}

TStatements TSchemaStatements::Classes() const {
  TStatements statements;
  for (const auto& cimClass : result_.cimNamespace->Classes()) {
    statements.push_back(cimClass->Name() + (cimClass->SuperClass() ? " : " + cimClass->SuperClass()->Name() : "") +
                         (IsTrue(cimClass->Qualifiers(), "Association") ? " association" : "") +
                         (IsTrue(cimClass->Qualifiers(), "Indication") ? " indication" : ""));
  }
  return statements;
}

const TCIMClass& TSchemaStatements::ClassOf(const std::string& name) const {
  const auto found = result_.cimNamespace->FindClass(name);
  if (!found) throw std::runtime_error("no class " + name);
  return *found;
}

TStatements TSchemaStatements::Properties(const std::string& className) const {
  TStatements statements;
  for (const auto& property : ClassOf(className).Properties()) {
    const TPropertyDefinition& definition = property->Definition();
    const bool isReference = definition.type == TType::kReference;
    const std::string type =
        isReference ? ClassOf(definition.referenceClass).Name() + " ref" : definition.type.ToString();
    statements.push_back(ClassOf(className).Name() + "." + definition.name + " " + type +
                         Suffix(definition.isArray, definition.arraySize) + Default(definition.defaultValue) +
                         " origin " + property->GetClassOrigin(kNoContext)->GetName(kNoContext));
  }
  return statements;
}

std::string TSchemaStatements::TypeOf(const TSchemaUnit& unit, const Mof::TFeature& feature) const {
  const bool isReference = feature.type.code == TType::kReference;
  const std::string type = isReference ? ClassOf(std::string(unit.Text(feature.type.span))).Name() + " ref"
                                       : TType(feature.type.code).ToString();
  return type + Suffix(feature.array.isArray, feature.array.size);
}

std::string TSchemaStatements::MethodStatement(const std::string& className, const TMethod& method) {
  std::string parameters;
  for (std::uint32_t i = 0; i < method.syntax->parameters.count; ++i) {
    const Mof::TFeature& parameter = method.unit.file->parameters[method.syntax->parameters.first + i];
    parameters +=
        (i == 0 ? "" : ", ") + std::string(method.unit.Text(parameter.name)) + " " + TypeOf(method.unit, parameter);
  }
  const TMethod* first = &method;
  while (first->overridden != nullptr) first = first->overridden;
  return className + "." + std::string(method.unit.Text(method.syntax->name)) + " " +
         TypeOf(method.unit, *method.syntax) + " (" + parameters + ") origin " + std::string(first->declaringClass);
}

std::vector<const TMethod*> TSchemaStatements::OwnMethods(const std::string& className) {
  std::vector<const TMethod*> methods;
  for (const auto& [name, method] : *TSchemaTestPeer::MethodsOf(*classes_, className)) methods.push_back(&method);
  std::sort(methods.begin(), methods.end(), [](const TMethod* a, const TMethod* b) { return a->syntax < b->syntax; });
  return methods;
}

TStatements TSchemaStatements::Methods(const std::string& className) {
  std::vector<const TMethod*> methods;
  std::vector<const TCIMClass*> chain;
  for (const TCIMClass* link = &ClassOf(className); link != nullptr; link = link->SuperClass().get())
    chain.push_back(link);
  for (auto link = chain.rbegin(); link != chain.rend(); ++link) {
    for (const TMethod* method : OwnMethods((*link)->Name())) {
      const auto place = std::find(methods.begin(), methods.end(), method->overridden);
      if (method->overridden != nullptr && place != methods.end()) {
        *place = method;
      } else {
        methods.push_back(method);
      }
    }
  }
  TStatements statements;
  for (const TMethod* method : methods) statements.push_back(MethodStatement(ClassOf(className).Name(), *method));
  return statements;
}

const TMethod* TSchemaStatements::MethodOf(const std::string& className, std::string_view name) {
  for (const TCIMClass* link = &ClassOf(className); link != nullptr; link = link->SuperClass().get()) {
    const TMethods* methods = TSchemaTestPeer::MethodsOf(*classes_, link->Name());
    const auto found = methods->find(name);
    if (found != methods->end()) return &found->second;
  }
  return nullptr;
}

// `rest` is "METHOD()" or "METHOD(PARAMETER)".
const TQualifierSet* TSchemaStatements::QualifiersOfMethod(const std::string& className, const std::string& rest) {
  const std::size_t open = rest.find('(');
  const std::string parameter = rest.substr(open + 1, rest.size() - open - 2);
  const TMethod* method = MethodOf(className, rest.substr(0, open));
  if (method == nullptr || parameter.empty()) return method ? &method->qualifiers : nullptr;
  for (std::uint32_t i = 0; i < method->syntax->parameters.count; ++i) {
    const Mof::TFeature& candidate = method->unit.file->parameters[method->syntax->parameters.first + i];
    if (EqualNames(method->unit.Text(candidate.name), parameter)) return &method->parameters[i];
  }
  return nullptr;
}

const TQualifierSet* TSchemaStatements::QualifiersOf(const std::string& element) {
  const std::size_t dot = element.find('.');
  const TCIMClass& cimClass = ClassOf(element.substr(0, dot));
  if (dot == std::string::npos) return &cimClass.Qualifiers();
  const std::string rest = element.substr(dot + 1);
  if (rest.back() == ')') return QualifiersOfMethod(cimClass.Name(), rest);
  const std::size_t index = cimClass.FindProperty(rest);
  return index < cimClass.Properties().size() ? &cimClass.Properties()[index]->Qualifiers() : nullptr;
}

TStatements TSchemaStatements::Qualifiers(const std::string& element) {
  const TQualifierSet* qualifiers = QualifiersOf(element);
  EXPECT_NE(qualifiers, nullptr) << "no element " << element;
  TStatements statements;
  if (qualifiers == nullptr) return statements;
  for (const auto& qualifier : qualifiers->All()) {
    std::string name = qualifier->Name();
    for (const TDeclaredQualifier* declared : TSchemaTestPeer::Declared(qualifiers_)) {
      if (EqualNames(declared->name, name)) name = declared->name;
    }
    statements.push_back(element + ": " + name + " = " + ValueStatement(qualifier->GetValue()));
  }
  return statements;
}

TStatements TSchemaStatements::Instances() const {
  TStatements statements;
  std::size_t number = 0;
  for (const TSchemaDeclaration& declaration : parsed_.declarations) {
    if (declaration.production.kind != Mof::EProduction::kInstance) continue;
    const TSchemaUnit& unit = declaration.unit;
    const std::string alias(unit.Text(unit.file->instances[declaration.production.index].alias));
    const TInstance& instance = *result_.instances.at(number++);
    statements.push_back(std::to_string(number) + ": " + instance.Class().Name() +
                         (alias.empty() ? "" : " as " + alias));
  }
  return statements;
}

TStatements TSchemaStatements::Values() const {
  TStatements statements;
  for (std::size_t number = 0; number < result_.instances.size(); ++number) {
    const TInstance& instance = *result_.instances[number];
    const auto& properties = instance.Class().Properties();
    for (std::size_t i = 0; i < properties.size(); ++i) {
      const TPropertyDefinition& definition = properties[i]->Definition();
      const TCIMValue& value = instance.IsSet(i) ? instance.Value(i) : definition.defaultValue;
      statements.push_back(std::to_string(number + 1) + "." + definition.name + " = " + ValueStatement(value));
    }
  }
  return statements;
}

}  // namespace tests
