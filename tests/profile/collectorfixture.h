// The real collector, loaded into the test, with a service processor that answers everything and records the
// requests.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "host/model/cimnamespace.h"
#include "host/model/hostservices.h"
#include "tests/support/namespaces.h"

namespace tests {

struct TRegisterRead {
  int chip;
  std::uint32_t address;
  friend bool operator==(const TRegisterRead&, const TRegisterRead&) = default;
};

/// One BMC node and two service processors with dot commands. Every register has the bytes 01 to 08, the
/// capture time is known, and the test sets the register block.
class TRememberingProcessor : public IServiceProcessor {
 public:
  TRememberingProcessor();

  std::vector<TRegisterRead> registerReads;
  std::vector<int> blockReads;           ///< service processors
  std::vector<std::string> openedAreas;  ///< names
  std::array<std::uint8_t, 4096> block;  ///< starts with a valid header, followed by zeros

  bool hasStorageAreas = false;  ///< whether all areas exist; they are empty

  void Forget();

  TDiscovery Discover() override { return {1, true, true, true, kServiceProcessors}; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;

  static constexpr int kServiceProcessors = 2;

 private:
  TIpmiAnswer AnswerStorageArea(const wire::TCommandBuffer& request);
};

/// The collector in a process with the test's own schema.
class TLoadedCollectorTest : public testing::Test, private IHostEnvironment {
 protected:
  TLoadedCollectorTest();
  ~TLoadedCollectorTest() override;

  /// A namespace whose committed instances are stored in `committed_`.
  boost::shared_ptr<TNamespace> NewSchema();
  /// Clears all records, then requests one class on a machine of that type.
  void Collect(const boost::shared_ptr<TNamespace>& schema, const boost::shared_ptr<TCIMClass>& requested,
               const std::string& machineType);

  TRememberingProcessor processor_;
  std::vector<boost::shared_ptr<const TInstance>> committed_;

 private:
  std::string MachineType() override { return machineType_; }
  TCIMDateTime LocalTime() override { return TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60); }

  std::string machineType_;
};

/// Adds the root class of every schema here: CIM_StatisticalData with the four identification properties.
void AddRoot(TNamespace& schema);

}  // namespace tests
