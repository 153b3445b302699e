// The texts of --help, and the table of options as text, for the shell completion and for tests.
#pragma once

#include <string>

#include "host/velhost/optiontable.h"

namespace velhost {

/// What "velhost --help" prints: the options of every command, and the commands. At most 80 columns.
std::string Help();

/// What "velhost VERB --help" prints.
std::string HelpOf(const TVerb& verb);

/// The table of options, one line for each command and one for each name of an option:
///
///   command NAME COMPLETION
///   option NAME COMMANDS COMPLETION
///
/// COMMANDS are separated by commas, "*" means all. COMPLETION is that of TOptionValue; "none" for an option that takes
/// no value or a command that takes no arguments, "any" if nothing can be offered.
std::string OptionList();

}  // namespace velhost
