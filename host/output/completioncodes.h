// IPMI completion codes in words (IPMI 2.0, "Completion Codes").
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velhost {

/// What the code means, in lower case; codes without a meaning of their own are named by their range:
/// device-specific (0x01-0x7E), command-specific (0x80-0xBE), else reserved.
std::string_view MeaningOfCompletionCode(std::uint8_t code);

/// "0xC3 timeout while processing command"; without a code "lost: no answer".
std::string DescribeCompletionCode(std::optional<std::uint8_t> code);

}  // namespace velhost
