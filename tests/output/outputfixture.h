// Instances and sinks for the tests of the output formats.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/model/ciminstance.h"
#include "host/model/cimnamespace.h"
#include "host/output/writers.h"
#include "tests/support/namespaces.h"

namespace tests {

using TType = TCIMValue::TCIMType;
using TInstancePtr = boost::shared_ptr<TInstance>;

/// Also records the length of the text at each flush.
class TFlushedSink : public TStringSink {
 public:
  void Flush() override { flushedAt.push_back(Text().size()); }
  std::vector<std::size_t> flushedAt;
};

TPropertyDefinition Property(const std::string& name, TType type, bool isArray = false);
TCIMValue Bytes(const std::vector<int>& bytes);
TCIMValue Array(TType type, const std::vector<TCIMValue>& elements);
TCIMValue NullOf(TType type);
/// 2026-01-31T12:34:56+01:00
TCIMDateTime Moment();

/// What a writer is given.
struct TDocument {
  TResultHeader header;
  std::vector<std::pair<TInstancePtr, TInstanceFacts>> instances;
  TResultSummary summary;
};

class TOutputTest : public testing::Test {
 protected:
  boost::shared_ptr<TCIMClass> Define(const std::string& name, const std::string& superClass,
                                      const std::vector<TPropertyDefinition>& properties);
  TInstancePtr Make(const boost::shared_ptr<TCIMClass>& cimClass,
                    const std::vector<std::pair<std::string, TCIMValue>>& values);
  /// An instance of a class "KROSG_One" whose only property is "P" of that type.
  TInstancePtr One(TType type, const TCIMValue& value);
  /// A capture file instance: file cpu_err, node 1, record 0, at Moment().
  TInstancePtr Capture(const std::string& rawData);

  static TResultHeader Header();
  /// The facts of an instance whose place is unknown: its key, "CLASS/?1".
  static TInstanceFacts Unplaced(const TInstance& instance);
  /// Complete, without failed exchanges.
  static TResultSummary Complete();
  /// Interrupted: one request failed, one exchange was lost and one refused.
  TResultSummary Partial() const;

  /// The whole text in a format; the place of no instance is known.
  static std::string Written(EOutputForm form, const std::vector<TInstancePtr>& instances,
                             const TResultSummary& summary, const TTableOptions& options = {});
  /// A document with one instance in which every text about the run is `text`.
  TDocument Hostile(const std::string& text);
  /// The whole text of a document in a format.
  static std::string Written(EOutputForm form, const TDocument& document, const TTableOptions& options = {});

  boost::shared_ptr<TNamespace> cimNamespace_ = TNamespace::Create();
  TPlan plan_ = PlanOfTwo();

 private:
  /// A turn of KROSG_A, an R8 class, and one of KROSG_B, a JFR class.
  static TPlan PlanOfTwo();
};

/// Creates an instance of the class "KROSG_Awkward" with every awkward value that the formats must handle.
class TAwkwardTest : public TOutputTest {
 protected:
  TInstancePtr Awkward();
};

}  // namespace tests
