// Annotated MOF: schemas whose expected results are written on their lines, in the form that conformance/README.md
// describes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {

struct TAnnotatedText {
  std::string path;
  bool given = true;            ///< passed to the reader; otherwise only read if another text includes it
  std::string text;             ///< without annotations
  std::vector<std::size_t> at;  ///< for each line, its line number in the annotated file
};

struct TAnnotatedFinding {
  std::size_t at = 0;  ///< the line of its annotation, from 1
  std::string shown;   ///< as FormatDiagnostic formats it
};

/// "KIND TEXT": a statement about the meaning of a case's schema.
struct TAnnotatedStatement {
  std::size_t at = 0;
  std::string kind;
  std::string text;
};

struct TAnnotatedCase {
  std::string name;
  std::size_t at = 0;
  std::vector<TAnnotatedText> texts;
  std::vector<TAnnotatedFinding> findings;
  std::vector<TAnnotatedStatement> statements;
  bool hasErrors = false;
  bool isOfRegisters = false;  ///< read after the schema of the base classes, and checked for the collector's needs

  /// The texts of the statements of one kind, in order.
  std::vector<std::string> Of(std::string_view kind) const;
};

struct TAnnotatedMof {
  std::vector<TAnnotatedCase> cases;
  std::vector<std::string> malformed;  ///< "LINE: what is wrong"
};

TAnnotatedMof ParseAnnotatedMof(std::string_view text);

/// One text for each difference, such as "LINE: not reported: DIAGNOSTIC" or "LINE: not annotated: DIAGNOSTIC". LINE
/// is that of the annotated file.
std::vector<std::string> Differences(const TAnnotatedCase& annotated);

}  // namespace tests
