// What the tests of the follower have in common: a small schema and the exchanges of one class.
#pragma once

#include <string>

#include "tests/result/followedrun.h"

namespace tests {

inline const TBytes kCount = RegisterData({1, 2, 3, 4, 5, 6, 7, 8});
inline const TBytes kTime = {0x12, 0x34, 0x56, 0x78};
inline const std::string kInstance = "VO_MEMCTL/node0/instance0, chip 0, time 12 34 56 78";
inline const std::string kUnknown = "KROSG_T4_MEMCTL_StatisticData";  ///< the schema check has an error for it

/// One register at 0x10 of one memory controller, and bridges that have theirs at 0x20.
class TFollowerTest : public TFollowedRun {
 protected:
  TFollowerTest() {
    Add(Class(kVoMemory, 1).Register("A", 0x10, 8));
    Add(Class(kVoBridge, 2).Register("A", 0x20, 8));
    Add(Class(kBlockClass, 1).Record("A", 5));
    Add(Class("KROSG_T4_MEMCTL_StatisticData", 1).Register("A", 0x30, 8).Text("Bad"));
    Add(TClassBuilder(kFileClass).CaptureProperties());
  }
  void SeesMemory() {
    Sees(Register(0, 0x10).Answers(kCount));
    Sees(Timestamp().Answers(kTime));
    Sees(Timestamp().Answers(kTime));
  }
};

}  // namespace tests
