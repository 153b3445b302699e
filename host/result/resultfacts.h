// What a result says about its run: where it comes from, what is missing, and why.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/bmc/exchange.h"
#include "host/profile/plan.h"
#include "host/result/instancefacts.h"

namespace velhost {

struct TRunFacts {
  std::string id;       ///< UUID
  std::string started;  ///< RFC 3339 with milliseconds and offset
  std::string host;
  std::string velhost;  ///< version
  std::map<std::string, std::string> labels;
};

struct TSourceFacts {
  std::vector<std::string> sp;  ///< as given
  std::string target;           ///< without users
  bool simulated = false;
  std::string recorded;  ///< when the recording was made; empty without one
  std::string serial;    ///< empty if unknown
  std::string uuid;      ///< empty if unknown
};

struct TPluginFacts {
  std::string name;
  std::string version;
  std::string interfaceVersion;
};

struct TSchemaFacts {
  std::vector<std::string> paths;
  std::string sha256;
  bool example = false;
};

/// What is known before the first instance.
struct TResultHeader {
  TRunFacts run;
  TSourceFacts source;
  std::string machineType;
  TPluginFacts plugin;
  TSchemaFacts schema;
  /// `json` and `table` leave out instances without a finding; `json` keeps those of which something could not be read.
  bool onlyFindings = false;
};

enum class EResultStatus { kComplete, kPartial, kUnreachable, kFailed };

enum class EReason {
  kStopped,
  kSessionLost,
  kRequestFailed,
  kRegisterUnread,
  kTimeUnread,
  kFileUnread,
  kBlockUnread,
  kBlockShort,
  kBlockUndecodable,
  kNotServed,
  kNotCollected,
  kNothingRead
};

/// Why a result is not complete.
struct TReason {
  EReason code = EReason::kStopped;
  std::string className;  ///< empty: of the whole run
  std::uint64_t count = 1;
  std::string message;
};

/// Why a planned instance was not delivered.
enum class EUnread { kAbsent, kRegisterUnread, kFileUnread, kBlockUnread, kBlockUndecodable, kDiscarded };

/// A planned instance that was not delivered.
struct TUnread {
  std::uint32_t turn = 0;  ///< counted over all requests of the plan
  TPlace place;
  EUnread code = EUnread::kAbsent;
};

/// An exchange that failed. Kept small, because there may be millions.
struct TExchangeFailure {
  std::uint32_t turn = 0;  ///< counted over all requests of the plan
  EExchangeKind kind = EExchangeKind::kOther;
  bool isPlaced = false;  ///< whether `place` and `registerIndex` are known
  THow how;
  int owner = 0;  ///< BMC node; service processor for dot commands
  TPlace place;
  std::int32_t registerIndex = -1;         ///< index into TPlannedClass::registers
  std::optional<std::uint32_t> address{};  ///< of a register read
  std::uint32_t repeat = 1;                ///< the number of equal failures in a row
};

/// What is known after the last instance.
struct TResultSummary {
  EResultStatus status = EResultStatus::kComplete;
  int exitStatus = 0;
  std::string message;  ///< empty if complete
  std::vector<TReason> reasons;
  std::uint64_t exchanges = 0;
  std::vector<TExchangeFailure> failed;
  std::vector<TUnread> unread;
  std::vector<TFinding> findings;  ///< unmasked ones first, then from the worst
  std::int64_t elapsedMs = 0;
  const TPlan* plan = nullptr;  ///< not owned; names the classes of `failed` and `unread`
};

}  // namespace velhost
