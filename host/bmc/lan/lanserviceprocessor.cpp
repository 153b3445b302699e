#include "host/bmc/lan/lanserviceprocessor.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstddef>
#include <exception>
#include <span>
#include <utility>

#include "host/base/hosterror.h"
#include "host/bmc/lan/lanlink.h"

namespace velhost {

namespace {

// Ending a session takes one packet; a thread that hangs even so is abandoned.
constexpr std::chrono::milliseconds kClosingTime{1'000};

[[noreturn]] void ThrowStopped(const std::string& address, const TStopSignal& stop) {
  if (stop.WasRequested()) {
    throw THostError(EFailure::kStopped, "lan:" + address + ": interrupted while the session was being opened");
  }
  throw THostError(EFailure::kUnreachable, "lan:" + address + ": no session was open by the deadline");
}

[[noreturn]] void ThrowUnavailable(const std::string& message) {
  throw THostError(EFailure::kUnreachable, "lan: " + message);
}

std::string FindModule(const std::vector<std::string>& folders) {
  std::string tried;
  for (const std::string& folder : folders) {
    std::string file = folder + "/" + kLanModuleFile;
    if (access(file.c_str(), F_OK) == 0) return file;
    tried += "\n  " + file;
  }
#ifdef VELHOST_WITHOUT_LAN
  ThrowUnavailable("this velhost was built without LAN support (VELHOST_LAN=OFF)");
#else
  ThrowUnavailable(std::string("the LAN module ") + kLanModuleFile +
                   " is not installed; it is in the package velhost-lan, and \"cmake --build "
                   "build/release --target velhost_lan\" builds it. Looked for" +
                   tried);
#endif
}

/// Never unloaded: a thread abandoned by a stopped run may still be inside.
const VelLanModule& LoadModule(const std::string& file) {
  void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    const char* const reason = dlerror();
    ThrowUnavailable("cannot load the LAN module: " + std::string(reason ? reason : file));
  }
  const auto entry = reinterpret_cast<VelLanEntry>(dlsym(library, VELHOST_LAN_ENTRY));
  const VelLanModule* const module = entry != nullptr ? entry() : nullptr;
  if (module == nullptr || module->version != VELHOST_LAN_INTERFACE) {
    ThrowUnavailable(file + " is not a LAN module for this version of velhost");
  }
  return *module;
}

}  // namespace

/// A link and the thread that opens and closes its session. The thread's jobs share ownership of the link, so an
/// abandoned one keeps what it works with.
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

  /// Returns the warnings of TLanLink::Open.
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

  /// Only after Open.
  std::string SessionText() const { return link_->SessionText(); }

  /// Null if the run was stopped. The exchange is made on this thread, where the wait can be interrupted. Opening a
  /// session may wait for something that no signal interrupts, such as a name server, so it is done by the worker.
  std::shared_ptr<TLanExchange> Exchange(const TIpmiRequest& request, const TStopSignal& stop,
                                         TLanInterrupter& interrupter) {
    if (stop.IsStopped()) return nullptr;
    const auto exchange = MakeExchange(request);
    if (!link_->IsReady()) {
      const auto job = [link = link_, exchange]() noexcept { link->Prepare(*exchange); };
      if (!worker_.Run(job, stop)) return nullptr;
    }
    const TLanInterrupter::TScope scope(interrupter);
    link_->Exchange(*exchange);
    return exchange->answered || !stop.IsStopped() ? exchange : nullptr;
  }

 private:
  static std::shared_ptr<TLanExchange> MakeExchange(const TIpmiRequest& request) {
    const auto data = request.Data();
    auto exchange = std::make_shared<TLanExchange>();
    exchange->networkFunction = request.NetworkFunction();
    exchange->lun = request.Lun();
    exchange->request.reserve(1 + data.size());
    exchange->request.push_back(request.Command());
    exchange->request.insert(exchange->request.end(), data.begin(), data.end());
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
    Tell(ELanNotice::kDetail, nodes_.back()->SessionText());
  }
}

TLanServiceProcessor::~TLanServiceProcessor() = default;

void TLanServiceProcessor::Tell(ELanNotice kind, const std::string& text) const {
  if (!text.empty() && notice_) notice_(kind, text);
}

TDiscovery TLanServiceProcessor::Discover() {
  TDiscovery found;
  found.bmcNodes = static_cast<int>(nodes_.size());
  found.ipmiDriver = true;
  return found;
}

std::optional<TIpmiAnswer> TLanServiceProcessor::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  const int node = request.Node();
  if (node < 0 || static_cast<std::size_t>(node) >= nodes_.size()) return std::nullopt;
  const auto exchange = nodes_[static_cast<std::size_t>(node)]->Exchange(request, stop, interrupter_);
  if (!exchange) return std::nullopt;
  Tell(ELanNotice::kWarning, exchange->warning);
  Tell(ELanNotice::kLost, exchange->notice);
  if (!exchange->answered) return std::nullopt;
  const auto response = std::span(exchange->response).first(exchange->size);
  return TIpmiAnswer{response.front(), {response.begin() + 1, response.end()}};
}

std::unique_ptr<IServiceProcessor> OpenLan(const std::vector<TLanOptions>& options, const TStopSignal& stop,
                                           const std::vector<std::string>& folders, TLanNotice notice) {
  const VelLanModule& module = LoadModule(FindModule(folders));
  return std::make_unique<TLanServiceProcessor>(module, options, stop, std::move(notice));
}

}  // namespace velhost
