#include "host/output/jsonwriter.h"

namespace velhost {

void TJsonWriter::Begin(const TResultHeader& header) {
  result_.SetHeader(header);
  result_.Text().Raw(R"({"kind":"instancecollection",)");
  result_.Header();
  result_.Text().Raw("\n\"instances\":[");
}

void TJsonWriter::Instance(const TInstance& instance, const TInstanceFacts& facts) {
  result_.Text().Raw(first_ ? "\n" : ",\n");
  first_ = false;
  result_.Instance(instance, facts);
}

void TJsonWriter::End(const TResultSummary& summary) {
  result_.Text().Raw("\n],\n");
  result_.Summary(summary);
  result_.Text().Raw("}\n");
  result_.Text().Flush();
}

void TJsonLinesWriter::Instance(const TInstance& instance, const TInstanceFacts& facts) {
  result_.Instance(instance, facts);
  result_.Text().Raw('\n');
  result_.Text().Flush();
}

void TJsonLinesWriter::End(const TResultSummary& summary) {
  result_.Text().Raw(R"({"kind":"summary",)");
  result_.Header();
  result_.Summary(summary);
  result_.Text().Raw("}\n");
  result_.Text().Flush();
}

}  // namespace velhost
