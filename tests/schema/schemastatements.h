// What a schema declares, as statements in the forms that conformance/README.md describes.
#pragma once

#include <string>
#include <vector>

#include "host/schema/classbuilder.h"
#include "host/schema/schemareader.h"
#include "tests/support/namespaces.h"

namespace tests {

using TStatements = std::vector<std::string>;

/// Reads a schema twice: as the host does, for the contents of the object model, and again with everything that only
/// the reader knows (methods, qualifier declarations, aliases).
class TSchemaStatements {
 public:
  TSchemaStatements(const std::vector<std::string>& paths, ISourceReader& reader);

  TStatements QualifierTypes() const;
  TStatements Classes() const;
  /// The properties of one class, including inherited ones.
  TStatements Properties(const std::string& className) const;
  TStatements Methods(const std::string& className);
  /// "ELEMENT: NAME = VALUE" for each qualifier of the element, which is written CLASS, CLASS.PROPERTY,
  /// CLASS.METHOD() or CLASS.METHOD(PARAMETER). An unknown element fails the test.
  TStatements Qualifiers(const std::string& element);
  TStatements Instances() const;
  /// All property values of all instances, whether given or by default.
  TStatements Values() const;

 private:
  const TCIMClass& ClassOf(const std::string& name) const;
  const TMethod* MethodOf(const std::string& className, std::string_view name);
  const TQualifierSet* QualifiersOf(const std::string& element);
  const TQualifierSet* QualifiersOfMethod(const std::string& className, const std::string& rest);
  /// The methods that the class declares itself, in text order.
  std::vector<const TMethod*> OwnMethods(const std::string& className);
  std::string MethodStatement(const std::string& className, const TMethod& method);
  std::string TypeOf(const TSchemaUnit& unit, const Mof::TFeature& feature) const;

  TSchemaResult result_;
  TSchemaLimits limits_;
  TSchemaLog log_;
  TParsedSchema parsed_;
  TQualifierTable qualifiers_;
  boost::shared_ptr<TNamespace> namespace_;
  std::unique_ptr<TClassBuilder> classes_;
};

/// VALUE as README.md describes it.
std::string ValueStatement(const TCIMValue& value);

}  // namespace tests
