// A MOF text inside a string: an embedded instance or class.
//
// What is wrong in it is reported where its bytes stand in the file, behind escapes and between the
// literals that the string is written in.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/schema/moftext.h"
#include "host/schema/schemalimits.h"
#include "host/schema/schemaunit.h"

namespace velhost {

class TEmbeddedText {
 public:
  /// Reads the text of `literal`, a string of `outer`, whose source and file must outlive this. Whatever is no MOF is
  /// reported.
  TEmbeddedText(const TSchemaUnit& outer, const Mof::TLiteral& literal, const TSchemaLimits& limits, TSchemaLog& log);
  TEmbeddedText(const TEmbeddedText&) = delete;
  TEmbeddedText& operator=(const TEmbeddedText&) = delete;

  /// The text itself as a unit; it points into this.
  const TSchemaUnit& Unit() const { return unit_; }
  /// The place in the file of a byte of the text, or of its end.
  TSchemaPlace Place(std::uint32_t offset) const;

 private:
  std::string TakeText(const Mof::TLiteral& literal);
  void ReplaceBadBytes(TSchemaLog& log);

  TSchemaUnit outer_;
  std::vector<Mof::TTextJump> jumps_;  // in the order of the text
  TSchemaSource source_;
  Mof::TMofFile file_;
  TSchemaUnit unit_;
};

}  // namespace velhost
