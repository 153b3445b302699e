#include "tests/bmc/sharedsuite.h"
#include "tests/support/namespaces.h"

#include "host/bmc/record/image.h"
#include "host/bmc/record/recording.h"
#include "host/bmc/record/replay.h"
#include "host/bmc/sim/faults.h"
#include "host/bmc/sim/simulatedserver.h"

namespace tests {

namespace {

/// The simulator wrapped in supervision and a fault injector whose only fault never applies.
class TDecoratedSimulator : public TSupervisedServiceProcessor {
 public:
  explicit TDecoratedSimulator(const TServerFile& server)
      : TSupervisedServiceProcessor(faults_), simulator_(server), faults_(simulator_, {NeverDue()}) {}

 private:
  static TFault NeverDue() {
    TFault fault;
    fault.nth = 1'000'000;
    fault.lost = true;
    return fault;
  }
  TSimulatedServer simulator_;
  TFaultInjector faults_;
};

/// The simulator wrapped in a recorder.
class TRecordedSimulator : public TSupervisedServiceProcessor {
 public:
  explicit TRecordedSimulator(const TServerFile& server)
      : TSupervisedServiceProcessor(simulator_),
        simulator_(server),
        recorder_(sink_, {"", "", 0, simulator_.Discover()}) {
    AddObserver(recorder_);
  }
  const std::string& Recording() const { return sink_.Text(); }

 private:
  TSimulatedServer simulator_;
  TStringSink sink_;
  TRecorder recorder_;
};

/// Answers each exchange from the recording of all exchanges up to it.
template <typename TAnswering>
class TReplayed : public IServiceProcessor {
 public:
  explicit TReplayed(const TServerFile& server) : recorded_(server) {}

  /// A recording begins with its first exchange.
  TDiscovery Discover() override {
    SendIpmi(TIpmiRequest(0, Timestamp()), TStopSignal());
    return Replayed()->Discover();
  }

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override {
    recorded_.SendIpmi(request, stop);
    const auto replay = ReplayedUpToNow();
    earlier_.push_back([request](IServiceProcessor& processor) { processor.SendIpmi(request, TStopSignal()); });
    return replay->SendIpmi(request, stop);
  }
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override {
    recorded_.SendDot(request, stop);
    const auto replay = ReplayedUpToNow();
    earlier_.push_back([request, command = request.command](IServiceProcessor& processor) {
      processor.SendDot({request.serviceProcessor, command, request.capacity}, TStopSignal());
    });
    return replay->SendDot(request, stop);
  }

 private:
  std::unique_ptr<TAnswering> Replayed() {
    return std::make_unique<TAnswering>("recording", Stored(recorded_.Recording()));
  }
  std::unique_ptr<TAnswering> ReplayedUpToNow() {
    auto replay = Replayed();
    for (const auto& send : earlier_) send(*replay);
    return replay;
  }

  TRecordedSimulator recorded_;
  std::vector<std::function<void(IServiceProcessor&)>> earlier_;
};

template <typename TProcessor>
std::unique_ptr<IServiceProcessor> Make(const TServerFile& server) {
  return std::make_unique<TProcessor>(server);
}

INSTANTIATE_TEST_SUITE_P(Host, ServiceProcessorSuite,
                         testing::Values(TNamedFactory{"Simulator", Make<TSimulatedServer>},
                                         TNamedFactory{"Decorated", Make<TDecoratedSimulator>},
                                         TNamedFactory{"Recorded", Make<TRecordedSimulator>},
                                         TNamedFactory{"Replayed", Make<TReplayed<TReplay>>},
                                         TNamedFactory{"Image", Make<TReplayed<TImage>>}),
                         [](const auto& suite) { return suite.param.name; });

}  // namespace
}  // namespace tests
