// What the parts of a schema take in memory, from their syntax to the object model, for the limit on it. Measured as
// the growth of the peak with schemas of one kind of part each, and rounded up.
#pragma once

#include <cstddef>

namespace velhost::Mof {

inline constexpr std::size_t kCostOfClass = 1200;
inline constexpr std::size_t kCostOfProperty = 700;
inline constexpr std::size_t kCostOfMethod = 450;
inline constexpr std::size_t kCostOfParameter = 200;
inline constexpr std::size_t kCostOfQualifierDeclaration = 400;
inline constexpr std::size_t kCostOfQualifier = 350;
inline constexpr std::size_t kCostOfInstance = 400;
inline constexpr std::size_t kCostOfAssignment = 80;
inline constexpr std::size_t kCostOfLiteral = 200;
inline constexpr std::size_t kCostOfPiece = 32;  // of a string
inline constexpr std::size_t kCostOfName = 100;  // after a word that declares one
inline constexpr std::size_t kCostOfPragma = 100;

}  // namespace velhost::Mof
