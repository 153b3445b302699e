// Parses the object paths in references (DSP0004, "Object Path").
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velhost {

enum class EKeyType { kString, kBoolean, kNumeric };

struct TPathKey {
  std::string name;
  EKeyType type = EKeyType::kString;
  std::string value;  ///< a string without its quotes and escapes; any other value as written
};

struct TObjectPath {
  std::string host;                     ///< empty if the path names none
  std::vector<std::string> namespaces;  ///< "root/cimv2" is two; empty if the path names none
  std::string className;
  bool isInstance = false;  ///< false: the path of a class
  std::vector<TPathKey> keys;
};

/// Parses `[[SCHEME:]//HOST/][NAMESPACE:]CLASS[.KEY=VALUE,...]`, or `CLASS=@` for the only instance of a class.
/// Values are strings in double quotes with \" and \\, characters in single quotes, TRUE and FALSE in any case, and
/// numbers. Empty for any other text.
std::optional<TObjectPath> ParseObjectPath(std::string_view text);

}  // namespace velhost
