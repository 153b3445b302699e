// The format `mof`: instances as MOF (DSP0004) that compiles against the schema they were collected with.
#pragma once

#include <string>
#include <string_view>

#include "host/output/iinstancewriter.h"
#include "host/output/textbuffer.h"
#include "host/output/valuetext.h"

namespace velhost {

/// Header, marks and summary are comments. Long strings are written as several adjacent literals. Values that MOF
/// cannot express (reals that are not finite, datetimes that do not exist) are written as NULL with a comment that
/// shows them.
class TMofWriter : public IInstanceWriter {
 public:
  explicit TMofWriter(ITextSink& sink) : out_(sink) {}
  void Begin(const TCollectionHeader& header) override;
  void Instance(const TInstance& instance, bool incomplete) override;
  void End(const TCollectionSummary& summary) override;

 private:
  /// Writes a comment line. The text must be safe, so that it cannot leave its line.
  void Comment(std::string_view safeText);
  void Value(const TCIMValue& value);
  void Scalar(const TCIMValue& value);
  void Real(const TCIMValue& value);
  void DateTime(const TCIMValue& value);
  void Character(char32_t character);
  void String(std::string_view text);
  void Literal(std::string_view part);
  void Escape(char32_t character);

  TTextBuffer out_;
  TNumberText numbers_;
  std::string scratch_;
};

}  // namespace velhost
