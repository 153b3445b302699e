// The texts of --help, and the table of options for those that cannot read it themselves.
#pragma once

#include <string>

#include "host/velhost/optiontable.h"

namespace velhost {

/// What "velhost --help" prints: the options of every command, and the commands. At most 80 columns.
std::string Help();

/// What "velhost VERB --help" prints.
std::string HelpOf(const TVerb& verb);

/// A line for each command and each name of an option, for the shell completion and for tests:
///
///   command NAME COMPLETION
///   option NAME COMMANDS COMPLETION
///
/// COMMANDS are parted by commas, "*" for all. COMPLETION is what TOptionValue has; "none" for an option without a
/// value or a command without arguments, "any" for a value that nothing can be offered for.
std::string OptionList();

}  // namespace velhost
