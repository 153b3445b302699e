// The words of a register's meaning: the qualifiers, and what roles and severities are called.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "host/meaning/classmeaning.h"

namespace velhost::Meaning {

inline constexpr std::string_view kFields = "Fields";
inline constexpr std::string_view kBitNumbering = "BitNumbering";
inline constexpr std::string_view kRole = "Role";
inline constexpr std::string_view kMaskedBy = "MaskedBy";
inline constexpr std::string_view kEnabledBy = "EnabledBy";
inline constexpr std::string_view kFatalBy = "FatalBy";
inline constexpr std::string_view kSeverity = "Severity";
inline constexpr std::string_view kFirstErrorIn = "FirstErrorIn";
inline constexpr std::string_view kEvidence = "Evidence";

/// A qualifier that needs no declaration: of strings, on properties, with the flavors EnableOverride and ToSubclass.
struct TQualifierOfMeaning {
  std::string_view name;
  bool isArray = false;
  bool isOfClassesToo = false;
};
inline constexpr std::array<TQualifierOfMeaning, 9> kQualifiers = {{{kFields, true, false},
                                                                    {kBitNumbering, false, true},
                                                                    {kRole, false, false},
                                                                    {kMaskedBy, false, false},
                                                                    {kEnabledBy, false, false},
                                                                    {kFatalBy, false, false},
                                                                    {kSeverity, false, false},
                                                                    {kFirstErrorIn, false, false},
                                                                    {kEvidence, true, false}}};
/// Ignores case; null for any other name.
const TQualifierOfMeaning* FindQualifier(std::string_view name);

}  // namespace velhost::Meaning

namespace velhost {

/// "errors", "first-error".
std::string_view RoleName(ERole role);
/// "corrected", "error", "fatal".
std::string_view SeverityName(ESeverity severity);

/// These ignore case, and are empty for any other word.
std::optional<ERole> RoleOf(std::string_view word);
std::optional<ESeverity> SeverityOf(std::string_view word);

/// "'errors', 'mask' ... or 'identity'", for messages.
std::string ListOfRoles();
std::string ListOfSeverities();

}  // namespace velhost
