// The words of the MOF grammar: as it knows them, and as messages name those that it expected.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/schema/mofscan.h"
#include "mofparser.hpp"

namespace velhost::Mof {

/// The token of a word, TMofParser::token::IDENT for one without a meaning of its own. Sets the type
/// code or bits of the words that have them; their span is the caller's.
int TokenOf(std::string_view word, TSemantic& value);

/// "; did you mean TYPE?" for a word that is close to a type's name, or empty.
std::string HintOfType(std::string_view word);

/// Takes the tokens that the grammar would have accepted. Tokens that stand for one thing to a
/// person, as all literals do, become one word.
class TExpected {
 public:
  void Add(TMofParser::symbol_kind_type token) { tokens_.push_back(token); }
  /// "';'", "';' or '='", "a type, a class name, '[' or '}'". `end` is what the end of the text is called.
  std::string Text(const std::string& end) const;
  /// Whether nothing but the rest of a reference's type fits.
  bool IsReference() const;

 private:
  bool Has(TMofParser::symbol_kind_type token) const;
  std::vector<std::string> Words(const std::string& end) const;

  std::vector<TMofParser::symbol_kind_type> tokens_;
};

}  // namespace velhost::Mof
