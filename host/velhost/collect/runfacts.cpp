#include "host/velhost/collect/runfacts.h"

#include <limits.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <utility>

#include "host/base/runstamp.h"

namespace velhost {

namespace {

std::string NameOfThisMachine() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string WithoutUser(const std::string& spec) {
  if (SchemeOf(spec) != "lan") return spec;
  const std::size_t at = spec.rfind('@');
  return at == std::string::npos ? spec : "lan:" + spec.substr(at + 1);
}

}  // namespace

TStartedRun::TStartedRun(std::map<std::string, std::string> labels)
    : facts_{NewUuid(), LocalWallTimeText(std::chrono::system_clock::now()), NameOfThisMachine(), VELHOST_VERSION,
             std::move(labels)} {}

std::int64_t TStartedRun::ElapsedMs() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_).count();
}

TSourceFacts SourceFactsOf(const TCommonOptions& options, const TServerFacts& server) {
  const std::vector<std::string> specs = SpecsOf(options);
  return {specs, TargetOf(specs), server.isSimulated, server.recorded, server.serialNumber, server.uuid};
}

std::vector<std::string> SpecsOf(const TCommonOptions& options) {
  return options.serviceProcessors.empty() ? std::vector<std::string>{"sim"} : options.serviceProcessors;
}

std::string TargetOf(const std::vector<std::string>& specs) {
  std::string target;
  for (const std::string& spec : specs) target += (target.empty() ? "" : ",") + WithoutUser(spec);
  return target;
}

}  // namespace velhost
