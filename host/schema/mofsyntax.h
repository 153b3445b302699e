// The result of the MOF grammar for one text: plain records that point into the text.
//
// Nothing is copied out of the text. A list is a range of one of the vectors of TMofFile; because the grammar reduces
// inner lists first, the members of each list are adjacent.
#pragma once
#include "host/base/api.h"

#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "host/base/names.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost::Mof {

/// A byte range of the text; the end is exclusive.
struct TSpan {
  std::uint32_t begin;
  std::uint32_t end;
};

/// A range of members of one of the vectors of TMofFile.
struct TRange {
  std::uint32_t first;
  std::uint32_t count;
};

/// kBad: the scanner has already reported it; it fits every type, so that it is not reported again.
enum class ELiteral : std::uint8_t { kNull, kBoolean, kInteger, kReal, kChar, kString, kAlias, kBad };

/// One of the adjacent string literals that form a string value, without its quotes.
struct TPiece {
  TSpan span;
  bool escaped;  ///< contains a backslash
};

struct TLiteral {
  ELiteral kind;
  TSpan span;
  TRange pieces;  ///< of a string
};

/// The value after an equals sign or a qualifier's name.
struct TInitializer {
  bool given;
  bool isArray;
  TRange literals;
  TSpan span;
};

struct TArraySuffix {
  bool isArray;
  std::uint32_t size;  ///< 0 for "[]"
};

/// The span is the name of the type, or of the class for a reference.
struct TTypeName {
  TCIMValue::TCIMType::ECIMType code;
  TSpan span;
};

// Bits of a set of flavors.
inline constexpr std::uint32_t kEnableOverride = 1;
inline constexpr std::uint32_t kDisableOverride = 2;
inline constexpr std::uint32_t kToSubclass = 4;
inline constexpr std::uint32_t kRestricted = 8;
inline constexpr std::uint32_t kTranslatable = 16;
inline constexpr std::uint32_t kToInstance = 32;  ///< in old schemas; without effect

// Bits of a scope.
inline constexpr std::uint32_t kScopeClass = 1;
inline constexpr std::uint32_t kScopeAssociation = 2;
inline constexpr std::uint32_t kScopeIndication = 4;
inline constexpr std::uint32_t kScopeQualifier = 8;
inline constexpr std::uint32_t kScopeProperty = 16;
inline constexpr std::uint32_t kScopeReference = 32;
inline constexpr std::uint32_t kScopeMethod = 64;
inline constexpr std::uint32_t kScopeParameter = 128;
inline constexpr std::uint32_t kScopeSchema = 256;
inline constexpr std::uint32_t kScopeAny = 511;

struct TQualifierUse {
  TSpan name;
  TInitializer value;
  std::uint32_t flavors;
};

struct TQualifierSyntax {
  TSpan name;
  TTypeName type;
  TArraySuffix array;
  TInitializer value;
  std::uint32_t scope;
  std::uint32_t flavors;
};

/// A property, a reference, a method, or a method parameter.
struct TFeature {
  bool isMethod;
  TRange qualifiers;
  TTypeName type;
  TSpan name;
  TArraySuffix array;
  TInitializer value;
  TRange parameters;
};

struct TClassSyntax {
  TRange qualifiers;
  TSpan name;
  TSpan superClass;  ///< empty for a root class
  TRange features;
};

struct TAssignment {
  TRange qualifiers;
  TSpan name;
  TInitializer value;
};

struct TInstanceSyntax {
  TRange qualifiers;
  TSpan className;
  TSpan alias;  ///< empty if there is none
  TRange assignments;
};

struct TPragmaSyntax {
  TSpan name;
  TLiteral parameter;
};

enum class EProduction : std::uint8_t { kPragma, kQualifier, kClass, kInstance };

struct TProduction {
  EProduction kind;
  std::uint32_t index;
};

using TNameSet = std::unordered_set<std::string_view, TNameHash, TNameEqual>;

struct TMofFile {
  std::vector<TProduction> productions;  ///< in text order
  std::vector<TPragmaSyntax> pragmas;
  std::vector<TQualifierSyntax> qualifiers;
  std::vector<TClassSyntax> classes;
  std::vector<TInstanceSyntax> instances;

  std::vector<TFeature> features;
  std::vector<TFeature> parameters;
  std::vector<TQualifierUse> uses;
  std::vector<TAssignment> assignments;
  std::vector<TLiteral> literals;
  std::vector<TPiece> pieces;

  /// Names that follow the words "class" and "qualifier" anywhere, so that a declaration lost to a syntax error is
  /// not also reported as missing.
  TNameSet mentionedClasses;
  TNameSet mentionedQualifiers;
};

}  // namespace velhost::Mof
