// A result that was read back: what `json` and `jsonl` say, as plain data that needs neither a schema nor a plan.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/bmc/exchange.h"
#include "host/meaning/classmeaning.h"
#include "host/model/cimclass.h"
#include "host/result/instancefacts.h"
#include "host/result/resultfacts.h"

namespace velhost {

struct TReadField {
  TBits bits;
  std::optional<std::string> name;
  std::uint64_t value = 0;
  std::optional<std::string> text;
};

struct TReadRegister {
  std::string name;
  bool isIndex = false;  ///< `place` is the qualifier "Index", not an address
  std::uint32_t place = 0;
  bool isNarrow = false;  ///< 32 bits wide, otherwise 64
  std::uint64_t value = 0;
  std::optional<std::uint32_t> upper;
  std::optional<std::uint32_t> folded;
  std::optional<std::array<std::uint8_t, 3>> identification;
  ERole role = ERole::kState;
  std::string unit;
  bool isMsb0 = false;
  std::vector<TReadField> fields;  ///< from the least significant

  unsigned Width() const { return isNarrow ? 32 : 64; }
};

struct TReadProperty {
  std::string name;
  /// Of the type that its text suggests: a JSON text does not say which of the types that it can hold was meant.
  TCIMValue value;
};

struct TReadInstance {
  std::string className;
  TInstanceFacts facts;  ///< without registers
  std::optional<std::vector<TReadRegister>> registers;
  std::vector<TReadProperty> properties;
};

struct TReadEvidence {
  std::string registerName;
  std::optional<std::uint64_t> value;
  bool isNarrow = false;
};

struct TReadFinding {
  std::string className;
  std::string key;
  TOrigin origin;
  std::string registerName;
  std::string bits;  ///< in the register's own numbering
  std::optional<std::string> name;
  std::uint64_t value = 0;
  bool isWide = false;  ///< the value is more than 32 bits wide
  std::optional<std::string> text;
  std::uint64_t registerValue = 0;
  bool isNarrow = false;  ///< the register is 32 bits wide, otherwise 64
  ESeverity severity = ESeverity::kError;
  bool isMasked = false;
  bool isFirst = false;
  bool isKnown = false;
  std::vector<TReadEvidence> evidence;
  std::vector<std::string> unknown;
};

struct TReadUnread {
  std::string className;
  std::string key;
  TOrigin origin;
  EUnread code = EUnread::kAbsent;
};

/// A failed exchange.
struct TReadFailure {
  std::string className;
  std::string key;       ///< empty if it is not known
  std::string property;  ///< empty if it is not known or there is none
  std::optional<std::uint32_t> address;
  int owner = 0;  ///< BMC node; service processor for dot commands
  EExchangeKind kind = EExchangeKind::kOther;
  THow how;
};

/// What a result says besides its instances. Of one that was cut, whatever precedes the cut.
struct TReadResult {
  TResultHeader header;
  EResultStatus status = EResultStatus::kComplete;
  int exitStatus = 0;
  std::string message;
  std::vector<TReason> reasons;
  std::uint64_t exchanges = 0;
  std::vector<TReadFailure> failed;
  std::vector<TReadUnread> unread;
  std::vector<TReadFinding> findings;
  std::int64_t elapsedMs = 0;
  bool isFiltered = false;      ///< it has only findings and what belongs to them
  std::uint64_t instances = 0;  ///< how many it has
  bool isCut = false;
  bool isServerKnown = true;  ///< whether machine type and schema are; otherwise it was cut before them
};

}  // namespace velhost
