// The real collector on recordings of random servers: a replay and an image give back what was collected.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/bmc/record/image.h"
#include "host/bmc/record/recording.h"
#include "host/bmc/record/replay.h"
#include "host/bmc/supervision.h"
#include "host/model/hostservices.h"
#include "tests/result/collectorplugin.h"
#include "tests/result/numberingprocessor.h"
#include "tests/result/randomcase.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

// How many cases; more of them can be asked for.
unsigned Cases() {
  const char* const asked = std::getenv("VELHOST_RANDOM_RUNS");
  return asked == nullptr ? 300 : static_cast<unsigned>(std::strtoul(asked, nullptr, 10));
}

// Gives one of two handles, so that it stands for many areas in the course of a collection.
class TFewHandles : public TForwardingServiceProcessor {
 public:
  TFewHandles(IServiceProcessor& inner, TDice& dice) : TForwardingServiceProcessor(inner), dice_(dice) {}
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override {
    auto answer = TForwardingServiceProcessor::SendIpmi(request, stop);
    const bool isOpen = answer && KindOfRequest(request) == EExchangeKind::kOpen && answer->data.size() == 7;
    if (isOpen) answer->data = {0x39, 0x30, 0x00, static_cast<std::uint8_t>(dice_.Below(2)), 0x00, 0x00, 0x00};
    return answer;
  }

 private:
  TDice& dice_;
};

// No two readings are the same.
class TTickingClock : public IHostEnvironment {
 public:
  explicit TTickingClock(std::string machineType) : machineType_(std::move(machineType)) {}
  std::string MachineType() override { return machineType_; }
  TCIMDateTime LocalTime() override { return TCIMDateTime(2026, 1, 31, 12, 34, ++seconds_, 0, 60); }

 private:
  std::string machineType_;
  std::uint8_t seconds_ = 0;
};

struct TCollected {
  std::string recording;  ///< without the times that exchanges took
  std::vector<std::string> instances;
};

std::string TextOf(const TInstance& instance) {
  std::string text = instance.Class().Name();
  const auto& properties = instance.Class().Properties();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (instance.IsSet(i)) text += " " + properties[i]->Definition().name + "=" + instance.Value(i).ToString(10);
  }
  return text;
}

std::string WithoutDurations(const std::string& recording) {
  static constexpr std::string_view kMember = ",\"us\":";
  std::string text;
  std::size_t from = 0;
  for (std::size_t at = recording.find(kMember); at != std::string::npos; at = recording.find(kMember, from)) {
    text.append(recording, from, at + kMember.size() - from) += '0';
    from = recording.find('}', at);
  }
  return text.append(recording, from);
}

TCollected Collect(const TRandomCase& random, IServiceProcessor& processor, IHostEnvironment& environment) {
  TCollected collected;
  TStringSink recording;
  TRecorder recorder(recording, {random.machineType, "2026-01-31T12:00:00+01:00", 60, processor.Discover()});
  TSupervisedServiceProcessor supervised(processor);
  supervised.AddObserver(recorder);
  TRecordingEnvironment recorded(environment, recorder);
  TSizeLimit limit(supervised);
  const TStopSignal never;
  TServiceProcessorHub::Install(&limit, &never);
  THostServices::SetEnvironment(&recorded);
  random.schema->SetCommitCallback([&](const auto& instance) { collected.instances.push_back(TextOf(*instance)); });
  Collector().Callbacks().Init();
  for (const auto& request : random.requests) {
    limit.BeginRequest();
    std::vector<boost::shared_ptr<ICIMClass>> classes;
    for (const TAskedClass& asked : request) classes.push_back(asked.cimClass);
    try {
      Collector().Query()->GetData(random.schema, classes);
    } catch (const std::exception&) {
      collected.instances.push_back("an exception");
    }
  }
  Collector().Callbacks().DeInit();
  TServiceProcessorHub::Install(nullptr, nullptr);
  THostServices::SetEnvironment(nullptr);
  collected.recording = WithoutDurations(recording.Text());
  return collected;
}

TStoredBytes Bytes(const std::string& text) { return std::vector<std::uint8_t>(text.begin(), text.end()); }

class TRecordedCase {
 public:
  explicit TRecordedCase(unsigned seed)
      : dice_(seed), random_(MakeRandomCase(dice_)), inner_(dice_, random_.discovery), processor_(inner_, dice_) {
    TTickingClock clock(random_.machineType);
    original_ = Collect(random_, processor_, clock);
  }
  const TCollected& Original() const { return original_; }
  template <typename TAnswering>
  TCollected Again() {
    TAnswering answering("recording", Bytes(original_.recording));
    return Collect(random_, answering, answering);
  }

 private:
  TDice dice_;
  TRandomCase random_;
  TNumberingProcessor inner_;
  TFewHandles processor_;
  TCollected original_;
};

TEST(RandomRuns, ReplayAndImageGiveBackWhatWasCollected) {
  std::map<std::string, unsigned> seen;
  const unsigned cases = Cases();
  for (unsigned seed = 0; seed < cases && !testing::Test::HasFailure(); ++seed) {
    TRecordedCase run(seed);
    const TCollected& original = run.Original();
    if (original.recording.empty()) continue;
    const TCollected replayed = run.Again<TReplay>();
    const TCollected image = run.Again<TImage>();
    EXPECT_EQ(replayed.instances, original.instances) << "seed " << seed;
    EXPECT_EQ(image.instances, original.instances) << "seed " << seed;
    EXPECT_EQ(replayed.recording, original.recording) << "seed " << seed;
    EXPECT_EQ(image.recording, original.recording) << "seed " << seed;
    for (const char* what : {"\"kind\":\"ipmi\"", "\"kind\":\"dot\"", "\"kind\":\"clock\"", "\"ok\":false"}) {
      seen[what] += original.recording.find(what) == std::string::npos ? 0U : 1U;
    }
    seen["instances"] += original.instances.empty() ? 0U : 1U;
  }
  for (const auto& [what, count] : seen) EXPECT_GT(count, cases / 10) << "the cases have too little of: " << what;
  EXPECT_EQ(seen.size(), 5U);
}

}  // namespace
}  // namespace tests
