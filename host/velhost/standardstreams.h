// The three standard streams: made safe at the start, what they are connected to, and standard output written to.
#pragma once

#include <string_view>

#include "host/velhost/commandline.h"

namespace velhost {

/// To be called first. Puts something harmless in the place of a standard stream that is closed (a file
/// opened later would take its number, and be read or written as that stream), and has failed writes
/// come back as errors instead of ending the process: into a closed pipe, and beyond the size that a
/// file may have.
void PrepareStandardStreams();

/// Writes all of it. Throws TClosedPipe, or THostError (kNotWritten): a standard output that is closed
/// or full is no success.
void WriteToStandardOutput(std::string_view text);

/// Whether the descriptor is a terminal.
bool IsTerminal(int descriptor);

/// Columns of the terminal behind the descriptor; else those of the environment's COLUMNS; else 80.
int TerminalWidth(int descriptor);

/// Whether to colour what goes to the descriptor. Automatically: a terminal that is not "dumb", and
/// no NO_COLOR in the environment.
bool UseColor(EWhen when, int descriptor);

}  // namespace velhost
