// The real collector on random servers: every value is where the follower says that it comes from.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

#include "tests/result/attributionrun.h"

namespace tests {
namespace {

// How many cases; more of them can be asked for.
unsigned Cases() {
  const char* const asked = std::getenv("VELHOST_RANDOM_RUNS");
  return asked == nullptr ? 1000 : static_cast<unsigned>(std::strtoul(asked, nullptr, 10));
}

TEST(RandomRuns, NeverAWrongAttribution) {
  std::map<std::string, unsigned> seen;
  int wrong = 0;
  const unsigned cases = Cases();
  for (unsigned seed = 0; seed < cases && wrong < 5; ++seed) {
    TAttributionRun run(seed, EPlanted::kNothing);
    run.Run();
    for (const std::string& complaint : run.Complaints()) ADD_FAILURE() << "seed " << seed << ": " << complaint;
    wrong += run.Complaints().empty() ? 0 : 1;
    for (const auto& [what, count] : run.Seen()) seen[what] += count;
  }
  for (const char* what :
       {"r8", "jfr", "file", "cut file", "second turn", "unknown place", "not sent", "folded",
        "missing of several addresses", "missing of a block", "exception", "discarded", "whole run"}) {
    EXPECT_GT(seen[what], cases / 100) << "the cases have too little of: " << what;
  }
}

// A mistake in the plan is noticed in some case, so the checks above are not idle.
class PlantedMistake : public testing::TestWithParam<EPlanted> {};

TEST_P(PlantedMistake, IsNoticed) {
  bool isNoticed = false;
  for (unsigned seed = 0; seed < 200 && !isNoticed; ++seed) {
    TAttributionRun run(seed, GetParam());
    run.Run();
    isNoticed = !run.Complaints().empty();
  }
  EXPECT_TRUE(isNoticed);
}

INSTANTIATE_TEST_SUITE_P(RandomRuns, PlantedMistake,
                         testing::Values(EPlanted::kSkippedAddress, EPlanted::kSwappedRegisters,
                                         EPlanted::kSwappedTurns, EPlanted::kOtherChips, EPlanted::kOtherIndex,
                                         EPlanted::kOtherTurnNumber, EPlanted::kAnInstanceMore));

}  // namespace
}  // namespace tests
