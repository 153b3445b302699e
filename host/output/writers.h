// The interface of all output formats (a stream of instances between a header and a summary), the formats by name, and
// the factories of their writers.
#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>

#include "host/base/text.h"
#include "host/model/ciminstance.h"
#include "host/result/instancefacts.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// Writes one format: Begin, any number of Instance calls, End. Instances are written as they arrive, so memory does
/// not grow with their number.
class IResultWriter {
 public:
  virtual ~IResultWriter() = default;
  virtual void Begin(const TResultHeader& header) = 0;
  /// Everything that is known of an instance is known at its commit; nothing of it changes afterwards.
  virtual void Instance(const TInstance& instance, const TInstanceFacts& facts) = 0;
  /// `summary.plan` may only be null if `failed` and `unread` are empty.
  virtual void End(const TResultSummary& summary) = 0;
};

enum class EOutputForm { kTable, kJson, kJsonl, kMof, kCimXml };

/// The format called "table", "json", "jsonl", "mof" or "cimxml"; empty if it is called otherwise.
std::optional<EOutputForm> FormByName(std::string_view name);

/// For `table` only; the other formats look the same everywhere.
struct TTableOptions {
  int width = 80;      ///< columns to fit into; less than 40 counts as 40
  bool color = false;  ///< whether ANSI escape sequences may be written
  /// The most lines of a capture file to show.
  std::size_t dumpLines = std::numeric_limits<std::size_t>::max();
};

// One writer each; MakeWriter chooses. The sink is not owned and must outlive the writer.
std::unique_ptr<IResultWriter> MakeTableWriter(ITextSink& sink, const TTableOptions& options);
std::unique_ptr<IResultWriter> MakeJsonWriter(ITextSink& sink);
std::unique_ptr<IResultWriter> MakeJsonLinesWriter(ITextSink& sink);
std::unique_ptr<IResultWriter> MakeMofWriter(ITextSink& sink);
std::unique_ptr<IResultWriter> MakeCimXmlWriter(ITextSink& sink);

/// Creates a writer of the format. The sink is not owned and must outlive the writer.
std::unique_ptr<IResultWriter> MakeWriter(EOutputForm form, ITextSink& sink, const TTableOptions& options);

}  // namespace velhost
