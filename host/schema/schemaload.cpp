#include "host/schema/schemaload.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/schema/mofscan.h"
#include "host/schema/moftext.h"

namespace velhost {

namespace {

namespace fs = std::filesystem;

bool IsMofFile(const fs::directory_entry& entry) {
  std::error_code ignored;
  return EqualNames(entry.path().extension().string(), ".mof") && !entry.is_directory(ignored);
}

std::vector<std::string> FilesOf(const std::string& folder) {
  std::vector<std::string> files;
  // Not with an error code: incrementing the iterator would then end the process if memory runs out.
  try {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
      if (IsMofFile(entry)) files.push_back(entry.path().string());
    }
  } catch (const fs::filesystem_error& error) {
    throw THostError(error.code() == std::errc::permission_denied ? EFailure::kDenied : EFailure::kAbsent,
                     "cannot read the folder " + SafeText(folder) + ": " + error.code().message());
  }
  if (files.empty()) throw THostError(EFailure::kAbsent, "the folder " + SafeText(folder) + " contains no .mof files");
  std::sort(files.begin(), files.end());
  return files;
}

class TLoader {
 public:
  TLoader(ISourceReader& reader, const TSchemaLimits& limits, TSchemaLog& log)
      : reader_(reader), limits_(limits), log_(log) {
    schema_.sources = boost::make_shared<TSchemaSources>();
  }

  /// Files in this folder and below it may be shown. All folders are added before the first path is loaded.
  void AddFolderOf(const std::string& path) {
    std::error_code ignored;
    folders_.insert(fs::is_directory(path, ignored) ? path : fs::path(path).parent_path().string());
  }

  void LoadPath(const std::string& path) {
    std::error_code ignored;
    if (!fs::is_directory(path, ignored)) {
      LoadFile(path, nullptr);
      return;
    }
    for (const std::string& file : FilesOf(path)) LoadFile(file, nullptr);
  }

  TParsedSchema Take() { return std::move(schema_); }

 private:
  /// The place of an include, and its depth.
  struct TIncluder {
    TSchemaPlace place;
    std::size_t depth;
  };

  enum class EState { kOpen, kRead };

  void LoadFile(const std::string& path, const TIncluder* includer);
  std::string ReadText(const std::string& path, const TIncluder* includer, bool& failed);
  bool IsShown() const;
  bool IsNew(const std::string& key, const std::string& path, const TIncluder* includer);
  void CheckEncoding(TSchemaSource& source, std::uint32_t unit);
  void Walk(const TSchemaUnit& unit, std::size_t depth);
  void Pragma(const TSchemaUnit& unit, const Mof::TPragmaSyntax& pragma, std::size_t depth);
  void Include(const TSchemaUnit& unit, const Mof::TPragmaSyntax& pragma, std::size_t depth);
  void Refuse(const std::string& path, const TIncluder* includer, const std::string& message, EFailure failure);
  TSchemaPlace PlaceOf(const std::string& path, const TIncluder* includer);
  std::uint32_t AddSource(const std::string& path, std::string text);

  ISourceReader& reader_;
  const TSchemaLimits& limits_;
  TSchemaLog& log_;
  TParsedSchema schema_;
  std::set<std::string> folders_;
  std::map<std::string, EState> states_;
  std::size_t bytes_ = 0;
  std::string namespacePath_;
};

std::uint32_t TLoader::AddSource(const std::string& path, std::string text) {
  schema_.sources->push_back(std::make_unique<TSchemaSource>(path, std::move(text)));
  return static_cast<std::uint32_t>(schema_.sources->size() - 1);
}

// Where to report what is wrong with a file: at the pragma, or for the whole file if it was not included.
TSchemaPlace TLoader::PlaceOf(const std::string& path, const TIncluder* includer) {
  return includer ? includer->place : TSchemaPlace{AddSource(path, {}), kWholeFile};
}

void TLoader::Refuse(const std::string& path, const TIncluder* includer, const std::string& message, EFailure failure) {
  log_.ReadError(PlaceOf(path, includer), message, failure);
}

bool TLoader::IsNew(const std::string& key, const std::string& path, const TIncluder* includer) {
  const auto state = states_.find(key);
  if (state != states_.end() && state->second == EState::kOpen && includer) {
    log_.Error(includer->place, "the file " + SafeText(path) + " includes itself, directly or through others");
  }
  return state == states_.end();
}

std::string TLoader::ReadText(const std::string& path, const TIncluder* includer, bool& failed) {
  failed = true;
  const std::size_t limit = std::min(limits_.fileSize, limits_.totalSize - bytes_);
  try {
    std::string text = reader_.Read(path, limit);
    failed = false;
    return text;
  } catch (const TEndedReading&) {
    throw;
  } catch (const THostError& error) {
    if (error.Kind() != EFailure::kTooLarge) {
      if (!includer) throw;
      Refuse(path, includer, error.what(), error.Kind());
    } else if (limit == limits_.fileSize) {
      Refuse(path, includer, "the file " + SafeText(path) + " is larger than " + std::to_string(limit) + " bytes",
             EFailure::kTooLarge);
    } else {
      Refuse(path, includer,
             "with the file " + SafeText(path) + " the schema is larger than " + std::to_string(limits_.totalSize) +
                 " bytes in all",
             EFailure::kTooLarge);
    }
  }
  return {};
}

// Whether the text read last may be shown: a link or an include may lead to a file that only this process may read.
bool TLoader::IsShown() const {
  return std::any_of(folders_.begin(), folders_.end(), [this](const auto& folder) { return reader_.LiesIn(folder); });
}

void TLoader::LoadFile(const std::string& path, const TIncluder* includer) {
  const std::string key = fs::path(path).lexically_normal().string();
  if (!IsNew(key, path, includer)) return;
  if (states_.size() == limits_.files) {
    log_.Error(PlaceOf(path, includer), "the schema has more than " + std::to_string(limits_.files) + " files");
  }
  if (states_.size() >= limits_.files) return;
  states_[key] = EState::kOpen;
  bool failed = false;
  std::string text = ReadText(path, includer, failed);
  if (failed) states_[key] = EState::kRead;  // reported once
  if (failed) return;
  bytes_ += text.size();
  const bool shown = IsShown();
  const std::uint32_t number = AddSource(path, std::move(text));
  TSchemaSource& source = *schema_.sources->back();
  if (!shown) {
    source.Hide();
    log_.HideFile(number, path);
  }
  TSchemaUnit unit{number, &source, nullptr, nullptr};
  const std::size_t errors = log_.Errors();
  CheckEncoding(source, number);
  auto file = std::make_unique<Mof::TMofFile>(Mof::ParseMof(source, unit, limits_, log_));
  schema_.isForeign = schema_.isForeign || (!shown && log_.Errors() > errors);
  schema_.mentionedClasses.merge(file->mentionedClasses);
  schema_.mentionedQualifiers.merge(file->mentionedQualifiers);
  unit.file = file.get();
  schema_.files.push_back(std::move(file));
  Walk(unit, includer ? includer->depth : 1);
  states_[key] = EState::kRead;
}

// Reports one error per file: a text in another encoding would give one for every other byte.
void TLoader::CheckEncoding(TSchemaSource& source, std::uint32_t unit) {
  const auto bad = ReplaceBadBytes(source.Characters());
  if (!bad) return;
  log_.SyntaxError({unit, static_cast<std::uint32_t>(bad->offset)},
                   "found the byte " + HexByte(bad->value) + ", expected UTF-8 text");
}

void TLoader::Walk(const TSchemaUnit& unit, std::size_t depth) {
  for (const Mof::TProduction& production : unit.file->productions) {
    if (production.kind == Mof::EProduction::kPragma) {
      Pragma(unit, unit.file->pragmas[production.index], depth);
    } else {
      schema_.declarations.push_back({unit, production});
    }
  }
}

void TLoader::Pragma(const TSchemaUnit& unit, const Mof::TPragmaSyntax& pragma, std::size_t depth) {
  const std::string_view name = unit.Text(pragma.name);
  const bool known = EqualNames(name, "include") || EqualNames(name, "locale") || EqualNames(name, "instancelocale") ||
                     EqualNames(name, "namespace");
  if (!known) {
    log_.Warning(unit.Place(pragma.name), "the pragma " + unit.Quoted(pragma.name) + " is unknown and has no effect");
  } else if (EqualNames(name, "include")) {
    Include(unit, pragma, depth);
  } else if (EqualNames(name, "namespace")) {
    std::string path = StringOf(unit, pragma.parameter);
    if (namespacePath_.empty() && !unit.source->IsHidden()) namespacePath_ = path;
    if (!namespacePath_.empty() && !EqualNames(namespacePath_, path)) {
      log_.Warning(unit.Place(pragma.parameter.span), "found a second namespace: the classes of \"" + path +
                                                          "\" are merged with those of \"" + namespacePath_ + "\"");
    }
  }
}

void TLoader::Include(const TSchemaUnit& unit, const Mof::TPragmaSyntax& pragma, std::size_t depth) {
  const TIncluder includer{unit.Place(pragma.parameter.span), depth + 1};
  if (depth >= limits_.includeDepth) {
    log_.Error(includer.place, "files are included more than " + std::to_string(limits_.includeDepth) + " levels deep");
    return;
  }
  const fs::path target = fs::path(unit.source->Name()).parent_path() / StringOf(unit, pragma.parameter);
  LoadFile(target.lexically_normal().string(), &includer);
}

}  // namespace

TParsedSchema LoadSchema(const std::vector<std::string>& paths, ISourceReader& reader, const TSchemaLimits& limits,
                         TSchemaLog& log) {
  TLoader loader(reader, limits, log);
  for (const std::string& path : paths) loader.AddFolderOf(path);
  for (const std::string& path : paths) loader.LoadPath(path);
  return loader.Take();
}

}  // namespace velhost
