#include "host/schema/mofwords.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "host/base/text.h"
#include "host/schema/schemaunit.h"

namespace velhost::Mof {

namespace {

using TToken = TMofParser::token;
using TType = TCIMValue::TCIMType;

struct TKeyword {
  std::string_view word;  // in lower case
  int token;
  std::uint32_t meaning;  // a type code, a flavor or a scope
};

constexpr std::array kKeywords = {
    TKeyword{"as", TToken::AS, 0},
    TKeyword{"of", TToken::OF, 0},
    TKeyword{"any", TToken::METAELEMENT, kScopeAny},
    TKeyword{"ref", TToken::REF, 0},
    TKeyword{"null", TToken::NULLWORD, 0},
    TKeyword{"true", TToken::BOOLEAN, 0},
    TKeyword{"class", TToken::CLASS, 0},
    TKeyword{"false", TToken::BOOLEAN, 0},
    TKeyword{"scope", TToken::SCOPE, 0},
    TKeyword{"sint8", TToken::DATATYPE, TType::kSint8},
    TKeyword{"uint8", TToken::DATATYPE, TType::kUint8},
    TKeyword{"char16", TToken::DATATYPE, TType::kChar16},
    TKeyword{"flavor", TToken::FLAVOR, 0},
    TKeyword{"method", TToken::METAELEMENT, kScopeMethod},
    TKeyword{"real32", TToken::DATATYPE, TType::kReal32},
    TKeyword{"real64", TToken::DATATYPE, TType::kReal64},
    TKeyword{"schema", TToken::METAELEMENT, kScopeSchema},
    TKeyword{"sint16", TToken::DATATYPE, TType::kSint16},
    TKeyword{"sint32", TToken::DATATYPE, TType::kSint32},
    TKeyword{"sint64", TToken::DATATYPE, TType::kSint64},
    TKeyword{"string", TToken::DATATYPE, TType::kString},
    TKeyword{"uint16", TToken::DATATYPE, TType::kUint16},
    TKeyword{"uint32", TToken::DATATYPE, TType::kUint32},
    TKeyword{"uint64", TToken::DATATYPE, TType::kUint64},
    TKeyword{"boolean", TToken::DATATYPE, TType::kBoolean},
    TKeyword{"datetime", TToken::DATATYPE, TType::kDateTime},
    TKeyword{"instance", TToken::INSTANCE, 0},
    TKeyword{"property", TToken::METAELEMENT, kScopeProperty},
    TKeyword{"parameter", TToken::METAELEMENT, kScopeParameter},
    TKeyword{"qualifier", TToken::QUALIFIER, 0},
    TKeyword{"reference", TToken::METAELEMENT, kScopeReference},
    TKeyword{"indication", TToken::METAELEMENT, kScopeIndication},
    TKeyword{"restricted", TToken::FLAVORWORD, kRestricted},
    TKeyword{"toinstance", TToken::FLAVORWORD, kToInstance},
    TKeyword{"tosubclass", TToken::FLAVORWORD, kToSubclass},
    TKeyword{"association", TToken::METAELEMENT, kScopeAssociation},
    TKeyword{"translatable", TToken::FLAVORWORD, kTranslatable},
    TKeyword{"enableoverride", TToken::FLAVORWORD, kEnableOverride},
    TKeyword{"disableoverride", TToken::FLAVORWORD, kDisableOverride},
};
constexpr std::size_t kLongest = 15;

// The first keyword of each length; the keywords are sorted by length.
constexpr auto kStarts = [] {
  std::array<std::uint8_t, kLongest + 2> starts{};
  for (std::size_t length = 0; length < starts.size(); ++length) {
    std::uint8_t place = 0;
    while (place < kKeywords.size() && kKeywords.at(place).word.size() < length) ++place;
    starts.at(length) = place;
  }
  return starts;
}();

}  // namespace

int TokenOf(std::string_view word, TSemantic& value) {
  if (word.size() > kLongest) return TToken::IDENT;
  const char first = FoldCase(word[0]);
  for (std::size_t i = kStarts[word.size()]; i < kStarts[word.size() + 1]; ++i) {
    const TKeyword& keyword = kKeywords[i];
    if (keyword.word[0] != first || !EqualNames(keyword.word, word)) continue;
    if (keyword.token == TToken::DATATYPE) {
      value.type.code = static_cast<TType::ECIMType>(keyword.meaning);
    } else if (keyword.meaning != 0) {
      value.bits = keyword.meaning;
    }
    return keyword.token;
  }
  return TToken::IDENT;
}

std::string HintOfType(std::string_view word) {
  std::size_t steps = kNameSearchSteps;  // enough for the few type names
  TNameHint hint(word, steps);
  for (const TKeyword& keyword : kKeywords) {
    if (keyword.token == TToken::DATATYPE) hint.Offer(keyword.word);
  }
  return hint.Text();
}

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
