// What could have stood in the place of a syntax error, in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mofparser.hpp"

namespace velhost::Mof {

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
