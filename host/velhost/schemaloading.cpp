#include "host/velhost/schemaloading.h"

#include <iostream>

#include "host/core/hosterror.h"
#include "host/schema/schemareader.h"

namespace NKROVEL20 {

std::vector<std::string> SchemaPaths(const TCommonOptions& options, const TInstallation& installation) {
  return options.schema.empty() ? std::vector<std::string>{installation.SchemaFolder()} : options.schema;
}

boost::shared_ptr<TNamespace> LoadSchema(const TCommonOptions& options, const TInstallation& installation) {
  TFileReader reader;
  const TSchemaResult schema = ReadSchema(SchemaPaths(options, installation), reader);
  std::string text;
  for (const TTextDiagnostic& diagnostic : schema.diagnostics) text += FormatDiagnostic(diagnostic);
  if (schema.HasErrors()) throw THostError(EExitStatus::kBadData, text + "the schema cannot be used");
  std::cerr << text;
  return schema.cimNamespace;
}

}  // namespace NKROVEL20
