// What a user says about a BMC on the network: its address, who logs in, and with what rights.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/base/secret.h"
#include "host/base/sourcereader.h"

namespace velhost {

/// The privilege levels, with their numbers on the wire.
enum class ELanPrivilege : std::uint8_t { kUser = 2, kOperator = 3, kAdmin = 4 };

struct TLanOptions {
  std::string host;  ///< a name or an address, IPv6 without its brackets
  std::uint16_t port = 623;
  std::string user;                         ///< at most 16 bytes; empty for the BMC's anonymous user
  TSecret password;                         ///< at most 20 bytes
  std::vector<int> cipherSuites = {17, 3};  ///< tried in this order, each from 0 to 17
  ELanPrivilege privilege = ELanPrivilege::kAdmin;
};

/// "lan:[USER@]HOST[:PORT]", an IPv6 address in brackets; a USER may contain "@". Gives host, port
/// and user. Throws THostError (kInvalidArgument), saying what is wrong with which SPEC; for a ":" in USER without
/// the text after --sp, since a password may be in it.
VELHOST_API TLanOptions ParseLanSpec(const std::string& spec);

/// "user", "operator" or "admin"; empty for anything else.
VELHOST_API std::optional<ELanPrivilege> LanPrivilegeOf(const std::string& name);
/// The name of a privilege level.
VELHOST_API const char* NameOf(ELanPrivilege privilege);

/// "HOST:PORT", an IPv6 address in brackets: for connections and messages.
VELHOST_API std::string AddressOf(const TLanOptions& options);

/// Takes a variable out of this process's environment, where it is overwritten. Empty when it is not
/// set. To be called before there are threads.
VELHOST_API std::optional<TSecret> TakeSecretVariable(const char* name);

/// The password: the first line of `file` without its end, if `file` is not empty; else `variable`,
/// what VELHOST_IPMI_PASSWORD said, which may be an empty text. Throws THostError: kInvalidArgument where both are
/// missing or the password is longer than IPMI's 20 bytes, kMalformed for a NUL in the file's, else what
/// reading the file throws. No message contains any of it.
VELHOST_API TSecret LanPassword(const std::string& file, const std::optional<TSecret>& variable, ISourceReader& reader);

/// What to warn of when others than its owner can open a password's file; else empty, as for anything
/// but a regular file.
VELHOST_API std::string PasswordFileWarning(const std::string& file);

}  // namespace velhost
