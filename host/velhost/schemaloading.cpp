#include "host/velhost/schemaloading.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/sha256.h"
#include "host/base/text.h"
#include "host/schema/meaningfindings.h"
#include "host/schema/schemareader.h"
#include "host/velhost/messages.h"

namespace velhost {

namespace {

namespace fs = std::filesystem;

// Reads through another reader and hashes all that was read, in that order: an included file comes after the one that
// includes it, and before whatever is read next.
class THashingReader : public ISourceReader {
 public:
  explicit THashingReader(ISourceReader& reader) : reader_(reader) {}
  std::string Read(const std::string& path, std::size_t limit) override {
    std::string text = reader_.Read(path, limit);
    hash_.Add(text);
    return text;
  }
  bool LiesIn(const std::string& folder) override { return reader_.LiesIn(folder); }
  void CheckStop() override { reader_.CheckStop(); }
  std::string HexDigest() const { return hash_.HexDigest(); }

 private:
  ISourceReader& reader_;
  TSha256 hash_;
};

bool OnlyAddsToDefault(const std::vector<std::string>& given) {
  return std::all_of(given.begin(), given.end(), AddsToDefaultSchema);
}

// Also for the folder itself, and for a path that leads there through links.
bool IsInFolder(const std::string& path, const std::string& folder) {
  std::error_code failed;
  const fs::path whole = fs::canonical(path, failed);
  const fs::path outer = fs::canonical(folder, failed);
  if (whole.empty() || outer.empty()) return false;
  return std::mismatch(outer.begin(), outer.end(), whole.begin(), whole.end()).first == outer.end();
}

// The file of the installed schema that any schema may include: it declares qualifiers and no class.
constexpr char kQualifierFile[] = "00-qualifiers.mof";

bool HasExample(const std::vector<std::string>& paths, const TInstallation& installation) {
  return std::any_of(paths.begin(), paths.end(), [&installation](const std::string& path) {
    return fs::path(path).filename() != kQualifierFile && IsInFolder(path, installation.SchemaFolder());
  });
}

// The word alone asks for the example; its folder may be named by accident.
void RefuseExampleForHardware(const TCommonOptions& options, const TInstallation& installation) {
  const std::string scheme = options.serviceProcessors.empty() ? "sim" : SchemeOf(options.serviceProcessors.front());
  const bool isAskedFor =
      std::find(options.schema.begin(), options.schema.end(), kExampleSchema) != options.schema.end();
  if ((scheme != "inband" && scheme != "lan") || isAskedFor) return;
  if (!HasExample(SchemaPaths(options, installation), installation)) return;
  throw THostError(EFailure::kInvalidArgument,
                   "the example schema has made-up addresses and is not used with real hardware; specify your own with "
                   "--schema PATH, or pass --schema example");
}

}  // namespace

std::vector<std::string> SchemaPaths(const TCommonOptions& options, const TInstallation& installation) {
  std::vector<std::string> paths;
  if (OnlyAddsToDefault(options.schema)) paths.push_back(installation.SchemaFolder());
  for (const std::string& given : options.schema) {
    const std::string path = AddsToDefaultSchema(given) ? given.substr(1) : given;
    paths.push_back(path == kExampleSchema ? installation.SchemaFolder() : path);
  }
  return paths;
}

TLoadedSchema LoadSchema(const TCommonOptions& options, const TInstallation& installation, TInputs& inputs) {
  RefuseExampleForHardware(options, installation);
  const std::vector<std::string> paths = SchemaPaths(options, installation);
  TInputReader reader(inputs, {"the schema", "--schema", EFileKind::kSchema}, paths);
  THashingReader hashing(reader);
  const TSchemaResult schema = ReadSchema(paths, hashing);
  SayDiagnostics(schema.diagnostics);
  if (schema.HasErrors()) throw THostError(schema.failure, "the schema cannot be used");
  TLoadedSchema loaded = {
      schema.cimNamespace, {paths, hashing.HexDigest(), HasExample(paths, installation)}, schema.sources};
  const std::size_t classes = schema.cimNamespace->Classes().size();
  SayDetail("schema: " + Listed(paths, ", ") + "; " + std::to_string(classes) + (classes == 1 ? " class" : " classes") +
            ", SHA-256 " + loaded.facts.sha256);
  return loaded;
}

void SayMeaningWarnings(const TPlan& plan, TLoadedSchema& schema) {
  SayDiagnostics(MeaningWarnings(plan, Listed(schema.facts.paths, ", "), *schema.sources));
  schema.sources.reset();
}

}  // namespace velhost
