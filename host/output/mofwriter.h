// The format `mof`: instances as MOF (DSP0004) that compiles against the schema they were collected with.
#pragma once

#include <string>
#include <string_view>

#include "host/output/iresultwriter.h"
#include "host/output/valuetext.h"

namespace velhost {

/// What the result says beside its instances is in comments. Long strings are written as several adjacent literals.
/// Values that MOF cannot express (reals that are not finite, datetimes that do not exist) are written as NULL with a
/// comment that shows them.
class TMofWriter : public IResultWriter {
 public:
  explicit TMofWriter(ITextSink& sink) : out_(sink) {}
  void Begin(const TResultHeader& header) override;
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

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
