// The form `mof`: instances as a MOF compiler takes them (DSP0004), against the schema that they were
// collected with.
#pragma once

#include <string>
#include <string_view>

#include "host/output/iinstancewriter.h"
#include "host/output/textbuffer.h"
#include "host/output/valuetext.h"

namespace velhost {

/// Header, marks and summary are comments. Long strings are written as several literals side by side.
/// What MOF has no word for is written as NULL with a comment that shows it: reals that are not
/// finite, and points in time that do not exist.
class TMofWriter : public IInstanceWriter {
 public:
  explicit TMofWriter(ITextSink& sink) : out_(sink) {}
  void Begin(const TCollectionHeader& header) override;
  void Instance(const TInstance& instance, bool incomplete) override;
  void End(const TCollectionSummary& summary) override;

 private:
  /// A comment line; the text is safe, so that it cannot leave its line.
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
