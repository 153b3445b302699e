// Finds the strings of a qualifier's value in the text of its schema.
//
// Only places that are shown are computed: keeping those of all strings would take more memory than the strings.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "host/base/textdiagnostic.h"
#include "host/model/cimclass.h"
#include "host/schema/moftext.h"
#include "host/schema/schemalog.h"

namespace velhost {

class TValueWalk {
 public:
  /// `source` is the text that has the qualifier, read without an error; it must outlive this.
  TValueWalk(const TSchemaSource& source, const TQualifier& qualifier);

  /// The place of a byte of the string with index `element` (0 for a value in parentheses), or of its end, allowing
  /// for escapes and adjacent literals; of "null", its start. Empty if the value is not written there, because it is
  /// the default of the qualifier's declaration. Asking for strings in order takes linear time.
  std::optional<TSourceLocation> Locate(std::size_t element, std::size_t offset);

 private:
  void Rewind();
  bool IsAt(std::string_view token) const { return source_.Text().substr(at_).starts_with(token); }
  void SkipBlanks();
  void SkipElement();
  void SkipPiece();

  const TSchemaSource& source_;
  std::size_t start_;  // of the first element
  bool hasValue_;
  std::size_t at_ = 0;
  std::size_t element_ = 0;  // the one at `at_`
};

}  // namespace velhost
