// Help for a name that was mistyped.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// The candidate that `name` was probably meant to be: the first of those with the fewest inserted,
/// left out, changed or swapped characters, letters compared without case. Where none differs in at
/// most a third of the name's characters (one character at least): the only one that begins with the
/// name, if that has four characters. Else empty.
VELHOST_API std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates);

/// The steps of one search, each of which compares two characters: less than a tenth of a second.
inline constexpr std::size_t kNameSearchSteps = 16U << 20U;

/// The same with no more than `steps`, from which those that it took are subtracted. Candidates that are too many for
/// them are not looked at, so that many searches together, or one among names that are all alike, end in time.
VELHOST_API std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates,
                                         std::size_t& steps);

/// "; did you mean NAME?" for the end of a message, with `quote` on both sides of the name; empty without a name.
VELHOST_API std::string Suggestion(std::string_view nearest, std::string_view quote = "");

}  // namespace velhost
