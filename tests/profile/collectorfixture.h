// The real collector, loaded into the test, before a service processor that answers everything and
// remembers what it was asked.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "host/bmc/serviceprocessorhub.h"
#include "host/model/cimnamespace.h"
#include "host/model/hostservices.h"

namespace velhost {

struct TRegisterRead {
  int chip;
  std::uint32_t address;
  friend bool operator==(const TRegisterRead&, const TRegisterRead&) = default;
};

/// One BMC node and two service processors with dot commands. Every register holds the bytes 01 to
/// 08, the capture time is known, and the register block is the test's.
class TRememberingProcessor : public IServiceProcessor {
 public:
  TRememberingProcessor();

  std::vector<TRegisterRead> registerReads;
  std::vector<int> blockReads;           ///< service processors
  std::vector<std::string> openedAreas;  ///< names
  std::array<std::uint8_t, 4096> block;  ///< a valid header first, zeros behind it

  bool hasStorageAreas = false;  ///< whether every area exists, each without a byte

  void Forget();

  int BmcNodeCount() override { return 1; }
  bool IpmiDriverPresent() override { return true; }
  bool TakesDotCommands() override { return true; }
  bool CheckCommunication() override { return true; }
  int DiscoverServiceProcessors() override { return kServiceProcessors; }
  bool SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) override;
  bool SendDot(int serviceProcessor, const dotCmd& command, std::span<std::uint8_t> response, int& length,
               const TStopSignal& stop) override;

  static constexpr int kServiceProcessors = 2;

 private:
  void AnswerStorageArea(wire::TCommandBuffer& buffer, int& length);
};

/// The collector in a process with a schema of the test's.
class TCollectorTest : public testing::Test, private IHostEnvironment {
 protected:
  TCollectorTest();
  ~TCollectorTest() override;

  /// A namespace whose instances come to `committed_`.
  boost::shared_ptr<TNamespace> NewSchema();
  /// Asks the collector for one class on a machine of that type, forgetting what was before.
  void Collect(const boost::shared_ptr<TNamespace>& schema, const boost::shared_ptr<TCIMClass>& requested,
               const std::string& machineType);

  TRememberingProcessor processor_;
  std::vector<boost::shared_ptr<const TInstance>> committed_;

 private:
  std::string MachineType() override { return machineType_; }
  TCIMDateTime LocalTime() override { return TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60); }

  std::string machineType_;
};

/// The root of every schema here: CIM_StatisticalData with the four identification properties.
void AddRoot(TNamespace& schema);

}  // namespace velhost
