// What the standard streams are connected to.
#pragma once

#include "host/velhost/commandline.h"

namespace velhost {

/// Whether the descriptor is a terminal.
bool IsTerminal(int descriptor);

/// Columns of the terminal behind the descriptor; else those of the environment's COLUMNS; else 80.
int TerminalWidth(int descriptor);

/// Whether to colour what goes to the descriptor. Automatically: a terminal that is not "dumb", and
/// no NO_COLOR in the environment.
bool UseColor(EWhen when, int descriptor);

}  // namespace velhost
