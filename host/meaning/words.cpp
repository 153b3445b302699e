#include "host/meaning/words.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "host/base/names.h"
#include "host/base/text.h"

namespace velhost {

namespace {

// In the order of their enumerations.
constexpr std::array<std::string_view, 10> kRoles = {"errors",  "mask",     "severity", "first-error", "counter",
                                                     "address", "syndrome", "log",      "state",       "identity"};
constexpr std::array<std::string_view, 3> kSeverities = {"corrected", "error", "fatal"};

template <typename TEnum, std::size_t Count>
std::optional<TEnum> Find(const std::array<std::string_view, Count>& words, std::string_view word) {
  const auto found =
      std::find_if(words.begin(), words.end(), [word](std::string_view other) { return EqualNames(word, other); });
  if (found == words.end()) return std::nullopt;
  return static_cast<TEnum>(found - words.begin());
}

template <std::size_t Count>
std::string ListOf(const std::array<std::string_view, Count>& words) {
  std::vector<std::string> quoted;
  for (const std::string_view word : words) quoted.push_back(SingleQuoted(word));
  return Listed(quoted, " or ");
}

}  // namespace

namespace Meaning {

const TQualifierOfMeaning* FindQualifier(std::string_view name) {
  const auto* const found = std::find_if(kQualifiers.begin(), kQualifiers.end(),
                                         [name](const auto& known) { return EqualNames(known.name, name); });
  return found == kQualifiers.end() ? nullptr : found;
}

}  // namespace Meaning

std::string_view RoleName(ERole role) { return kRoles.at(static_cast<std::size_t>(role)); }
std::string_view SeverityName(ESeverity severity) { return kSeverities.at(static_cast<std::size_t>(severity)); }

std::optional<ERole> RoleOf(std::string_view word) { return Find<ERole>(kRoles, word); }
std::optional<ESeverity> SeverityOf(std::string_view word) { return Find<ESeverity>(kSeverities, word); }

std::string ListOfRoles() { return ListOf(kRoles); }
std::string ListOfSeverities() { return ListOf(kSeverities); }

}  // namespace velhost
