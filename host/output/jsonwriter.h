// The formats `json` and `jsonl`: an instance collection modelled on CIM-RS (DSP0211), as one object or as one object
// per line.
#pragma once

#include "host/output/iresultwriter.h"
#include "host/output/jsonresult.h"

namespace velhost {

/// Writes one object incrementally: the instances precede the status, which is only known at the end.
class TJsonWriter : public IResultWriter {
 public:
  explicit TJsonWriter(ITextSink& sink) : result_(sink, TJsonResult::ELayout::kDocument) {}
  void Begin(const TResultHeader& header) override;
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

 private:
  TJsonResult result_;
  bool first_ = true;
};

/// Writes a line for each instance and flushes it at once. The last line has the kind "summary" and the members that
/// `json` has besides its instances. Every line names its run.
class TJsonLinesWriter : public IResultWriter {
 public:
  explicit TJsonLinesWriter(ITextSink& sink) : result_(sink, TJsonResult::ELayout::kLines) {}
  void Begin(const TResultHeader& header) override { result_.SetHeader(header); }
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

 private:
  TJsonResult result_;
};

}  // namespace velhost
