// IPMI completion codes in words (IPMI 2.0, "Completion Codes").
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velhost {

/// The meaning of the code, in lower case. Codes without a meaning of their own are named by their range:
/// device-specific (0x01-0x7E), command-specific (0x80-0xBE), reserved otherwise.
std::string_view MeaningOfCompletionCode(std::uint8_t code);

/// "0xC3 timeout while processing command"; "lost: no answer" without a code.
std::string DescribeCompletionCode(std::optional<std::uint8_t> code);

}  // namespace velhost
