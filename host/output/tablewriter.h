// The format `table`: one block for each instance, what is missing, and a summary, for people.
#pragma once

#include <cstddef>
#include <string>

#include "host/output/capturefiles.h"
#include "host/output/iresultwriter.h"
#include "host/output/tablelayout.h"
#include "host/output/tablemissing.h"
#include "host/output/tablesummary.h"

namespace velhost {

/// Every block is flushed at once, so that a slow collection can be watched.
class TTableWriter : public IResultWriter {
 public:
  TTableWriter(ITextSink& sink, const TTableOptions& options) : layout_(sink, options), dumpLines_(options.dumpLines) {}
  void Begin(const TResultHeader& header) override;
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

 private:
  void Count(const std::string& className);
  void Heading(const TInstance& instance, const TInstanceFacts& facts);
  void Properties(const TInstance& instance, const TInstanceFacts& facts);
  void Dump(const TCaptureFile& capture);

  TTableLayout layout_;
  std::size_t dumpLines_;
  TResultHeader header_;
  TInstanceCounts counts_;
  TMissingList missing_;
};

}  // namespace velhost
