// The first half of reading a schema: finds the files of folders and includes, and parses each text.
//
// The texts and their parse results stay at the same address until the schema is built: spans and views point into
// them.
#pragma once

#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/schema/schemalog.h"
#include "host/schema/schemaunit.h"

namespace velhost {

/// A declaration of any kind except a pragma.
struct TSchemaDeclaration {
  TSchemaUnit unit;
  Mof::TProduction production;
};

struct TParsedSchema {
  boost::shared_ptr<TSchemaSources> sources;
  std::vector<std::unique_ptr<Mof::TMofFile>> files;
  /// In the order in which they are read; those of an included file are at the place of its pragma.
  std::vector<TSchemaDeclaration> declarations;
  /// See TMofFile.
  Mof::TNameSet mentionedClasses;
  Mof::TNameSet mentionedQualifiers;
  /// Whether a text that must not be shown is not MOF. Its declarations are then not used either, because later
  /// messages would quote them.
  bool isForeign = false;
};

/// See ReadSchema.
TParsedSchema LoadSchema(const std::vector<std::string>& paths, ISourceReader& reader, const TSchemaLimits& limits,
                         TSchemaLog& log);

}  // namespace velhost
