#include "host/velhost/schemaloading.h"

#include "host/core/hosterror.h"
#include "host/schema/schemareader.h"
#include "host/velhost/messages.h"

namespace NKROVEL20 {

std::vector<std::string> SchemaPaths(const TCommonOptions& options, const TInstallation& installation) {
  return options.schema.empty() ? std::vector<std::string>{installation.SchemaFolder()} : options.schema;
}

boost::shared_ptr<TNamespace> LoadSchema(const TCommonOptions& options, const TInstallation& installation) {
  TFileReader reader;
  const TSchemaResult schema = ReadSchema(SchemaPaths(options, installation), reader);
  SayDiagnostics(schema.diagnostics);
  if (schema.HasErrors()) throw THostError(EExitStatus::kBadData, "the schema cannot be used");
  return schema.cimNamespace;
}

}  // namespace NKROVEL20
