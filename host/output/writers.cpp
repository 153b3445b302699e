#include "host/output/writers.h"

#include <array>
#include <cstddef>
#include <string>

#include "host/output/cimxmlwriter.h"
#include "host/output/jsonwriter.h"
#include "host/output/mofwriter.h"
#include "host/output/tablewriter.h"

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
    case EOutputForm::kJson: return std::make_unique<TJsonWriter>(sink);
    case EOutputForm::kJsonl: return std::make_unique<TJsonLinesWriter>(sink);
    case EOutputForm::kMof: return std::make_unique<TMofWriter>(sink);
    case EOutputForm::kCimXml: return std::make_unique<TCimXmlWriter>(sink);
    case EOutputForm::kTable: break;
  }
  return std::make_unique<TTableWriter>(sink, options);
}

}  // namespace velhost
