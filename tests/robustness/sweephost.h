// A full collection that can be repeated within one process, with one or two exchanges tampered with.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/bmc/sim/simulatedserver.h"
#include "host/model/hostservices.h"
#include "nkrovel20/tpluginmanagernamespace.h"
#include "plugin/torgaplugin.h"
#include "tests/robustness/allocation.h"
#include "tests/robustness/collection.h"

namespace sweep {

/// Modifies an answer after the service processor has given it. Returning false loses the answer.
using TIpmiTamper = std::function<bool(velhost::TIpmiAnswer& answer)>;
using TDotTamper = std::function<bool(velhost::TDotAnswer& answer)>;

/// Forwards exchanges and tampers with those at the chosen places, counted from 0 over the whole run.
class TTamperer : public velhost::TForwardingServiceProcessor {
 public:
  using TForwardingServiceProcessor::TForwardingServiceProcessor;
  /// Refuses this and all later exchanges, as if the deadline of the run had passed.
  void SetLimit(std::size_t limit) { limit_ = limit; }
  void Reset() {
    count_ = 0;
    ipmi_.clear();
    dot_.clear();
  }
  void FaultIpmi(std::size_t place, TIpmiTamper tamper) { ipmi_[place] = std::move(tamper); }
  void FaultDot(std::size_t place, TDotTamper tamper) { dot_[place] = std::move(tamper); }
  std::function<void(bool isDot, int length)> onExchange;
  /// Called when an exchange is tampered with or refused, with the service processor of a dot command, or -1
  /// for IPMI. A place is only a number: after the first modified exchange, later ones may differ from the
  /// clean run.
  std::function<void(int serviceProcessor, bool isRefused)> onFault;

  std::optional<velhost::TIpmiAnswer> SendIpmi(const velhost::TIpmiRequest& request,
                                               const velhost::TStopSignal& stop) override;
  std::optional<velhost::TDotAnswer> SendDot(const velhost::TDotRequest& request,
                                             const velhost::TStopSignal& stop) override;

 private:
  bool IsRefused(std::size_t place, int serviceProcessor) const;

  std::size_t count_ = 0;
  std::size_t limit_ = static_cast<std::size_t>(-1);
  std::map<std::size_t, TIpmiTamper> ipmi_;
  std::map<std::size_t, TDotTamper> dot_;
};

/// One exchange of the clean run, with the length of its answer.
struct TExchangeNote {
  bool isDot = false;
  int length = 0;
};

/// The outcome of a run. Instances are stored as text by key (KeyOf).
struct TOutcome {
  std::map<std::string, std::vector<std::string>> instances;
  std::set<std::string> faulted;  ///< keys of instances that modified or refused exchanges may have changed
  std::set<int> faultedBlocks;    ///< service processors whose register block was modified or refused
  int faultedExchanges = 0;
  bool reachedLimit = false;       ///< some exchanges were refused
  bool blocksWereDropped = false;  ///< a block could not be decoded, so instances of earlier blocks were dropped
  bool traceIsWhole = false;
  std::string exception;
  long allocations = 0;  ///< requested by collector and host during GetData
};

class THost : public NKROVEL20::ILogger, public velhost::IHostEnvironment {
 public:
  explicit THost(const std::string& machineType);
  ~THost() override;

  TOutcome Run();
  /// A request for only the class of register blocks.
  TOutcome RunRegisterBlocks();
  /// The instances of one more run, in commit order.
  std::vector<boost::shared_ptr<const velhost::TInstance>> Instances();
  /// The clean run's exchanges, in order.
  const std::vector<TExchangeNote>& Exchanges() const { return exchanges_; }
  TTamperer& Tamperer() { return tamperer_; }
  /// Sets what is refused in later runs. Allocations of this host itself, for storing instances and lines,
  /// never fail.
  void RefuseAllocations(allocation::TPlan plan) { plan_ = plan; }
  const boost::shared_ptr<velhost::TNamespace>& Schema() const { return schema_; }

  void Log(EVELLogSeverity severity, const std::string& message) override;
  std::string MachineType() override { return machineType_; }
  NKROVEL20::TCIMDateTime LocalTime() override { return {2026, 1, 31, 12, 34, 56, 0, 60}; }

 private:
  void NoteExchanges();
  void GetData(std::vector<boost::shared_ptr<NKROVEL20::ICIMClass>>& classes, TOutcome& outcome);
  TOutcome Collect(const std::vector<std::string>& classes);

  std::string machineType_;
  velhost::TSimulatedServer server_;
  TTamperer tamperer_;
  boost::shared_ptr<velhost::TNamespace> schema_;
  torgareg::TTORGARegPluginCallbacks* plugin_;
  std::vector<TExchangeNote> exchanges_;
  allocation::TPlan plan_;
  std::string class_;
  std::string part_;
  int files_ = 0;
  int begun_ = 0;
  int ended_ = 0;
  bool blocksWereDropped_ = false;
};

}  // namespace sweep
