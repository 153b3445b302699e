// The words that the MOF grammar knows.
#pragma once

#include <string>
#include <string_view>

#include "host/schema/mofscan.h"

namespace velhost::Mof {

/// The token of a word, TMofParser::token::IDENT for one without a meaning of its own. Sets the type
/// code or bits of the words that have them; their span is the caller's.
int TokenOf(std::string_view word, TSemantic& value);

/// "; did you mean TYPE?" for a word that is close to a type's name, or empty.
std::string HintOfType(std::string_view word);

}  // namespace velhost::Mof
