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
  std::size_t memory = 192U << 20U;        ///< bytes for what all texts declare, estimated by schemacost.h
  std::size_t diagnostics = 100;           ///< errors shown, and as many warnings; the others are counted
  /// Called again and again while a schema is read. Time is limited by what it throws; empty: no limit.
  std::function<void()> checkStop = {};

  void CheckStop() const {
    if (checkStop) checkStop();
  }
};

}  // namespace velhost
