// The commands and options of velhost in one table. Parser, help, shell completion, the test of the manual page and the
// warnings about options without effect all read it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "host/velhost/commandline.h"

namespace velhost {

/// The words that follow a command and belong to no option.
struct TOperands {
  std::string usage = {};  ///< "[CLASS...]", "FILE"; empty: the command takes none
  std::string help = {};
  std::size_t least = 0;
  std::size_t most = 0;
  std::string completion = {};  ///< as that of TOptionValue
  std::function<void(TCommandLine&, const std::vector<std::string>&)> take = {};
};

struct TVerb {
  EVerb verb = EVerb::kCollect;
  std::string name = {};
  std::string help = {};
  std::string example = {};
  TOperands operands = {};
};

/// What an option takes and where it goes.
struct TOptionValue {
  std::string name = {};                  ///< "FILE", "text|jsonl"; empty: the option takes no value
  std::string expected = {};              ///< what a refused value should have been: "N from 0 to 17"
  std::vector<std::string> choices = {};  ///< all that it can be, if these are a few words
  /// What a shell offers for it: "files", "folders", "servers", "classes", "sp", "words 17 3"; empty: nothing.
  std::string completion = {};
  bool repeatable = false;
  /// Stores the value; called once for each time that the option is given. False: it is refused.
  std::function<bool(TCommandLine&, const std::string&)> take = {};
};

struct TOption {
  std::string name = {};  ///< "--output"; "-v" for one without a long name
  char letter = 0;        ///< 'o'; 0: none beside the name
  int levels = 1;         ///< how often it counts: -v, -vv, -vvv
  TOptionValue value = {};
  std::string help = {};
  /// The commands that take it; empty: all of them, and then it may also come before the command. A name may have
  /// several entries if their commands differ; either all of them take a value or none.
  std::vector<EVerb> verbs = {};
  std::vector<EVerb> usedBy = {};  ///< those that it has an effect with; empty: all that take it
  /// Why it has no effect on a command line of such a command: "without --log". Empty: it has.
  std::function<std::string(const TCommandLine&)> idle = {};

  bool TakesValue() const { return !value.name.empty(); }
  bool BelongsTo(EVerb verb) const;
};

const std::vector<TVerb>& Verbs();
/// In the order of the help.
const std::vector<TOption>& Options();
/// What --sp takes: "sim[:FILE]", "replay:FILE", ...
const std::vector<std::string>& ServiceProcessorForms();

const TVerb& EntryOf(EVerb verb);
/// Null if there is no command of the name.
const TVerb* FindVerb(const std::string& name);
/// The entries of a name, "--output" or "-o".
std::vector<const TOption*> FindOptions(const std::string& name);

}  // namespace velhost
