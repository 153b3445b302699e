#include "tests/serviceprocessor/sharedsuite.h"

#include "host/serviceprocessor/faultinjector.h"
#include "host/serviceprocessor/serviceprocessorhub.h"
#include "host/serviceprocessor/simulatedserver.h"

namespace NKROVEL20::Testing {
namespace {

std::unique_ptr<IServiceProcessor> MakeSimulator(const TServerFile& server) {
  return std::make_unique<TSimulatedServer>(server);
}

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

std::unique_ptr<IServiceProcessor> MakeDecorated(const TServerFile& server) {
  return std::make_unique<TDecoratedSimulator>(server);
}

INSTANTIATE_TEST_SUITE_P(Host, ServiceProcessorSuite,
                         testing::Values(TNamedFactory{"Simulator", MakeSimulator},
                                         TNamedFactory{"Decorated", MakeDecorated}),
                         [](const auto& suite) { return suite.param.name; });

}  // namespace
}  // namespace NKROVEL20::Testing
