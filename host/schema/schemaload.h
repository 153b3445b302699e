// The first half of reading a schema: files, folders and includes, each text parsed.
//
// Texts, and what the grammar made of them, stay where they are until the schema is done with: spans
// and views point into them.
#pragma once

#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/schema/schemalimits.h"
#include "host/schema/schemalog.h"
#include "host/schema/schemaunit.h"

namespace velhost {

/// A declaration of any kind but a pragma.
struct TSchemaDeclaration {
  TSchemaUnit unit;
  Mof::TProduction production;
};

struct TParsedSchema {
  boost::shared_ptr<TSchemaSources> sources;
  std::vector<std::unique_ptr<Mof::TMofFile>> files;
  /// In the order in which they are read, those of an included file in the place of the pragma.
  std::vector<TSchemaDeclaration> declarations;
  /// See TMofFile.
  Mof::TNameSet mentionedClasses;
  Mof::TNameSet mentionedQualifiers;
  /// Whether a text that must not be shown is no MOF: then what was made of it is not used either, since later messages
  /// would quote it.
  bool isForeign = false;
};

/// See ReadSchema.
TParsedSchema LoadSchema(const std::vector<std::string>& paths, ISourceReader& reader, const TSchemaLimits& limits,
                         TSchemaLog& log);

}  // namespace velhost
