// The commands and options of velhost in one table, which is read by the parser, the help, the shell completion, the
// warnings about options that have no effect, and the test that compares the manual page with it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "host/velhost/commandline.h"

namespace velhost {

/// The arguments of a command: the words that are neither options nor their values.
struct TOperands {
  std::string usage = {};  ///< "[CLASS...]", "FILE"; empty: the command takes none
  std::string help = {};
  std::size_t least = 0;
  std::size_t most = 0;
  std::string completion = {};  ///< as in TOptionValue
  std::function<void(TCommandLine&, const std::vector<std::string>&)> take = {};
};

struct TVerb {
  EVerb verb = EVerb::kCollect;
  std::string name = {};
  std::string help = {};
  std::string example = {};
  TOperands operands = {};
};

/// What an option takes and where it is stored.
struct TOptionValue {
  std::string name = {};                  ///< "FILE", "text|jsonl"; empty: the option takes no value
  std::string expected = {};              ///< what a message about a rejected value says is accepted: "N from 0 to 17"
  std::vector<std::string> choices = {};  ///< the permitted words, if the value is one of a few
  /// What a shell offers for it: "files", "folders", "servers", "schemas", "classes", "registers", "machinetypes",
  /// "sp", "words 17 3"; empty: nothing.
  std::string completion = {};
  bool repeatable = false;
  /// Stores the value; called for each occurrence of the option. Returns false to reject the value.
  std::function<bool(TCommandLine&, const std::string&)> take = {};
};

struct TOption {
  std::string name = {};  ///< "--output"; "-v" for one without a long name
  char letter = 0;        ///< 'o'; 0 if it has only a name
  int levels = 1;         ///< how many repetitions have an effect: -v, -vv, -vvv
  TOptionValue value = {};
  std::string help = {};
  /// The commands that accept it. Empty: all of them, and it may also come before the command. Several entries may have
  /// the same name if they belong to different commands; then either all of them take a value or none does.
  std::vector<EVerb> verbs = {};
  std::vector<EVerb> usedBy = {};  ///< those in which it has an effect; empty: all that accept it
  /// Why it has no effect even in such a command: "without --log". Returns an empty string if it has one.
  std::function<std::string(const TCommandLine&)> idle = {};

  bool TakesValue() const { return !value.name.empty(); }
  bool BelongsTo(EVerb verb) const;
};

const std::vector<TVerb>& Verbs();
/// In the order in which the help shows them.
const std::vector<TOption>& Options();
/// What --sp takes: "sim[:FILE]", "replay:FILE", ...
const std::vector<std::string>& ServiceProcessorForms();

const TVerb& EntryOf(EVerb verb);
/// Null if no command has that name.
const TVerb* FindVerb(const std::string& name);
/// The entries with that name, "--output" or "-o".
std::vector<const TOption*> FindOptions(const std::string& name);

}  // namespace velhost
