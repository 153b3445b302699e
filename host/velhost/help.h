// The texts of --help, and the option table as text for shell completion and tests.
#pragma once

#include <string>

#include "host/velhost/optiontable.h"

namespace velhost {

/// What "velhost --help" prints: the options of every command, and the commands. At most 80 columns.
std::string Help();

/// What "velhost VERB --help" prints.
std::string HelpOf(const TVerb& verb);

/// The option table, one line for each command and one for each option name:
///
///   command NAME COMPLETION
///   option NAME COMMANDS COMPLETION
///
/// COMMANDS are separated by commas, "*" means all. COMPLETION is that of TOptionValue; "none" for an option that
/// takes no value or a command that takes no arguments, "any" if there is nothing to offer.
std::string OptionList();

}  // namespace velhost
