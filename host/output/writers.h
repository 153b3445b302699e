// The output formats by name, and the factory of their writers.
#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>

#include "host/base/text.h"
#include "host/output/iresultwriter.h"

namespace velhost {

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

/// Creates a writer of the format. The sink is not owned and must outlive the writer.
std::unique_ptr<IResultWriter> MakeWriter(EOutputForm form, ITextSink& sink, const TTableOptions& options);

}  // namespace velhost
