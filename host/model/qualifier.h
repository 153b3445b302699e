// Qualifiers of a class or property, inherited ones included.
#pragma once
#include "host/base/api.h"

#include <boost/shared_ptr.hpp>
#include <string>
#include <utility>
#include <vector>

#include "host/model/classdefinition.h"
#include "nkrovel20/icimobjects.h"

namespace velhost {

class VELHOST_API TQualifier : public ICIMQualifier {
 public:
  explicit TQualifier(TQualifierDefinition definition) : definition_(std::move(definition)) {}
  const TCIMValue& GetValue() const override { return definition_.value; }
  const std::string& Name() const { return definition_.name; }
  const TQualifierFlavor& Flavor() const { return definition_.flavor; }
  bool IsDefault() const { return definition_.isDefault; }
  const TSourceLocation& Location() const { return definition_.location; }

 private:
  TQualifierDefinition definition_;
};

/// The qualifiers of one element: its own, then those it inherits.
class VELHOST_API TQualifierSet {
 public:
  TQualifierSet() = default;
  /// `own` in declaration order, followed by those of `inherited` that propagate (flavor ToSubclass) and are
  /// not redeclared.
  TQualifierSet(std::vector<TQualifierDefinition> own, const TQualifierSet* inherited);

  /// Looks up a qualifier by name, ignoring case; empty if there is none.
  boost::shared_ptr<const TQualifier> Find(const std::string& name) const;
  const std::vector<boost::shared_ptr<const TQualifier>>& All() const { return qualifiers_; }

 private:
  std::vector<boost::shared_ptr<const TQualifier>> qualifiers_;
};

}  // namespace velhost
