// Suggestions for mistyped names.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// The candidate that `name` was probably meant to be: the first of those with the fewest inserted, omitted, changed
/// or swapped characters, ignoring case. At most a third of the name's characters (at least one) may differ. If no
/// candidate is that close and the name has at least four characters, the only candidate that begins with it.
/// Otherwise empty.
VELHOST_API std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates);

/// The step limit of one search. A step compares two characters; this many take less than a tenth of a second.
inline constexpr std::size_t kNameSearchSteps = 16U << 20U;

/// As above, limited to `steps` comparisons; those used are subtracted. A candidate that would exceed the limit is
/// skipped, so that many searches together, or one among many similar names, take bounded time.
VELHOST_API std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates,
                                         std::size_t& steps);

/// "; did you mean NAME?", to be appended to a message, with `quote` on both sides of the name; empty if `nearest`
/// is.
VELHOST_API std::string Suggestion(std::string_view nearest, std::string_view quote = "");

}  // namespace velhost
