// The formats `json` and `jsonl`: an instance collection modelled on CIM-RS (DSP0211), as one object or as one object
// per line. instance-collection.schema.json describes both.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/output/iinstancewriter.h"
#include "host/output/textbuffer.h"
#include "host/output/valuetext.h"

namespace velhost {

/// JSON text of instances and summaries. Integers are numbers, including those of 64 bits; reals that are not finite
/// are null; datetimes are CIM datetime strings; a char16 is a string of one character; a reference is its object
/// path.
class TJsonText {
 public:
  explicit TJsonText(ITextSink& sink) : out_(sink) {}

  /// {"kind":"instance",...}, without a newline.
  void Instance(const TInstance& instance, bool incomplete);
  /// "format_version" to "plugin", with a trailing comma.
  void HeaderMembers(const TCollectionHeader& header);
  /// "status" to "elapsed_ms".
  void SummaryMembers(const TCollectionSummary& summary);
  /// Appends text that is already JSON.
  void Raw(std::string_view text) { out_.Append(text); }
  void Flush() { out_.Flush(); }

 private:
  void String(std::string_view text);
  /// `"name":`
  void Name(std::string_view name);
  void Member(std::string_view name, std::string_view text);
  void Value(const TCIMValue& value);
  void Scalar(const TCIMValue& value);
  void Failures(const std::vector<TRequestFailure>& failures);
  void FailedExchange(const TFailedExchange& exchange);

  TTextBuffer out_;
  TNumberText numbers_;
  std::string scratch_;
};

/// Writes one object incrementally: the instances precede the status, which is only known at the end.
class TJsonWriter : public IInstanceWriter {
 public:
  explicit TJsonWriter(ITextSink& sink) : json_(sink) {}
  void Begin(const TCollectionHeader& header) override;
  void Instance(const TInstance& instance, bool incomplete) override;
  void End(const TCollectionSummary& summary) override;

 private:
  TJsonText json_;
  bool first_ = true;
};

/// Writes a line for each instance and flushes it at once. The last line has the kind "summary" and the members that
/// `json` has besides its instances.
class TJsonLinesWriter : public IInstanceWriter {
 public:
  explicit TJsonLinesWriter(ITextSink& sink) : json_(sink) {}
  void Begin(const TCollectionHeader& header) override { header_ = header; }
  void Instance(const TInstance& instance, bool incomplete) override;
  void End(const TCollectionSummary& summary) override;

 private:
  TJsonText json_;
  TCollectionHeader header_;
};

}  // namespace velhost
