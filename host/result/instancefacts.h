// What the host knows about a committed instance besides the collector's bytes: its place, what is missing from it, and
// its registers' values as the service processor sent them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/meaning/classmeaning.h"
#include "host/meaning/field.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

/// How a read ended that delivered nothing usable.
enum class EHow {
  kCompletionCode,
  kLost,
  kShort,        ///< fewer bytes were received than the value takes
  kNotSent,      ///< the run was stopped
  kNotRecorded,  ///< not in the recording
  kAnswered      ///< several addresses: not exactly one of them answered
};
struct THow {
  EHow how = EHow::kLost;
  std::uint32_t number = 0;  ///< the completion code, the bytes received, or the addresses that answered
  bool operator==(const THow&) const = default;
};

/// What was to be read. At most one member is set.
struct TWhere {
  std::optional<std::uint32_t> address;
  std::optional<std::vector<std::uint32_t>> addresses;  ///< an R8 register that has not exactly one
  std::optional<std::uint16_t> index;
  std::optional<std::uint64_t> offset;  ///< of the first byte of a capture file that was not received
};

struct TMissing {
  std::string property;
  TWhere where;
  THow how;
};

/// A register whose bytes were received and whose property is set.
struct TRegisterFacts {
  std::size_t property = 0;  ///< index into TCIMClass::Properties()
  bool isIndex = false;      ///< `place` is the qualifier "Index", not an address
  std::uint32_t place = 0;
  bool isNarrow = false;  ///< 32 bits wide, otherwise 64
  std::uint64_t value = 0;
  std::optional<std::uint32_t> upper;                         ///< narrow: V7..V4 unless zero
  std::optional<std::uint32_t> folded;                        ///< narrow: the collector's bytes if they differ
  std::optional<std::array<std::uint8_t, 3>> identification;  ///< JFR
  const TRegisterMeaning* meaning = nullptr;                  ///< not owned; null if nothing is known of it
  std::vector<TField> fields;                                 ///< of `value`
};

struct TOrigin {
  CollectorProfile::EPath path = CollectorProfile::EPath::kNone;
  int owner = 0;                ///< BMC node; service processor on the JFR path
  std::optional<int> chip;      ///< R8
  std::optional<int> instance;  ///< R8, JFR
  std::string timeRaw;          ///< R8: "69 7d e8 2d"; empty if the second timestamp read did not answer
};

struct TFileFacts {
  std::string area;
  std::int32_t reportedSize = 0;
  std::uint64_t received = 0;
};

/// A register that is shown with a finding.
struct TEvidence {
  std::string registerName;
  std::optional<std::uint64_t> value;  ///< empty: it was not read
  bool isNarrow = false;               ///< 32 bits wide, otherwise 64
};

/// A register in which something went wrong. Its findings share it, because there may be millions of them.
struct TErrorRegister {
  std::string className;
  std::string key;
  TOrigin origin;
  std::string name;
  std::uint64_t value = 0;
  bool isNarrow = false;             ///< 32 bits wide, otherwise 64
  std::vector<std::string> unknown;  ///< registers that decide about the findings and were not read
  std::vector<TEvidence> evidence;   ///< of the findings that show it
};

/// A field of a register with the role kErrors that is not zero, or the upper half of such a register.
struct TFinding {
  std::shared_ptr<const TErrorRegister> place;  ///< never null
  std::string bits;                             ///< "16" or "5:4", in the register's own numbering
  std::optional<std::string> name;              ///< empty if no field describes it
  std::uint64_t value = 0;
  unsigned width = 1;  ///< bits
  bool isHex = false;
  std::optional<std::string> text;
  ESeverity severity = ESeverity::kError;
  bool isMasked = false;
  bool isFirst = false;       ///< its bit was set before the register's others
  bool isKnown = false;       ///< the baseline has it too
  bool showsEvidence = true;  ///< false if it belongs to another finding of the register, the first
};

struct TInstanceFacts {
  std::string key;
  std::optional<TOrigin> origin;                         ///< empty if the place is unknown
  std::optional<TFileFacts> file;                        ///< capture files
  std::vector<TMissing> missing;                         ///< in property order, the time last
  std::optional<std::vector<TRegisterFacts>> registers;  ///< R8 and JFR instances whose place is known
  bool isCut = false;                                    ///< a read of the capture file failed
  std::vector<TFinding> findings = {};                   ///< in the order of the registers, each from bit 0
};

}  // namespace velhost
