// The words of the MOF grammar: the tokens they stand for, and their names in "expected" messages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/schema/mofscan.h"
#include "mofparser.hpp"

namespace velhost::Mof {

/// The token of a word, TMofParser::token::IDENT if it is not reserved. For words with a type code or bits, sets
/// those in `value`; the caller sets their span.
int TokenOf(std::string_view word, TSemantic& value);

/// "; did you mean TYPE?" for a word that is close to a type's name, otherwise empty.
std::string HintOfType(std::string_view word);

/// Collects the tokens that the grammar would have accepted. Tokens that are one thing to a reader, such as all
/// literals, become one word.
class TExpected {
 public:
  void Add(TMofParser::symbol_kind_type token) { tokens_.push_back(token); }
  /// "';'", "';' or '='", "a type, a class name, '[' or '}'". `end` is the name of the end of the text.
  std::string Text(const std::string& end) const;
  /// Whether only the rest of a reference's type would fit.
  bool IsReference() const;

 private:
  bool Has(TMofParser::symbol_kind_type token) const;
  std::vector<std::string> Words(const std::string& end) const;

  std::vector<TMofParser::symbol_kind_type> tokens_;
};

}  // namespace velhost::Mof
