// Builds instances from "instance of" declarations.
//
// Aliases may be used before they are declared, so they are checked at the end.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/model/ciminstance.h"
#include "host/schema/classbuilder.h"
#include "host/schema/embeddedtext.h"

namespace velhost {

class TInstanceBuilder {
 public:
  /// `classes` must already have built its classes into `cimNamespace`.
  TInstanceBuilder(const TParsedSchema& schema, TClassBuilder& classes, TQualifierTable& qualifiers,
                   const TSchemaLimits& limits, const TNamespace& cimNamespace, TSchemaLog& log)
      : schema_(schema),
        classes_(classes),
        qualifiers_(qualifiers),
        limits_(limits),
        namespace_(cimNamespace),
        log_(log),
        values_(log),
        room_(limits.instanceValues) {}

  /// Returns the instances in declaration order. A property that does not fit is reported and left unset; an instance
  /// of an unknown class is left out.
  std::vector<boost::shared_ptr<TInstance>> Build();

 private:
  void NoteAlias(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax);
  boost::shared_ptr<TInstance> BuildOne(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax);
  /// Whether the limit on values allows another instance with that many properties.
  bool HasRoom(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax, std::size_t properties);
  void Assign(const TSchemaUnit& unit, const Mof::TAssignment& assignment, TInstance& instance);
  void ReportUnknownProperty(const TSchemaUnit& unit, Mof::TSpan name, const TCIMClass& cimClass);
  /// Checks that the alias is declared for an instance of the reference's class or of a subclass.
  void CheckAlias(const TAliasUse& use);

  /// Checks the strings of a value that must hold MOF according to the property's qualifiers: each must be one
  /// instance, or one class if any object is allowed. Of a class, only the syntax and the superclass are checked.
  void CheckEmbedded(const TSchemaUnit& unit, const Mof::TInitializer& value, const TPropertyDecl& property);
  /// What the strings of a property must hold.
  struct TEmbedded {
    bool isAny;                             // any object, not only instances of one class
    boost::shared_ptr<TCIMClass> cimClass;  // the class of the instances; null if it is not declared
    std::string expected;                   // in words
  };
  TEmbedded EmbeddedOf(const TQualifier& ofClass) const;
  void ReadEmbedded(const TSchemaUnit& outer, const Mof::TLiteral& literal, const TEmbedded& embedded);
  void ReadEmbeddedInstance(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax, const TEmbedded& embedded);
  void CheckStringDefaults();

  const TParsedSchema& schema_;
  TClassBuilder& classes_;
  TQualifierTable& qualifiers_;
  const TSchemaLimits& limits_;
  const TNamespace& namespace_;
  TSchemaLog& log_;
  TValueReader values_;
  std::size_t room_;  // for the values of further instances
  bool full_ = false;
  std::unordered_map<std::string_view, boost::shared_ptr<TCIMClass>, TNameHash, TNameEqual> aliases_;
  std::vector<std::string_view> aliasNames_;  // those that may be shown, in declaration order
  // Keyed by qualifier, because the class name may be long and the qualifier inherited. The null key is for all uses
  // of the default.
  std::unordered_map<const TQualifier*, TEmbedded> embeddedClasses_;
  std::vector<TAliasUse> uses_;
};

}  // namespace velhost
