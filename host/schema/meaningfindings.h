// The slips in what the registers of a schema mean, as findings of "velhost check" and warnings of a collection.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "host/base/textdiagnostic.h"
#include "host/meaning/compile.h"
#include "host/model/cimclass.h"
#include "host/profile/collectorprofile.h"
#include "host/profile/plan.h"
#include "host/schema/needfindings.h"
#include "host/schema/schemalog.h"
#include "host/schema/valuewalk.h"

namespace velhost {

/// Adds each slip once, where it is written: subclasses inherit it, but what they inherit is the same text.
class TMeaningFindings {
 public:
  /// Nothing is owned. With `onlyWarnings`, all slips are warnings.
  TMeaningFindings(TNeedFindings& findings, bool onlyWarnings) : findings_(findings), onlyWarnings_(onlyWarnings) {}

  void Add(const TCIMClass& cimClass, const std::vector<TMeaningSlip>& slips);

 private:
  using TKey = std::tuple<const TQualifier*, std::size_t, std::optional<std::size_t>>;
  struct TPlacedSlip {
    TSourceLocation place;
    const TMeaningSlip* slip;
    bool isDefault;  ///< the value is the default of the qualifier's declaration
  };

  TPlacedSlip Placed(const TCIMClass& cimClass, const TMeaningSlip& slip);
  void AddPlaced(const TPlacedSlip& placed);

  TNeedFindings& findings_;
  bool onlyWarnings_;
  std::set<TKey> added_;
  std::optional<TValueWalk> walk_;  // of the value that a slip was last located in
  const TQualifier* walked_ = nullptr;
};

/// Checks the registers of the classes on a path.
class TMeaningCheck {
 public:
  static constexpr std::size_t kMostSteps = std::size_t{4} << 20U;  ///< takes a few seconds

  /// Nothing is owned. Begins no class after `mostSteps` registers and strings: thousands of classes may inherit the
  /// same millions of strings.
  TMeaningCheck(const TClassPaths& paths, TNeedFindings& findings, std::size_t mostSteps = kMostSteps)
      : paths_(paths), findings_(findings), slips_(findings, false), mostSteps_(mostSteps) {}

  void Check(const TCIMClass& cimClass);
  /// Warns under `nowhere` if there were classes that were not checked.
  void Finish(const TSourceLocation& nowhere);

 private:
  const TClassPaths& paths_;
  TNeedFindings& findings_;
  TMeaningFindings slips_;
  std::size_t mostSteps_;
  std::size_t steps_ = 0;
  bool isCut_ = false;
};

/// The slips of the planned classes as warnings, at most a hundred and a last one, under `schemaName`, with the number
/// of the others.
std::vector<TTextDiagnostic> MeaningWarnings(const TPlan& plan, const std::string& schemaName,
                                             const TSchemaSources& sources);

}  // namespace velhost
