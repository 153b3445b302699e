// Values of options that have a syntax of their own.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace velhost {

/// What messages say about the values that SecondsOf accepts.
inline constexpr const char* kTimeForms = "TIME from 0.001 to 1000000000 seconds, such as 90, 45s, 1.5m or 2h";

/// The seconds of "90", "45s", "1.5m" or "2h"; empty if the text is anything else or the time is out of range.
std::optional<double> SecondsOf(const std::string& text);

/// Adds "KEY=VALUE" to the labels. A key is a letter or '_', then letters, digits and '_', at most 64 characters in
/// all; keys that begin with "__" are reserved by programs that read results. A value is any text without control
/// characters. Throws THostError (kInvalidArgument) that says what is wrong, and if the key has been given before.
void AddLabel(std::map<std::string, std::string>& labels, const std::string& given);

}  // namespace velhost
