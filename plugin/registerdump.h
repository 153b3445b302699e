// Formats raw bytes for the debug trace.
#pragma once

#include <cstddef>
#include <string>

namespace torgareg {

/// The bytes data[0] to data[last] (`last` is an index, so there are `last` + 1 of them) as decimal numbers,
/// each followed by a space, eight per line. The text starts and ends with a newline.
std::string dumpBytes(const unsigned char* data, unsigned long last);

/// Appends `size` bytes as decimal numbers, each followed by a space, all on one line.
void appendDecimals(std::string& text, const unsigned char* data, std::size_t size);

/// Appends `size` bytes as pairs of lower-case hexadecimal digits, each pair followed by a space.
void appendHexPairs(std::string& text, const unsigned char* data, std::size_t size);

}  // namespace torgareg
