// "instance of" declarations as instances of their classes.
//
// Aliases may be used before they are declared, so that they are checked at the end.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/core/ciminstance.h"
#include "host/schema/classbuilder.h"

namespace NKROVEL20 {

class TInstanceBuilder {
 public:
  /// `classes` has built its classes.
  TInstanceBuilder(const TParsedSchema& schema, TClassBuilder& classes, TQualifierTable& qualifiers,
                   const TSchemaLimits& limits, TSchemaLog& log)
      : schema_(schema),
        classes_(classes),
        qualifiers_(qualifiers),
        limits_(limits),
        log_(log),
        values_(log),
        room_(limits.instanceValues) {}

  /// In declaration order. A property that does not fit is reported and left unset; an instance of
  /// an unknown class is left out.
  std::vector<boost::shared_ptr<TInstance>> Build(const TNamespace& cimNamespace);

 private:
  void NoteAlias(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax);
  boost::shared_ptr<TInstance> BuildOne(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax,
                                        const TNamespace& cimNamespace);
  /// Whether the limit for values allows another instance with that many properties.
  bool HasRoom(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax, std::size_t properties);
  void Assign(const TSchemaUnit& unit, const Mof::TAssignment& assignment, TInstance& instance);
  void ReportUnknownProperty(const TSchemaUnit& unit, Mof::TSpan name, const TCIMClass& cimClass);
  /// The alias is declared, for an instance of the reference's class or one below it.
  void CheckAlias(const TAliasUse& use, const TNamespace& cimNamespace);

  const TParsedSchema& schema_;
  TClassBuilder& classes_;
  TQualifierTable& qualifiers_;
  const TSchemaLimits& limits_;
  TSchemaLog& log_;
  TValueReader values_;
  std::size_t room_;  // for values of further instances
  bool full_ = false;
  std::unordered_map<std::string_view, std::string_view, TNameHash, TNameEqual> aliases_;  // to the class
  std::vector<std::string_view> aliasNames_;                                               // in declaration order
  std::vector<TAliasUse> uses_;
};

}  // namespace NKROVEL20
