// One MOF text of a schema: a file, or what a string of a file holds.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/schema/mofsyntax.h"
#include "host/schema/schemalog.h"

namespace velhost {

class TEmbeddedText;

/// One text and what the grammar made of it.
struct TSchemaUnit {
  std::uint32_t number;  ///< of the file
  const TSchemaSource* source;
  const Mof::TMofFile* file;
  const TEmbeddedText* embedding;  ///< the string that the text stands in; null for a file

  std::string_view Text(Mof::TSpan span) const { return source->Text(span); }
  /// See Mof::Quoted.
  std::string Quoted(Mof::TSpan span) const;
  /// The place in the file, whichever text it is.
  TSchemaPlace Place(std::uint32_t offset) const;
  TSchemaPlace Place(Mof::TSpan span) const { return Place(span.begin); }
  /// Of a file's text only.
  TSourceLocation Locate(Mof::TSpan span) const { return source->Locate(span.begin); }
};

/// The value of a string literal: its pieces joined, their escapes resolved.
std::string StringOf(const TSchemaUnit& unit, const Mof::TLiteral& literal);

}  // namespace velhost
