// Limits on the schema that is read. A schema that exceeds one is refused with a message that names the limit. What a
// collection may take is limited in host/profile/collectionsize.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace velhost {

/// The defaults are several times what the complete public CIM schema takes (about 1,600 classes, 10 MB), and bound
/// the time and memory that a hostile schema can take.
struct TSchemaLimits {
  std::size_t fileSize = 16U << 20U;   ///< bytes of one file
  std::size_t totalSize = 32U << 20U;  ///< bytes of all files together
  std::size_t files = 8192;            ///< files read, including included ones
  std::size_t includeDepth = 16;       ///< files that include each other in a chain
  std::size_t tokenSize = 1U << 20U;   ///< bytes of a literal
  std::size_t nameSize = 1024;         ///< bytes of a name or alias
  std::size_t nesting = 32;            ///< brackets within brackets
  std::size_t classes = 20000;
  std::size_t inheritanceDepth = 64;       ///< classes from the root class down
  std::size_t qualifiersPerElement = 64;   ///< those of a class, property, method or parameter itself
  std::size_t propertiesPerClass = 4096;   ///< including inherited ones
  std::size_t modelEntries = 4U << 20U;    ///< properties and qualifiers of all classes, inherited ones in each
  std::size_t instanceValues = 1U << 20U;  ///< properties of all instances, set or not
  std::size_t memory = 192U << 20U;        ///< bytes for what all texts declare, by the estimates below
  std::size_t diagnostics = 100;           ///< errors shown, and the same number of warnings; the others are counted
  /// Called repeatedly while a schema is read, so that it can end the reading by throwing; empty: no time limit.
  std::function<void()> checkStop = {};

  void CheckStop() const {
    if (checkStop) checkStop();
  }
};

}  // namespace velhost

// The memory that the parts of a schema take, from their syntax to the object model. Measured as the growth of peak
// memory with schemas that consist mostly of one kind of part, and rounded up.
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
