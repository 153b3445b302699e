#include "host/velhost/schemaloading.h"

#include <algorithm>
#include <string>
#include <vector>

#include "host/base/hosterror.h"
#include "host/schema/schemareader.h"
#include "host/velhost/messages.h"

namespace velhost {

namespace {

// Notes the reads that fail: behind an include a failed read is a diagnostic like any other.
class TNotingReader : public TInputReader {
 public:
  TNotingReader(TInputs& inputs, const std::vector<std::string>& paths)
      : TInputReader(inputs, {"the schema", "--schema", EFileKind::kSchema}, paths) {}
  std::string Read(const std::string& path, std::size_t limit) override {
    try {
      return TInputReader::Read(path, limit);
    } catch (const THostError& error) {
      failures_.push_back(error.Status());
      throw;
    }
  }
  const std::vector<EExitStatus>& Failures() const { return failures_; }

 private:
  std::vector<EExitStatus> failures_;
};

// That of the first file that cannot be opened, where nothing else is wrong.
EExitStatus StatusOf(const TSchemaResult& schema, const TNotingReader& reader) {
  const auto isError = [](const TTextDiagnostic& found) { return found.severity == EDiagnosticSeverity::kError; };
  const auto errors = std::count_if(schema.diagnostics.begin(), schema.diagnostics.end(), isError);
  const bool onlyReads = errors > 0 && static_cast<std::size_t>(errors) == reader.Failures().size();
  return onlyReads ? reader.Failures().front() : EExitStatus::kBadData;
}

}  // namespace

std::vector<std::string> SchemaPaths(const TCommonOptions& options, const TInstallation& installation) {
  return options.schema.empty() ? std::vector<std::string>{installation.SchemaFolder()} : options.schema;
}

boost::shared_ptr<TNamespace> LoadSchema(const TCommonOptions& options, const TInstallation& installation,
                                         TInputs& inputs) {
  const std::vector<std::string> paths = SchemaPaths(options, installation);
  TNotingReader reader(inputs, paths);
  const TSchemaResult schema = ReadSchema(paths, reader);
  SayDiagnostics(schema.diagnostics);
  if (schema.HasErrors()) throw THostError(StatusOf(schema, reader), "the schema cannot be used");
  return schema.cimNamespace;
}

}  // namespace velhost
