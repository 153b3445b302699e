// One MOF text of a schema: a file, or the content of a string in a file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/schema/mofsyntax.h"
#include "host/schema/schemalog.h"

namespace velhost {

class TEmbeddedText;

/// One text and its parse result.
struct TSchemaUnit {
  std::uint32_t number;  ///< of the file
  const TSchemaSource* source;
  const Mof::TMofFile* file;
  const TEmbeddedText* embedding;  ///< the string that contains the text; null for a file

  std::string_view Text(Mof::TSpan span) const { return source->Text(span); }
  /// See Mof::Quoted.
  std::string Quoted(Mof::TSpan span) const;
  /// The place in the file, also for an embedded text.
  TSchemaPlace Place(std::uint32_t offset) const;
  TSchemaPlace Place(Mof::TSpan span) const { return Place(span.begin); }
  /// For the text of a file only.
  TSourceLocation Locate(Mof::TSpan span) const { return source->Locate(span.begin); }
};

/// The value of a string literal: its pieces joined, and their escapes resolved.
std::string StringOf(const TSchemaUnit& unit, const Mof::TLiteral& literal);

}  // namespace velhost
