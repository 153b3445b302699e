// A result that was read back, written again in any form.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "host/model/cimnamespace.h"
#include "host/output/writers.h"
#include "host/profile/plan.h"
#include "host/readback/resultreader.h"

namespace velhost {

/// The fields that a schema shows in hexadecimal, which a result does not say.
class THexFields {
 public:
  /// Of a register of the class. `bits` are as a result has them: in the register's own numbering if they are text.
  bool Has(const TCIMClass& cimClass, std::size_t property, bool isNarrow, TBits bits);
  bool Has(const TCIMClass& cimClass, std::size_t property, bool isNarrow, const std::string& bits);

 private:
  struct TFields {
    std::vector<TBits> bits;
    std::vector<std::string> texts;
  };
  const TFields& At(const TCIMClass& cimClass, std::size_t property, bool isNarrow);

  std::map<std::tuple<const TCIMClass*, std::size_t, bool>, TFields> known_;
};

/// What a schema is used for when a result is written again.
enum class ESchemaUse {
  kNone,    ///< each instance gets a class with just the properties that it has
  kIfFits,  ///< classes that have all properties of an instance are used: their order and types are the exact ones
  kAlways   ///< a class or property that is missing is an error
};

class TShownResult {
 public:
  /// The reader must have read with EReadDetail::kAll. `schema` may be null with kNone. Neither is owned.
  TShownResult(TResultReader& reader, const TNamespace* schema, ESchemaUse use);
  TShownResult(const TShownResult&) = delete;
  TShownResult& operator=(const TShownResult&) = delete;

  /// Writes all of it. Throws THostError (kMalformed) for what no run can have written, or does not fit the schema.
  void Write(IResultWriter& writer);

 private:
  TFinding Finding(const TReadFinding& read);
  void WriteInstance(IResultWriter& writer, const TReadInstance& read);
  boost::shared_ptr<TCIMClass> ClassOf(const TReadInstance& read);
  boost::shared_ptr<TCIMClass> OwnClass(const TReadInstance& read);
  [[noreturn]] void Fail(const std::string& message) const;

  struct TOwnClass {
    std::vector<TPropertyDefinition> properties;
    boost::shared_ptr<TNamespace> cimNamespace;
    boost::shared_ptr<TCIMClass> cimClass;
  };

  TResultReader& reader_;
  const TNamespace* schema_;
  ESchemaUse use_;
  THexFields hexFields_;
  std::map<std::string, TOwnClass> classes_;               // the latest one of each name
  std::map<std::string, std::vector<TFinding>> findings_;  // by key
};

}  // namespace velhost
