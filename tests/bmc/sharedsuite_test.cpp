#include "tests/bmc/sharedsuite.h"

#include "host/bmc/record/recording.h"
#include "host/bmc/record/replay.h"
#include "host/bmc/serviceprocessorhub.h"
#include "host/bmc/sim/faultinjector.h"
#include "host/bmc/sim/simulatedserver.h"

namespace tests {
namespace {

/// The simulator behind supervision and a fault injector whose one fault strikes never.
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

struct TTextSink : ITextSink {
  void Write(std::string_view part) override { text += part; }
  std::string text;
};

/// The simulator behind a recorder.
class TRecordedSimulator : public TSupervisedServiceProcessor {
 public:
  explicit TRecordedSimulator(const TServerFile& server)
      : TSupervisedServiceProcessor(simulator_),
        simulator_(server),
        recorder_(sink_, {"", "", 0, Discover(simulator_)}) {
    AddObserver(recorder_);
  }
  const std::string& Recording() const { return sink_.text; }

 private:
  TSimulatedServer simulator_;
  TTextSink sink_;
  TRecorder recorder_;
};

/// Answers each exchange by replaying the recording of all up to it.
class TReplayed : public IServiceProcessor {
 public:
  explicit TReplayed(const TServerFile& server) : recorded_(server) {}

  int BmcNodeCount() override { return Replayed()->BmcNodeCount(); }
  bool IpmiDriverPresent() override { return Replayed()->IpmiDriverPresent(); }
  bool TakesDotCommands() override { return Replayed()->TakesDotCommands(); }
  bool CheckCommunication() override { return Replayed()->CheckCommunication(); }
  int DiscoverServiceProcessors() override { return Replayed()->DiscoverServiceProcessors(); }

  bool SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) override {
    earlier_.push_back([node, request = buffer](IServiceProcessor& processor) { Send(processor, node, request); });
    wire::TCommandBuffer recorded = buffer;
    int recordedLength = length;
    recorded_.SendIpmi(node, recorded, recordedLength, stop);
    return ReplayedButLast()->SendIpmi(node, buffer, length, stop);
  }
  bool SendDot(int sp, const dotCmd& command, std::span<std::uint8_t> response, int& length,
               const TStopSignal& stop) override {
    const std::size_t size = response.size();
    earlier_.push_back([=](IServiceProcessor& processor) { tests::SendDot(processor, sp, command, size); });
    tests::SendDot(recorded_, sp, command, size, stop);
    return ReplayedButLast()->SendDot(sp, command, response, length, stop);
  }

 private:
  std::unique_ptr<TReplay> Replayed() { return std::make_unique<TReplay>("recording", Stored(recorded_.Recording())); }
  std::unique_ptr<TReplay> ReplayedButLast() {
    auto replay = Replayed();
    for (std::size_t i = 0; i + 1 < earlier_.size(); ++i) earlier_[i](*replay);
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
                                         TNamedFactory{"Replayed", Make<TReplayed>}),
                         [](const auto& suite) { return suite.param.name; });

}  // namespace
}  // namespace tests
