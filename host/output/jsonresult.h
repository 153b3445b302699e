// The parts of a result as JSON, version 2. instance-collection.schema.json describes them.
#pragma once

#include <cstdint>
#include <vector>

#include "host/output/iresultwriter.h"
#include "host/output/jsontext.h"
#include "host/output/planturns.h"

namespace velhost {

/// Writes what `json` and `jsonl` have in common.
class TJsonResult {
 public:
  enum class ELayout {
    kDocument,  ///< long lists have a line for each entry
    kLines      ///< no line breaks, and the run's identity in each instance
  };

  TJsonResult(ITextSink& sink, ELayout layout) : json_(sink), layout_(layout) {}

  /// Keeps the header and writes nothing.
  void SetHeader(const TResultHeader& header) { header_ = header; }
  /// "format_version" to "schema".
  void Header();
  /// {"kind":"instance",...}
  void Instance(const TInstance& instance, const TInstanceFacts& facts);
  /// "status" to "run".
  void Summary(const TResultSummary& summary);
  TJsonText& Text() { return json_; }

 private:
  void NewLine();
  void RunIdentity();
  void Labels();
  void Run(std::int64_t elapsedMs);
  void Source(const TSourceFacts& source);
  void Server(const TSourceFacts& source);
  void Plugin(const TPluginFacts& plugin);
  void Schema(const TSchemaFacts& schema);
  void Properties(const TInstance& instance);
  void Registers(const TInstance& instance, const std::vector<TRegisterFacts>& registers);
  void Reason(const TReason& reason);
  void Exchanges(const TResultSummary& summary, const TPlanTurns& turns);
  void Failure(const TExchangeFailure& failure, const TPlanTurns& turns);
  void Unread(const TUnread& unread, const TPlanTurns& turns);

  TJsonText json_;
  ELayout layout_;
  TResultHeader header_;
};

}  // namespace velhost
