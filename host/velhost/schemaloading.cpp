#include "host/velhost/schemaloading.h"

#include <string>
#include <vector>

#include "host/base/hosterror.h"
#include "host/schema/schemareader.h"
#include "host/velhost/messages.h"

namespace velhost {

std::vector<std::string> SchemaPaths(const TCommonOptions& options, const TInstallation& installation) {
  return options.schema.empty() ? std::vector<std::string>{installation.SchemaFolder()} : options.schema;
}

boost::shared_ptr<TNamespace> LoadSchema(const TCommonOptions& options, const TInstallation& installation,
                                         TInputs& inputs) {
  const std::vector<std::string> paths = SchemaPaths(options, installation);
  TInputReader reader(inputs, {"the schema", "--schema", EFileKind::kSchema}, paths);
  const TSchemaResult schema = ReadSchema(paths, reader);
  SayDiagnostics(schema.diagnostics);
  if (schema.HasErrors()) throw THostError(schema.failure, "the schema cannot be used");
  return schema.cimNamespace;
}

}  // namespace velhost
