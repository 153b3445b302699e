#include "host/schema/mofexpected.h"

#include <algorithm>
#include <array>

#include "host/base/text.h"

namespace velhost::Mof {

namespace {

using TKind = TMofParser::symbol_kind;

struct TWord {
  TMofParser::symbol_kind_type token;
  const char* text;
};

// In the order in which a message lists them.
constexpr std::array kWords = {
    TWord{TKind::S_SEMICOLON, "';'"},
    TWord{TKind::S_COMMA, "','"},
    TWord{TKind::S_EQUALS, "'='"},
    TWord{TKind::S_COLON, "':'"},
    TWord{TKind::S_LPAREN, "'('"},
    TWord{TKind::S_RPAREN, "')'"},
    TWord{TKind::S_LBRACKET, "'['"},
    TWord{TKind::S_RBRACKET, "']'"},
    TWord{TKind::S_LBRACE, "'{'"},
    TWord{TKind::S_RBRACE, "'}'"},
    TWord{TKind::S_CLASS, "'class'"},
    TWord{TKind::S_INSTANCE, "'instance'"},
    TWord{TKind::S_QUALIFIER, "'qualifier'"},
    TWord{TKind::S_PRAGMA, "'#pragma'"},
    TWord{TKind::S_OF, "'of'"},
    TWord{TKind::S_AS, "'as'"},
    TWord{TKind::S_REF, "'ref'"},
    TWord{TKind::S_SCOPE, "'scope'"},
    TWord{TKind::S_FLAVOR, "'flavor'"},
    TWord{TKind::S_ALIAS, "an alias"},
};

constexpr const char* kElements =
    "a kind of element (class, association, indication, qualifier, property, reference, method, parameter, schema, "
    "any)";

}  // namespace

bool TExpected::Has(TMofParser::symbol_kind_type token) const {
  return std::find(tokens_.begin(), tokens_.end(), token) != tokens_.end();
}

bool TExpected::IsReference() const { return tokens_.size() == 1 && Has(TKind::S_REF); }

std::vector<std::string> TExpected::Words(const std::string& end) const {
  std::vector<std::string> words;
  const bool value = Has(TKind::S_REAL);
  const bool anyName = Has(TKind::S_IDENT) && Has(TKind::S_METAELEMENT);
  const bool element = Has(TKind::S_METAELEMENT) && !anyName;
  if (value) words.emplace_back("a value");
  if (anyName) words.emplace_back("a name");
  if (!anyName && Has(TKind::S_DATATYPE)) words.emplace_back("a type");
  if (!anyName && Has(TKind::S_IDENT)) words.emplace_back("a class name");
  if (!anyName && Has(TKind::S_FLAVORWORD))
    words.emplace_back("a flavor (EnableOverride, DisableOverride, ToSubclass, Restricted, Translatable)");
  if (element) words.emplace_back(kElements);
  if (!value && Has(TKind::S_STRING)) words.emplace_back("a string");
  if (!value && Has(TKind::S_INTEGER)) words.emplace_back("a number");
  for (const TWord& word : kWords) {
    const bool isWord = word.text[0] == '\'' && word.text[1] >= 'a';
    const bool isPart = (isWord && (anyName || element)) || (value && word.token == TKind::S_ALIAS);
    if (Has(word.token) && !isPart) words.emplace_back(word.text);
  }
  if (Has(TKind::S_YYEOF)) words.push_back(end);
  return words;
}

std::string TExpected::Text(const std::string& end) const { return Listed(Words(end), " or "); }

}  // namespace velhost::Mof
