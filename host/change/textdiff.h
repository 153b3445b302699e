// What changed between two texts or two files of any bytes.
#pragma once

#include <string_view>
#include <vector>

#include "host/change/differences.h"

namespace velhost {

/// UTF-8 without control characters other than tabs and line ends.
bool IsPrintableText(std::string_view bytes);

/// The lines that only one of the texts has, as few as possible if the texts are not too long for that.
std::vector<TLineChange> CompareLines(std::string_view before, std::string_view after);

/// Of files whose bytes differ. The class and the key are left to the caller.
TFileChange CompareBytes(std::string_view before, std::string_view after);

}  // namespace velhost
