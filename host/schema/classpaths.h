// The classes of a schema that the collector reads registers of, by their names and superclasses.
#pragma once

#include <boost/shared_ptr.hpp>
#include <vector>

#include "host/model/cimclass.h"
#include "host/model/cimnamespace.h"

namespace velhost {

/// Whatever the machine type: a class on a path may still be served on no machine at all.
class TClassPaths {
 public:
  using TClasses = std::vector<boost::shared_ptr<TCIMClass>>;

  explicit TClassPaths(const TNamespace& cimNamespace);

  /// The base classes of the JFR path, as far as they are declared.
  const TClasses& Bases() const { return bases_; }
  /// Those of them that the class descends from.
  TClasses BasesOf(const TCIMClass& cimClass) const;
  bool IsBase(const TCIMClass& cimClass) const;
  bool IsJfr(const TCIMClass& cimClass) const { return !BasesOf(cimClass).empty(); }
  /// The collector compares the names of these classes case-sensitively.
  static bool IsR8(const TCIMClass& cimClass);

 private:
  TClasses bases_;
};

}  // namespace velhost
