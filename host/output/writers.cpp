#include "host/output/writers.h"

#include <array>
#include <cstddef>
#include <string>

namespace velhost {

namespace {

constexpr std::array<const char*, 5> kNames = {"table", "json", "jsonl", "mof", "cimxml"};

}  // namespace

std::optional<EOutputForm> FormByName(std::string_view name) {
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (kNames.at(i) == name) return static_cast<EOutputForm>(i);
  }
  return std::nullopt;
}

std::unique_ptr<IResultWriter> MakeWriter(EOutputForm form, ITextSink& sink, const TTableOptions& options) {
  switch (form) {
    case EOutputForm::kJson: return MakeJsonWriter(sink);
    case EOutputForm::kJsonl: return MakeJsonLinesWriter(sink);
    case EOutputForm::kMof: return MakeMofWriter(sink);
    case EOutputForm::kCimXml: return MakeCimXmlWriter(sink);
    case EOutputForm::kTable: break;
  }
  return MakeTableWriter(sink, options);
}

}  // namespace velhost
