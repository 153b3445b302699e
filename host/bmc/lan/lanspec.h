// The user's description of a BMC on the network: its address, the user name, and the privilege level.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/base/secret.h"
#include "host/base/sourcereader.h"

namespace velhost {

/// The privilege levels, with their values on the wire.
enum class ELanPrivilege : std::uint8_t { kUser = 2, kOperator = 3, kAdmin = 4 };

struct TLanOptions {
  std::string host;  ///< a name or an address; IPv6 without brackets
  std::uint16_t port = 623;
  std::string user;                         ///< at most 16 bytes; empty for the BMC's anonymous user
  TSecret password;                         ///< at most 20 bytes
  std::vector<int> cipherSuites = {17, 3};  ///< tried in this order, each from 0 to 17
  ELanPrivilege privilege = ELanPrivilege::kAdmin;
};

/// Parses "lan:[USER@]HOST[:PORT]", with an IPv6 address in brackets; USER may contain "@". Returns host, port and
/// user. Throws THostError (kInvalidArgument), quoting `spec` and saying what is wrong with it; if USER has a ":",
/// without quoting, since a password may be in it.
VELHOST_API TLanOptions ParseLanSpec(const std::string& spec);

/// "user", "operator" or "admin"; empty for anything else.
VELHOST_API std::optional<ELanPrivilege> LanPrivilegeOf(const std::string& name);
/// The name of a privilege level.
VELHOST_API const char* NameOf(ELanPrivilege privilege);

/// "HOST:PORT", with an IPv6 address in brackets, for connections and messages.
VELHOST_API std::string AddressOf(const TLanOptions& options);

/// Removes a variable from this process's environment and overwrites it there. Empty if it is not set. To be called
/// before there are threads.
VELHOST_API std::optional<TSecret> TakeSecretVariable(const char* name);

/// The password: the first line of `file` without its newline, unless `file` is empty; otherwise `variable`, the
/// value of VELHOST_IPMI_PASSWORD, which may be an empty text. Throws THostError: kInvalidArgument if both are
/// missing or the password is longer than IPMI's 20 bytes, kMalformed if the file's has a NUL, and whatever reading
/// the file throws. No message contains any of the password.
VELHOST_API TSecret LanPassword(const std::string& file, const std::optional<TSecret>& variable, ISourceReader& reader);

/// A warning if users other than its owner can open a password file; empty otherwise, and for anything that is not a
/// regular file.
VELHOST_API std::string PasswordFileWarning(const std::string& file);

}  // namespace velhost
