// The result that --baseline names: what was wrong already when it was made.
#pragma once

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "host/result/instancefacts.h"
#include "host/velhost/inputs.h"

namespace velhost {

class TBaseline {
 public:
  /// Without a path there is no baseline, and no finding is known. Throws THostError if the result cannot be read.
  TBaseline(const std::string& path, TInputs& inputs);

  /// Marks as known what the baseline has too: the same bits of the same register of the same instance.
  void MarkKnown(std::vector<TFinding>& findings) const;

 private:
  using TPlace = std::tuple<std::string, std::string, std::string>;  // key, register, bits

  void Read(const std::string& path, TInputs& inputs);
  static TPlace PlaceOf(const std::string& key, const std::string& registerName, const std::string& bits);

  std::set<TPlace> places_;
};

}  // namespace velhost
