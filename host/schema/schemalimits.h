// How much of a schema is read. A schema beyond a limit is refused with a message that names it. What a collection with
// it may take is limited in host/profile/collectionsize.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace velhost {

/// The defaults are several times what the complete public CIM schema needs (about 1,600 classes,
/// 10 MB), and keep the time and memory that a hostile schema can take in bounds.
struct TSchemaLimits {
  std::size_t fileSize = 16U << 20U;   ///< bytes of one file
  std::size_t totalSize = 32U << 20U;  ///< bytes of all files
  std::size_t files = 8192;            ///< files read, included ones too
  std::size_t includeDepth = 16;       ///< files that include each other
  std::size_t tokenSize = 1U << 20U;   ///< bytes of a literal
  std::size_t nameSize = 1024;         ///< bytes of a name or alias
  std::size_t nesting = 32;            ///< brackets within brackets
  std::size_t classes = 20000;
  std::size_t inheritanceDepth = 64;       ///< classes from the root class down
  std::size_t qualifiersPerElement = 64;   ///< own ones of a class, property, method or parameter
  std::size_t propertiesPerClass = 4096;   ///< inherited ones too
  std::size_t modelEntries = 4U << 20U;    ///< properties and qualifiers of all classes as each class sees them
  std::size_t instanceValues = 1U << 20U;  ///< properties of all instances, set or not
  std::size_t memory = 192U << 20U;        ///< bytes for what all texts declare, by the estimates below
  std::size_t diagnostics = 100;           ///< errors shown, and as many warnings; the others are counted
  /// Called again and again while a schema is read. Time is limited by what it throws; empty: no limit.
  std::function<void()> checkStop = {};

  void CheckStop() const {
    if (checkStop) checkStop();
  }
};

}  // namespace velhost

// What the parts of a schema take in memory, from their syntax to the object model. Measured as the growth of the peak
// with schemas of one kind of part each, and rounded up.
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
