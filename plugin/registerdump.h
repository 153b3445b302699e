// Turns raw bytes into the decimal blocks of the debug trace.
#pragma once

#include <cstddef>
#include <string>

namespace torgareg {

/// The bytes data[0] to data[last] (`last` + 1 of them: an index, not a count) as decimal numbers
/// with a blank behind each, eight a line. The text begins with a newline and ends with one. The
/// caller owns at least `last` + 1 bytes.
std::string dumpBytes(const unsigned char* data, unsigned long last);

/// Appends `size` bytes as decimal numbers with a blank behind each, all on one line.
void appendDecimals(std::string& text, const unsigned char* data, std::size_t size);

/// Appends `size` bytes as two lower-case hexadecimal digits with a blank behind each.
void appendHexPairs(std::string& text, const unsigned char* data, std::size_t size);

}  // namespace torgareg
