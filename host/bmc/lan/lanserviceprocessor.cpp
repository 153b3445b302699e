#include "host/bmc/lan/lanserviceprocessor.h"

#include <exception>
#include <utility>

#include "host/base/hosterror.h"
#include "host/bmc/commandframe.h"
#include "host/bmc/lan/lanlink.h"
#include "host/bmc/lan/lanworker.h"

namespace velhost {

namespace {

// Ending a session is one packet; a thread that hangs all the same is left behind.
constexpr std::chrono::milliseconds kClosingTime{1'000};

[[noreturn]] void ThrowStopped(const std::string& address, const TStopSignal& stop) {
  if (stop.WasRequested()) {
    throw THostError(EExitStatus::kPartial, "lan:" + address + ": interrupted while the session was being opened");
  }
  throw THostError(EExitStatus::kUnavailable, "lan:" + address + ": no session before the deadline");
}

}  // namespace

/// A link and the thread that opens and closes its session. The thread's jobs own the link too, so that
/// one left behind keeps what it works with.
class TLanServiceProcessor::TNode {
 public:
  TNode(const VelLanModule& module, const TLanOptions& options)
      : address_(AddressOf(options)), link_(std::make_shared<TLanLink>(module, options)) {}

  ~TNode() {
    TStopSignal soon;
    soon.SetDeadline(TStopSignal::TClock::now() + kClosingTime);
    worker_.Run([link = std::move(link_)] { link->Close(); }, soon);
  }

  TNode(const TNode&) = delete;
  TNode& operator=(const TNode&) = delete;

  /// The warnings of TLanLink::Open.
  std::vector<std::string> Open(const TStopSignal& stop) {
    struct TOutcome {
      std::vector<std::string> warnings;
      std::exception_ptr failure;
    };
    const auto outcome = std::make_shared<TOutcome>();
    const auto job = [link = link_, outcome] {
      try {
        outcome->warnings = link->Open();
      } catch (...) {
        outcome->failure = std::current_exception();
      }
    };
    if (!worker_.Run(job, stop)) ThrowStopped(address_, stop);
    if (outcome->failure) std::rethrow_exception(outcome->failure);
    return outcome->warnings;
  }

  /// Null when the run was stopped. The exchange is made on this thread, where the wait can be
  /// interrupted. A session that has to be opened may wait for what no signal ends, a name server, and
  /// goes to the worker.
  std::shared_ptr<TLanExchange> Exchange(const wire::TCommandBuffer& buffer, const TStopSignal& stop,
                                         TLanInterrupter& interrupter) {
    if (stop.IsStopped()) return nullptr;
    const auto exchange = MakeExchange(buffer);
    if (!link_->IsReady()) {
      const auto job = [link = link_, exchange]() noexcept { link->Prepare(*exchange); };
      if (!worker_.Run(job, stop)) return nullptr;
    }
    const TLanInterrupter::TScope scope(interrupter);
    link_->Exchange(*exchange);
    return exchange->answered || !stop.IsStopped() ? exchange : nullptr;
  }

 private:
  static std::shared_ptr<TLanExchange> MakeExchange(const wire::TCommandBuffer& buffer) {
    const auto data = CommandFrame::RequestData(buffer);
    auto exchange = std::make_shared<TLanExchange>();
    exchange->networkFunction = buffer[wire::TCommandBuffer::kNetworkFunction];
    exchange->lun = buffer[wire::TCommandBuffer::kLun];
    exchange->request.reserve(1 + data.size());
    exchange->request.push_back(buffer[wire::TCommandBuffer::kCommand]);
    for (const std::uint8_t byte : data) exchange->request.push_back(byte);
    return exchange;
  }

  std::string address_;
  std::shared_ptr<TLanLink> link_;
  TLanWorker worker_;
};

TLanServiceProcessor::TLanServiceProcessor(const VelLanModule& module, const std::vector<TLanOptions>& options,
                                           const TStopSignal& stop, TLanNotice notice)
    : interrupter_(stop, kLanAnswerTime), notice_(std::move(notice)) {
  for (const TLanOptions& node : options) {
    nodes_.push_back(std::make_unique<TNode>(module, node));
    for (const std::string& warning : nodes_.back()->Open(stop)) Tell(ELanNotice::kWarning, warning);
  }
}

TLanServiceProcessor::~TLanServiceProcessor() = default;

void TLanServiceProcessor::Tell(ELanNotice kind, const std::string& text) const {
  if (!text.empty() && notice_) notice_(kind, text);
}

bool TLanServiceProcessor::SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) {
  if (node < 0 || static_cast<std::size_t>(node) >= nodes_.size()) return false;
  const auto exchange = nodes_[static_cast<std::size_t>(node)]->Exchange(buffer, stop, interrupter_);
  if (!exchange) return false;
  Tell(ELanNotice::kWarning, exchange->warning);
  Tell(ELanNotice::kLost, exchange->notice);
  if (!exchange->answered) return false;
  const std::span<const std::uint8_t> response(exchange->response.data(), exchange->size);
  CommandFrame::StoreResponse(buffer, length, response.front(), response.subspan(1));
  return true;
}

bool TLanServiceProcessor::SendDot(int /*serviceProcessor*/, const dotCmd& /*command*/,
                                   std::span<std::uint8_t> /*response*/, int& /*length*/, const TStopSignal& /*stop*/) {
  return false;
}

}  // namespace velhost
