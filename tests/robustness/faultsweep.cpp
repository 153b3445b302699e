// Tampers with every exchange of a full collection, one at a time and in pairs, in every way that an answer can be
// wrong. Checks that the run ends, that its trace is complete, and that every instance that does not depend on a
// tampered exchange is the same as in the clean run. Prints counts.
//
//   faultsweep [--quick] [MACHINE_TYPE...]      quick: a sample of the codes, lengths, bits and pairs
//
// The default is one machine type of each R8 family: 6203 and 4411.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <set>

#include "tests/robustness/sweephost.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;

constexpr int kLongest = 300;  // the longest IPMI response tried; the buffer has 256 bytes
constexpr int kLongestDot = 70'000;
constexpr std::size_t kBlock = 4096;
constexpr std::size_t kCutEnds = 300;       // blocks are truncated at each position this close to their ends
constexpr std::size_t kBlockInstances = 2;  // instances per register block
// The deadline of a run, in exchanges: a flipped size bit may request gigabytes, ten bytes at a time.
constexpr std::size_t kDeadline = 2000;

class TSweep {
 public:
  TSweep(const std::string& machineType, bool quick) : host_(machineType), quick_(quick), clean_(host_.Run()) {
    if (!clean_.traceIsWhole || !clean_.exception.empty()) Fail("the clean run", "is not whole");
    const std::vector<std::string>& blocks = clean_.instances[sweep::kJfrClass];
    if (std::set<std::string>(blocks.begin(), blocks.end()).size() != 2 * kBlockInstances) {
      Fail("the clean run", "lacks instances of blocks, or has equal ones");
    }
    if (host_.Exchanges().size() != sweep::kExchanges || clean_.instances.size() != sweep::kKeys) {
      Fail("the clean run", "has other exchanges or instances than it should");
    }
    host_.Tamperer().SetLimit(kDeadline);
    std::printf("%s: %zu exchanges, %zu keys of instances\n", machineType.c_str(), host_.Exchanges().size(),
                clean_.instances.size());
  }

  void Singles() {
    for (std::size_t place = 0; place < host_.Exchanges().size(); ++place) {
      const auto& note = host_.Exchanges()[place];
      if (note.isDot) {
        SweepDot(place);
      } else {
        SweepIpmi(place, note.length);
      }
    }
  }

  // All pairs of IPMI exchanges, each lost, refused with a completion code, or truncated, in every
  // combination.
  void Pairs() {
    const std::vector<sweep::TIpmiTamper> ways = {Lost(), Code(0xC3), Cut(12)};
    const std::size_t count = host_.Exchanges().size();
    std::size_t number = 0;
    for (std::size_t a = 0; a < count; ++a) {
      for (std::size_t b = a + 1; b < count; ++b) {
        if (host_.Exchanges()[a].isDot || host_.Exchanges()[b].isDot) continue;
        if (quick_ && number++ % 97 != 0) continue;
        for (const auto& first : ways) {
          for (const auto& second : ways) {
            host_.Tamperer().FaultIpmi(a, first);
            host_.Tamperer().FaultIpmi(b, second);
            const sweep::TOutcome outcome = host_.Run();
            // After the first failure, other exchanges of the same instance or file may be skipped.
            Check(outcome, outcome.faultedExchanges == 2 ? "two faulted exchanges" : "the second did not come");
          }
        }
      }
    }
  }

  // Every length that a dot command may report, for either block, in a request for register blocks only.
  void DotLengths() {
    for (int claimed = 0; claimed <= kLongestDot; claimed += Step(997)) {
      host_.Tamperer().FaultDot(static_cast<std::size_t>(claimed % 2), ClaimsDotLength(claimed));
      const sweep::TOutcome outcome = host_.RunRegisterBlocks();
      Count("register block's length");
      CheckEnd(outcome, "register block's length");
      CheckBlocks(outcome, "register block's length");
    }
  }

  std::size_t Runs() const {
    std::size_t runs = 0;
    for (const auto& [how, count] : counts_) runs += count;
    return runs;
  }
  void PrintCounts() const {
    for (const auto& [how, count] : counts_) std::printf("  %-40s %7zu runs\n", how.c_str(), count);
  }
  std::size_t Failures() const { return failures_; }

 private:
  static sweep::TIpmiTamper Lost() {
    return [](TIpmiAnswer&) { return false; };
  }
  static sweep::TIpmiTamper Code(int code) {
    return [code](TIpmiAnswer& answer) {
      answer.completionCode = static_cast<std::uint8_t>(code);
      return true;
    };
  }
  // Cut to `total` bytes of the buffer, byte 5 with it; a longer one is only claimed to be longer.
  static sweep::TIpmiTamper Cut(int total) {
    return [total](TIpmiAnswer& answer) {
      constexpr int kHead = static_cast<int>(wire::TCommandBuffer::kData);
      constexpr int kMaxData = static_cast<int>(wire::TCommandBuffer::kMaxData);
      if (total <= static_cast<int>(wire::TCommandBuffer::kCompletionCode)) answer.completionCode = 0;
      answer.data.resize(static_cast<std::size_t>(std::clamp(total - kHead, 0, kMaxData)));
      answer.claimedLength = total;
      return true;
    };
  }
  static sweep::TIpmiTamper ClaimsLength(int claimed) {
    return [claimed](TIpmiAnswer& answer) {
      answer.claimedLength = claimed;
      return true;
    };
  }
  static sweep::TIpmiTamper ClaimsDataLength(int claimed) {
    return [claimed](TIpmiAnswer& answer) {
      answer.claimedDataLength = static_cast<std::uint8_t>(claimed);
      return true;
    };
  }
  // Of the completion code, the data length, and then the data.
  static sweep::TIpmiTamper Flip(int bit) {
    return [bit](TIpmiAnswer& answer) {
      const auto flipped = static_cast<std::uint8_t>(1U << (bit % 8));
      if (bit < 8) {
        answer.completionCode ^= flipped;
      } else if (bit < 16) {
        answer.claimedDataLength = answer.DataLength() ^ flipped;
      } else {
        answer.data[static_cast<std::size_t>(bit / 8 - 2)] ^= flipped;
      }
      return true;
    };
  }
  static sweep::TDotTamper LostDot() {
    return [](TDotAnswer&) { return false; };
  }
  static sweep::TDotTamper FailedDot() {
    return [](TDotAnswer& answer) { return answer.failed = true; };
  }
  static sweep::TDotTamper ClaimsDotLength(int claimed) {
    return [claimed](TDotAnswer& answer) {
      answer.claimedLength = claimed;
      return true;
    };
  }
  static sweep::TDotTamper CutDot(std::size_t size) {
    return [size](TDotAnswer& answer) {
      answer.data.resize(size);
      return true;
    };
  }
  static sweep::TDotTamper FlipDot(std::size_t bit) {
    return [bit](TDotAnswer& answer) {
      answer.data[bit / 8] ^= static_cast<std::uint8_t>(1U << (bit % 8));
      return true;
    };
  }

  template <typename T>
  T Step(T quickly) const {
    return quick_ ? quickly : 1;
  }

  void FaultIpmi(std::size_t place, const sweep::TIpmiTamper& tamper, const char* how) {
    host_.Tamperer().FaultIpmi(place, tamper);
    Check(host_.Run(), how);
  }
  void FaultDot(std::size_t place, const sweep::TDotTamper& tamper, const char* how) {
    host_.Tamperer().FaultDot(place, tamper);
    Check(host_.Run(), how);
  }

  void SweepIpmi(std::size_t place, int length) {
    FaultIpmi(place, Lost(), "lost");
    for (int code = 0; code < 256; code += Step(51)) FaultIpmi(place, Code(code), "completion code");
    for (int total = 0; total <= kLongest; total += Step(29)) FaultIpmi(place, Cut(total), "length");
    for (const int claimed : {-2147483647 - 1, -1, 0, 4, 8, 13, 255, 256, 257, 65536, 2147483647}) {
      FaultIpmi(place, ClaimsLength(claimed), "false length");
    }
    for (int claimed = 0; claimed < 256; claimed += Step(51))
      FaultIpmi(place, ClaimsDataLength(claimed), "false data length");
    const int bytes = 2 + length - static_cast<int>(wire::TCommandBuffer::kData);
    for (int bit = 0; bit < bytes * 8; bit += Step(23)) FaultIpmi(place, Flip(bit), "flipped bit");
  }

  void SweepDot(std::size_t place) {
    FaultDot(place, LostDot(), "lost");
    FaultDot(place, FailedDot(), "failure together with a block");
    for (std::size_t size = 0; size < kBlock; size += Step<std::size_t>(29)) {
      if (size <= kCutEnds || size >= kBlock - kCutEnds) FaultDot(place, CutDot(size), "block's length");
    }
    const std::vector<int> lengths = FalseDotLengths();
    for (std::size_t i = 0; i < lengths.size(); i += Step<std::size_t>(7)) {
      FaultDot(place, ClaimsDotLength(lengths[i]), "block's false length");
    }
    for (std::size_t bit = 0; bit < kBlock * 8; bit += Step<std::size_t>(997))
      FaultDot(place, FlipDot(bit), "block's flipped bit");
  }

  static std::vector<int> FalseDotLengths() {
    std::vector<int> lengths = {-2147483647 - 1, -65536, -1};
    for (int i = 0; i <= kLongest; ++i) lengths.push_back(i);
    for (int i = 4080; i <= 4110; ++i) lengths.push_back(i);
    for (int i = 5000; i <= 70000; i += 1000) lengths.push_back(i);
    for (const int i : {65535, 65536, 65537, 2147483647}) lengths.push_back(i);
    return lengths;
  }

  void Count(const std::string& how) { ++counts_[how]; }

  void CheckEnd(const sweep::TOutcome& outcome, const std::string& how) {
    if (!outcome.exception.empty()) Fail(how, "ended in " + outcome.exception);
    if (!outcome.traceIsWhole) Fail(how, "has a trace that is not whole");
    if (outcome.faulted.empty()) Fail(how, "faulted nothing");
  }

  // Instances from exchanges after the deadline may be missing as well; such runs are counted separately.
  void Check(const sweep::TOutcome& outcome, const std::string& how) {
    Count(outcome.reachedLimit ? how + ", until the deadline" : how);
    CheckEnd(outcome, how);
    CheckBlocks(outcome, how);
    for (const auto& [key, texts] : outcome.instances) {
      const auto known = clean_.instances.find(key);
      if (known == clean_.instances.end() || texts.size() > known->second.size()) Fail(how, "made up " + key);
    }
    for (const auto& [key, texts] : clean_.instances) {
      if (key == sweep::kJfrClass || outcome.faulted.contains(key)) continue;
      const auto found = outcome.instances.find(key);
      if (found == outcome.instances.end() || found->second != texts) {
        Fail(how, "changed " + key + ", which does not depend on a faulted exchange");
      }
    }
  }

  // A tampered block may change only its own instances, and never adds any. If it cannot be decoded, the
  // instances of earlier blocks are dropped.
  void CheckBlocks(const sweep::TOutcome& outcome, const std::string& how) {
    const std::vector<std::string>& clean = clean_.instances.at(sweep::kJfrClass);
    if (clean.size() != 2 * kBlockInstances) return;
    const auto given = outcome.instances.find(sweep::kJfrClass);
    const std::vector<std::string> found =
        given == outcome.instances.end() ? std::vector<std::string>() : given->second;
    const bool isFirstFaulted = outcome.faultedBlocks.contains(0);
    const bool isSecondFaulted = outcome.faultedBlocks.contains(1);
    std::size_t fixed = 0;
    if (!isFirstFaulted && !(isSecondFaulted && outcome.blocksWereDropped)) {
      fixed += kBlockInstances;
      if (found.size() < fixed || !std::equal(clean.begin(), clean.begin() + kBlockInstances, found.begin())) {
        return Fail(how, "changed the first block's instances");
      }
    }
    if (!isSecondFaulted) {
      fixed += kBlockInstances;
      if (found.size() < fixed ||
          !std::equal(clean.end() - kBlockInstances, clean.end(), found.end() - kBlockInstances)) {
        return Fail(how, "changed the second block's instances");
      }
    }
    const std::size_t loose = kBlockInstances * (static_cast<std::size_t>(isFirstFaulted) + isSecondFaulted);
    if (found.size() > fixed + loose) Fail(how, "made up instances of a block");
  }

  void Fail(const std::string& how, const std::string& what) {
    if (++failures_ <= 20) std::cerr << "FAILED: a run with " << how << " " << what << "\n";
  }

  sweep::THost host_;
  bool quick_;
  sweep::TOutcome clean_;
  std::map<std::string, std::size_t> counts_;  // number of runs by kind of tampering
  std::size_t failures_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> machineTypes(argv + 1, argv + argc);
  const bool quick = std::erase(machineTypes, "--quick") > 0;
  if (machineTypes.empty()) machineTypes = {"6203", "4411"};
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // shows the progress of a long run
  const auto start = std::chrono::steady_clock::now();
  std::size_t runs = 0;
  std::size_t failures = 0;
  for (const std::string& machineType : machineTypes) {
    TSweep sweep(machineType, quick);
    sweep.Singles();
    sweep.Pairs();
    sweep.DotLengths();
    sweep.PrintCounts();
    runs += sweep.Runs();
    failures += sweep.Failures();
  }
  const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
  std::printf("%zu runs, %zu failures, %lld s\n", runs, failures, static_cast<long long>(elapsed.count()));
  return failures == 0 ? 0 : 1;
}
