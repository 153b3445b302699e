// What a result says about its run and of the service processor, as far as it is known before anything is collected.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/result/resultfacts.h"
#include "host/velhost/commandline.h"
#include "host/velhost/serverconnection.h"

namespace velhost {

/// A run from its beginning on. To be made before the schema is read, and before a replay sets the time zone.
class TStartedRun {
 public:
  explicit TStartedRun(std::map<std::string, std::string> labels);
  const TRunFacts& Facts() const { return facts_; }
  std::int64_t ElapsedMs() const;

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  TRunFacts facts_;
};

/// `server` is what the connection knows.
TSourceFacts SourceFactsOf(const TCommonOptions& options, const TServerFacts& server);
/// The SPECs of the command line, or the default.
std::vector<std::string> SpecsOf(const TCommonOptions& options);
/// The SPECs without users, joined by commas: "lan:10.0.0.1,lan:10.0.0.2".
std::string TargetOf(const std::vector<std::string>& specs);

}  // namespace velhost
