// What changed between two results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/readback/readresult.h"

namespace velhost {

enum class ESide { kBefore, kAfter };

/// An instance that only one of the results has.
struct TKeyChange {
  std::string className;
  std::string key;
  bool hasAppeared = false;  ///< otherwise it has vanished
  bool isAbsent = false;     ///< the other result tried to read it and found that it does not exist
};

/// A field whose value changed. What a side does not describe or does not list there is zero.
struct TFieldChange {
  std::string bits;  ///< in the numbering of the side that lists it; AFTER's if both do
  std::optional<std::string> name;
  unsigned width = 1;  ///< bits
  std::uint64_t before = 0;
  std::uint64_t after = 0;
  std::optional<std::string> beforeText;
  std::optional<std::string> afterText;

  bool IsSet() const { return before == 0; }
  bool IsCleared() const { return after == 0; }
};

struct TRegisterChange {
  std::string className;
  std::string key;
  std::string registerName;
  std::uint64_t before = 0;
  std::uint64_t after = 0;
  unsigned beforeWidth = 64;  ///< bits
  unsigned afterWidth = 64;
  std::vector<TFieldChange> fields;  ///< from the least significant
};

/// A counter: a field of a register with the role kCounter, or all of one that has no fields.
struct TCounterChange {
  std::string className;
  std::string key;
  std::string registerName;
  std::string bits;  ///< empty: the whole register
  std::string name;  ///< of the field
  std::string unit;
  unsigned width = 64;  ///< bits
  std::uint64_t before = 0;
  std::uint64_t after = 0;

  /// Otherwise it was reset or has wrapped.
  bool HasDifference() const { return after >= before; }
};

/// A line that only one of two texts has.
struct TLineChange {
  bool isAdded = false;
  std::size_t number = 0;  ///< in its own text, from 1
  std::string text;        ///< without its newline
};

/// A capture file whose bytes changed.
struct TFileChange {
  std::string className;
  std::string key;
  std::size_t beforeSize = 0;
  std::size_t afterSize = 0;
  std::size_t firstDifference = 0;  ///< offset; the shorter size if one is the beginning of the other
  bool isText = false;              ///< both are printable text; otherwise there are no lines
  std::vector<TLineChange> lines;   ///< in the order of the texts
};

/// A property that only one of the results could read; the other found that it does not exist.
struct TMissingChange {
  std::string className;
  std::string key;
  std::string property;
  bool hasAppeared = false;  ///< otherwise it is absent now
};

/// A finding that only one of the results has, or that both judge differently.
struct TFindingChange {
  std::optional<TReadFinding> before;
  std::optional<TReadFinding> after;
};

/// Why something of a result cannot be compared.
enum class EUncompared {
  kNot,             ///< this side could be
  kUnread,          ///< it was not read, or not as a whole
  kUnknownPlace,    ///< the place of the instance is unknown, or that of others of its class
  kNotCollected,    ///< the run did not reach the class, or could not serve it
  kCut,             ///< the result was cut before it
  kNotPlanned,      ///< the register is not one that this side reads
  kUnknownRegister  ///< a register that decides about the finding was not read
};

struct TUncompared {
  std::string className;  ///< empty: of the whole result
  std::string key;        ///< empty: of the class
  std::string what;       ///< a property, or what of the result; may be empty
  EUncompared before = EUncompared::kNot;
  EUncompared after = EUncompared::kNot;
  std::string bits = {};  ///< of a finding; otherwise empty
};

/// A class that only one side was asked for.
struct TUnaskedClass {
  std::string className;  ///< "KROSG_A", "KROSG_A#2" for its second collection
  ESide askedFor = ESide::kBefore;
};

/// What is said of a whole result.
struct TComparedRun {
  TRunFacts run;
  TSourceFacts source;
  std::string machineType;
  std::string schemaSha256;
  EResultStatus status = EResultStatus::kComplete;
  bool isCut = false;
};

struct TDifferences {
  TComparedRun before;
  TComparedRun after;
  std::vector<TKeyChange> keys;
  std::vector<TRegisterChange> registers;
  std::vector<TCounterChange> counters;
  std::vector<TFileChange> files;
  std::vector<TMissingChange> missing;
  std::vector<TFindingChange> findings;
  std::vector<TUncompared> uncompared;
  std::vector<TUnaskedClass> unasked;

  bool HasOtherMachineType() const { return before.machineType != after.machineType && KnowsMachines(); }
  bool HasOtherSchema() const { return before.schemaSha256 != after.schemaSha256 && KnowsMachines(); }
  /// How many differences there are.
  std::size_t Count() const;

 private:
  bool KnowsMachines() const { return !before.schemaSha256.empty() && !after.schemaSha256.empty(); }
};

}  // namespace velhost
