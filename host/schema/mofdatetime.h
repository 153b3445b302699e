// What is wrong with a text that is no datetime.
#pragma once

#include <string>
#include <string_view>

namespace NKROVEL20::Mof {

/// "found ..., expected ..." for the first fault of a text that TCIMDateTime::FromString refuses.
std::string DateTimeProblem(std::string_view text);

}  // namespace NKROVEL20::Mof
