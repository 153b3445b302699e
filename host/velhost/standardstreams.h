// The three standard streams: makes them safe at the start, tells what they are connected to, writes to standard
// output.
#pragma once

#include <string_view>

#include "host/velhost/commandline.h"

namespace velhost {

/// Call this first. Replaces each closed standard stream with /dev/null; otherwise a file opened later would get its
/// number, and be read or written as that stream. Makes writes to a closed pipe or beyond the file size limit fail with
/// an error instead of ending the process.
void PrepareStandardStreams();

/// Writes all of it. Throws TClosedPipe, or THostError (kNotWritten) if standard output is closed or full.
void WriteToStandardOutput(std::string_view text);

/// Whether the descriptor is a terminal.
bool IsTerminal(int descriptor);

/// The columns of the descriptor's terminal; else those in the environment variable COLUMNS; else 80.
int TerminalWidth(int descriptor);

/// Whether to colour what goes to the descriptor. kAuto: if it is a terminal that is not "dumb" and NO_COLOR is not
/// set in the environment.
bool UseColor(EWhen when, int descriptor);

}  // namespace velhost
