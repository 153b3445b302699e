// Annotated MOF: schemas with their expectations on the lines themselves, in the form that conformance/README.md
// describes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {

struct TAnnotatedText {
  std::string path;
  bool given = true;            ///< to the reader, or read only because another text includes it
  std::string text;             ///< without annotations
  std::vector<std::size_t> at;  ///< the line in the annotated file of each of its lines
};

struct TAnnotatedFinding {
  std::size_t at = 0;  ///< the line of its annotation, from 1
  std::string shown;   ///< as FormatDiagnostic has it
};

/// "KIND TEXT": something that the schema of a case means.
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

  /// The texts of the statements of one kind, in their order.
  std::vector<std::string> Of(std::string_view kind) const;
};

struct TAnnotatedMof {
  std::vector<TAnnotatedCase> cases;
  std::vector<std::string> malformed;  ///< "LINE: what is wrong"
};

TAnnotatedMof ParseAnnotatedMof(std::string_view text);

}  // namespace tests
