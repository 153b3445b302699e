#include "host/schema/mofwords.h"

#include <array>

#include "host/schema/namehint.h"
#include "mofparser.hpp"

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

// Where the keywords of a length start; they are sorted by it.
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
  std::size_t steps = kNameSearchSteps;  // a few words only
  TNameHint hint(word, steps);
  for (const TKeyword& keyword : kKeywords) {
    if (keyword.token == TToken::DATATYPE) hint.Offer(keyword.word);
  }
  return hint.Text();
}

}  // namespace velhost::Mof
