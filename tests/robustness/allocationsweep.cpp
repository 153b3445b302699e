// Refuses every allocation of a full collection, one at a time and from each one on. Checks that the request ends in
// std::bad_alloc or succeeds, that every delivered instance is complete, that no block is leaked, and that the next
// collection is like a clean one.
//
//   allocationsweep [--quick]      quick: every 23rd allocation
#include <cstdio>
#include <cstring>
#include <iostream>

#include "tests/robustness/sweephost.h"

namespace {

// Allocated by the collector without exceptions: for two register blocks and six capture files.
constexpr long kBuffers = 8;

class TAllocationSweep {
 public:
  explicit TAllocationSweep(const std::string& machineType) : host_(machineType), clean_(host_.Run()) {
    std::printf("%s: %ld allocations\n", machineType.c_str(), clean_.allocations);
    if (!clean_.traceIsWhole || Count(clean_) != sweep::kInstances) Fail(-1, "the clean run is not whole");
  }

  void RefuseEach(bool onward, long step) {
    for (long nth = 0; nth < clean_.allocations; nth += step) Refuse({nth, onward});
  }

  long Runs() const { return runs_; }
  long Swallowed() const { return swallowed_; }
  long Failures() const { return failures_; }

 private:
  void Refuse(allocation::TPlan plan) {
    ++runs_;
    const long before = allocation::LiveBlocks();
    {
      host_.RefuseAllocations(plan);
      const sweep::TOutcome outcome = host_.Run();
      host_.RefuseAllocations({});
      CheckOutcome(plan.nth, outcome);
    }
    if (allocation::LiveBlocks() != before) Fail(plan.nth, "left blocks behind");
    const sweep::TOutcome again = host_.Run();
    if (again.instances != clean_.instances || !again.exception.empty()) Fail(plan.nth, "changed the next collection");
    if (again.allocations != clean_.allocations) Fail(plan.nth, "changed what the next collection allocates");
  }

  void CheckOutcome(long nth, const sweep::TOutcome& outcome) {
    if (outcome.exception.empty()) {
      ++swallowed_;
      if (!outcome.traceIsWhole) Fail(nth, "ended early without an exception");
      // The buffer is that of a capture file, or of a block that gives two instances.
      const std::size_t missing = Count(clean_) - Count(outcome);
      if (missing != 1 && missing != 2) Fail(nth, "did without memory at the cost of other than one buffer");
    } else if (outcome.exception != "std::bad_alloc") {
      Fail(nth, "ended in " + outcome.exception);
    }
    for (const auto& [key, texts] : outcome.instances) CheckWhole(nth, key, texts);
  }

  static std::size_t Count(const sweep::TOutcome& outcome) {
    std::size_t count = 0;
    for (const auto& [key, texts] : outcome.instances) count += texts.size();
    return count;
  }

  // The delivered instances must be unchanged and in the order of the clean run; some may be missing.
  void CheckWhole(long nth, const std::string& key, const std::vector<std::string>& texts) {
    const auto expected = clean_.instances.find(key);
    if (expected == clean_.instances.end()) return Fail(nth, "made up " + key);
    auto next = expected->second.begin();
    for (const std::string& text : texts) {
      while (next != expected->second.end() && *next != text) ++next;
      if (next == expected->second.end()) return Fail(nth, "changed " + key);
      ++next;
    }
  }

  void Fail(long nth, const std::string& what) {
    if (++failures_ <= 20) std::cerr << "FAILED: refusing allocation " << nth << " " << what << "\n";
  }

  sweep::THost host_;
  sweep::TOutcome clean_;
  long runs_ = 0;
  long swallowed_ = 0;
  long failures_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const long step = argc > 1 && std::strcmp(argv[1], "--quick") == 0 ? 23 : 1;
  long runs = 0;
  long failures = 0;
  for (const char* machineType : {"6203", "4411"}) {
    TAllocationSweep sweep(machineType);
    sweep.RefuseEach(false, step);
    const long swallowedOnce = sweep.Swallowed();
    sweep.RefuseEach(true, step);
    // If all later allocations are refused as well, no collection can succeed.
    const bool isPlausible = sweep.Swallowed() == swallowedOnce && (step > 1 || swallowedOnce == kBuffers);
    if (!isPlausible) std::cerr << "FAILED: " << sweep.Swallowed() << " runs did without the memory\n";
    failures += isPlausible ? 0 : 1;
    std::printf("  %ld runs, of which %ld did without the memory\n", sweep.Runs(), sweep.Swallowed());
    runs += sweep.Runs();
    failures += sweep.Failures();
  }
  std::printf("%ld runs, %ld failures\n", runs, failures);
  return failures == 0 ? 0 : 1;
}
