#include "host/schema/schemareader.h"

#include <functional>

#include "host/schema/classbuilder.h"
#include "host/schema/instancebuilder.h"
#include "host/schema/qualifiertable.h"
#include "host/schema/schemaload.h"

namespace velhost {

namespace {

void DeclareQualifiers(const TParsedSchema& schema, TQualifierTable& table) {
  for (const TSchemaDeclaration& declaration : schema.declarations) {
    if (declaration.production.kind != Mof::EProduction::kQualifier) continue;
    table.Declare(declaration.unit, declaration.unit.file->qualifiers[declaration.production.index]);
  }
}

}  // namespace

TSchemaResult ReadSchema(const std::vector<std::string>& paths, ISourceReader& reader) {
  return ReadSchema(paths, reader, TSchemaLimits());
}

TSchemaResult ReadSchema(const std::vector<std::string>& paths, ISourceReader& reader,
                         const TSchemaLimits& givenLimits) {
  TSchemaLimits limits = givenLimits;
  limits.checkStop = [&reader] { reader.CheckStop(); };
  TSchemaLog log(limits.diagnostics);
  const TParsedSchema schema = LoadSchema(paths, reader, limits, log);
  TQualifierTable qualifiers(limits, schema.mentionedQualifiers, log);
  if (!schema.isForeign) DeclareQualifiers(schema, qualifiers);
  TSchemaResult result;
  result.cimNamespace = TNamespace::Create();
  result.sources = schema.sources;
  if (!schema.isForeign) {
    TClassBuilder classes(schema, qualifiers, limits, log);
    classes.Build(*result.cimNamespace);
    TInstanceBuilder instances(schema, classes, qualifiers, limits, *result.cimNamespace, log);
    result.instances = instances.Build();
  }
  result.errors = log.Errors();
  result.warnings = log.Warnings();
  result.failure = log.Failure();
  result.diagnostics = log.Finish(*schema.sources);
  return result;
}

}  // namespace velhost
