// Help for a name that was mistyped.
#pragma once

#include <span>
#include <string_view>

#include "nkrovel20/api.h"

namespace NKROVEL20 {

/// The candidate that `name` was probably meant to be: the first of those with the fewest inserted,
/// left out, changed or swapped characters, letters compared without case. Where none differs in at
/// most a third of the name's characters (one character at least): the only one that begins with the
/// name, if that has four characters. Else empty.
NKROVEL20_API std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates);

}  // namespace NKROVEL20
