#include "host/output/objectpath.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "host/base/digits.h"
#include "host/base/names.h"

namespace velhost {

namespace {

bool IsNameStart(char c) {
  const char lower = FoldCase(c);
  return (lower >= 'a' && lower <= 'z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

bool IsNamePart(char c) { return IsNameStart(c) || IsDigit(c); }

bool IsName(std::string_view text) {
  return !text.empty() && IsNameStart(text.front()) && std::all_of(text.begin(), text.end(), IsNamePart);
}

bool IsNumeric(std::string_view text) {
  return text.find_first_of("0123456789") != std::string_view::npos &&
         text.find_first_not_of("0123456789abcdefABCDEFxX+-.") == std::string_view::npos;
}

// Removes everything before the first of `stops` from the text and returns it.
std::string_view TakeUntil(std::string_view& text, std::string_view stops) {
  const std::size_t size = std::min(text.find_first_of(stops), text.size());
  const std::string_view part = text.substr(0, size);
  text.remove_prefix(size);
  return part;
}

bool Take(std::string_view& text, std::string_view start) {
  if (text.substr(0, start.size()) != start) return false;
  text.remove_prefix(start.size());
  return true;
}

bool ReadHost(std::string_view& text, TObjectPath& path) {
  const std::size_t slashes = text.find("//");
  const bool scheme = slashes != std::string_view::npos && slashes > 1 && text[slashes - 1] == ':' &&
                      IsName(text.substr(0, slashes - 1));
  if (scheme) text.remove_prefix(slashes);
  if (!Take(text, "//")) return true;
  path.host = TakeUntil(text, "/");
  return !path.host.empty() && Take(text, "/");
}

bool ReadNamespace(std::string_view& text, TObjectPath& path) {
  std::string_view rest = text;
  std::string_view names = TakeUntil(rest, ":.=\"");
  if (!Take(rest, ":")) return path.host.empty();  // a host requires a namespace
  text = rest;
  Take(names, "/");
  for (;;) {
    const std::string_view name = TakeUntil(names, "/");
    if (!IsName(name)) return false;
    path.namespaces.emplace_back(name);
    if (!Take(names, "/")) return true;
  }
}

// Reads a quoted value whose opening quote has already been taken.
bool ReadQuoted(std::string_view& text, char quote, std::string& value) {
  while (!text.empty() && text.front() != quote) {
    if (text.front() == '\\') text.remove_prefix(1);
    if (text.empty()) return false;
    value += text.front();
    text.remove_prefix(1);
  }
  return !text.empty() && Take(text, std::string_view(&quote, 1));
}

bool ReadValue(std::string_view& text, TPathKey& key) {
  if (Take(text, "\"")) return ReadQuoted(text, '"', key.value);
  if (Take(text, "'")) return ReadQuoted(text, '\'', key.value);
  key.value = TakeUntil(text, ",");
  const bool isBoolean = EqualNames(key.value, "true") || EqualNames(key.value, "false");
  key.type = isBoolean ? EKeyType::kBoolean : EKeyType::kNumeric;
  return isBoolean || IsNumeric(key.value);
}

bool ReadKeys(std::string_view& text, TObjectPath& path) {
  do {
    TPathKey key;
    key.name = TakeUntil(text, "=");
    if (!IsName(key.name) || !Take(text, "=") || !ReadValue(text, key)) return false;
    path.keys.push_back(std::move(key));
  } while (Take(text, ","));
  return text.empty();
}

}  // namespace

std::optional<TObjectPath> ParseObjectPath(std::string_view text) {
  TObjectPath path;
  if (!ReadHost(text, path) || !ReadNamespace(text, path)) return std::nullopt;
  path.className = TakeUntil(text, ".=");
  if (!IsName(path.className)) return std::nullopt;
  if (text.empty()) return path;
  path.isInstance = true;
  const bool complete = text == "=@" || (Take(text, ".") && ReadKeys(text, path));
  return complete ? std::optional(std::move(path)) : std::nullopt;
}

}  // namespace velhost
