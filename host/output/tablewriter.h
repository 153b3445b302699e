// The format `table`: one block for each instance, and a summary, for people.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/output/capturefiles.h"
#include "host/output/iresultwriter.h"
#include "host/output/tablelayout.h"

namespace velhost {

/// The number of instances of each class, in the order of their first instances.
using TInstanceCounts = std::vector<std::pair<std::string, std::uint64_t>>;

/// Every block is flushed at once, so that a slow collection can be watched.
class TTableWriter : public IResultWriter {
 public:
  TTableWriter(ITextSink& sink, const TTableOptions& options) : layout_(sink, options) {}
  void Begin(const TResultHeader&) override {}
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

 private:
  void Count(const std::string& className);
  void Heading(const TInstance& instance, const TCaptureFile* capture);
  void Properties(const TInstance& instance, const TCaptureFile* capture);
  void CaptureData(const std::string& safeName, std::size_t column, const TCaptureFile& capture);

  TTableLayout layout_;
  TInstanceCounts counts_;
};

}  // namespace velhost
