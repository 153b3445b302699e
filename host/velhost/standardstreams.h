// The three standard streams: made safe at the start, and standard output written to.
#pragma once

#include <string_view>

namespace velhost {

/// To be called first. Puts something harmless in the place of a standard stream that is closed (a file
/// opened later would take its number, and be read or written as that stream), and has failed writes
/// come back as errors instead of ending the process: into a closed pipe, and beyond the size that a
/// file may have.
void PrepareStandardStreams();

/// Writes all of it. Throws TClosedPipe, or THostError (kWriteFailed): a standard output that is closed
/// or full is no success.
void WriteToStandardOutput(std::string_view text);

}  // namespace velhost
