// The fixture of the schema tests: texts in memory, what reading them gives, and every message word for word.
#pragma once

#include <gmock/gmock.h>

#include <initializer_list>
#include <string>
#include <utility>

#include "host/schema/schemareader.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {

/// Qualifiers that most tests use, on one line, so that the test's own text starts on line 2.
inline const std::string kQualifiers =
    "Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass); "
    "Qualifier Description : string = null, Scope(any), Flavor(Translatable); "
    "Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride); "
    "Qualifier Abstract : boolean = false, Scope(class, association), Flavor(Restricted); "
    "Qualifier Values : string[] = null, Scope(property, method, parameter); "
    "Qualifier Level : uint16 = 7, Scope(class, property);\n";

inline const TPropertyMap kNoContext;

class TSchemaText {
 public:
  TSchemaText& File(const std::string& name, const std::string& text) {
    reader_.Add(name, text);
    return *this;
  }
  TSchemaResult Read(const std::vector<std::string>& paths) { return ReadSchema(paths, reader_, limits); }

  TSchemaLimits limits;

 private:
  TMemoryReader reader_;
};

inline TSchemaResult ReadText(const std::string& text) { return TSchemaText().File("a.mof", text).Read({"a.mof"}); }
inline TSchemaResult ReadQualified(const std::string& text) { return ReadText(kQualifiers + text); }

/// All diagnostics, as a user sees them.
inline std::string Shown(const TSchemaResult& result) {
  std::string text;
  for (const TTextDiagnostic& diagnostic : result.diagnostics) text += FormatDiagnostic(diagnostic);
  return text;
}

/// Only the messages, with line and column: "2:8 message\n".
inline std::string Messages(const TSchemaResult& result) {
  std::string text;
  for (const TTextDiagnostic& diagnostic : result.diagnostics) {
    text += std::to_string(diagnostic.location.line) + ":" + std::to_string(diagnostic.location.column) + " " +
            diagnostic.message + "\n";
  }
  return text;
}

/// The declaration of a property; fails the test if it does not exist.
inline TPropertyDefinition PropertyOf(const TSchemaResult& result, const std::string& className,
                                      const std::string& property) {
  const auto cimClass = result.cimNamespace->FindClass(className);
  if (!cimClass || cimClass->FindProperty(property) == cimClass->Properties().size()) {
    ADD_FAILURE() << "no property " << className << "." << property << "\n" << Shown(result);
    return {};
  }
  return cimClass->Properties()[cimClass->FindProperty(property)]->Definition();
}

/// The default that "TYPE p = LITERAL;" gives, as text, or the error message.
inline std::string DefaultOf(const std::string& type, const std::string& literal) {
  const TSchemaResult result = ReadText("class A { " + type + " p = " + literal + "; };");
  if (!result.diagnostics.empty()) return result.diagnostics.front().message;
  return PropertyOf(result, "A", "p").defaultValue.ToString(10);
}

}  // namespace tests
