// MOF text inside a string: an embedded instance or class.
//
// Errors in it are reported at the place of the bytes in the file, allowing for escapes and adjacent literals.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/schema/moftext.h"
#include "host/schema/schemalog.h"
#include "host/schema/schemaunit.h"

namespace velhost {

class TEmbeddedText {
 public:
  /// Parses the text of `literal`, a string of `outer`, whose source and file must outlive this. Reports everything
  /// that is not MOF.
  TEmbeddedText(const TSchemaUnit& outer, const Mof::TLiteral& literal, const TSchemaLimits& limits, TSchemaLog& log);
  TEmbeddedText(const TEmbeddedText&) = delete;
  TEmbeddedText& operator=(const TEmbeddedText&) = delete;

  /// The text as a unit that points into this object.
  const TSchemaUnit& Unit() const { return unit_; }
  /// The place in the file of a byte of the text, or of the text's end.
  TSchemaPlace Place(std::uint32_t offset) const;

 private:
  std::string TakeText(const Mof::TLiteral& literal);
  void RefuseNul(TSchemaLog& log);

  TSchemaUnit outer_;
  std::vector<Mof::TTextJump> jumps_;  // in text order
  TSchemaSource source_;
  Mof::TMofFile file_;
  TSchemaUnit unit_;
};

}  // namespace velhost
