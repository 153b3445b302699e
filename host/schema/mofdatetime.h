// What is wrong with a text that is no datetime.
#pragma once

#include <string>
#include <string_view>

namespace velhost::Mof {

/// "found ..., expected ..." for the first fault of a text that TCIMDateTime::FromString refuses.
std::string DateTimeProblem(std::string_view text);

}  // namespace velhost::Mof
