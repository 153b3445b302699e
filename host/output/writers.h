// The output forms by name, and how to get a writer for one.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "host/output/iinstancewriter.h"

namespace velhost {

enum class EOutputForm { kTable, kJson, kJsonl, kMof, kCimXml };

/// "table", "json", "jsonl", "mof", "cimxml".
const char* NameOfForm(EOutputForm form);
/// By exactly that name; empty for any other.
std::optional<EOutputForm> FormByName(std::string_view name);

/// For `table` only; the other forms look the same everywhere.
struct TTableOptions {
  int width = 80;      ///< columns to fit into; less than 40 counts as 40
  bool color = false;  ///< whether ANSI escape sequences may be written
};

/// A writer of the form. The sink is not owned and has to outlive the writer.
std::unique_ptr<IInstanceWriter> MakeWriter(EOutputForm form, ITextSink& sink, const TTableOptions& options);

}  // namespace velhost
