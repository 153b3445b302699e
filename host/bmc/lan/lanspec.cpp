#include "host/bmc/lan/lanspec.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <sstream>
#include <string_view>

#include "host/base/digits.h"
#include "host/base/hosterror.h"

namespace velhost {

namespace {

constexpr std::string_view kPrefix = "lan:";
constexpr std::size_t kMaxUser = 16;
constexpr std::size_t kMaxPassword = 20;
constexpr std::size_t kMaxHost = 255;
constexpr std::size_t kMaxPasswordFile = 4096;

[[noreturn]] void ThrowUsage(const std::string& spec, const std::string& problem) {
  throw THostError(EFailure::kInvalidArgument,
                   "'" + spec + "': " + problem + "; expected lan:[USER@]HOST[:PORT], an IPv6 address in brackets");
}

// Does not quote the text after --sp, which contains the password.
[[noreturn]] void ThrowPasswordInUser() {
  throw THostError(EFailure::kInvalidArgument,
                   "lan:USER@HOST: USER has a ':'; do not give a password there, because others can read it in the "
                   "list of processes: set VELHOST_IPMI_PASSWORD, or use --password-file");
}

bool IsAlphanumeric(char c) { return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// Whether the text consists of letters, digits and `others`.
bool ConsistsOf(std::string_view text, std::string_view others) {
  return std::all_of(text.begin(), text.end(),
                     [others](char c) { return IsAlphanumeric(c) || others.find(c) != std::string_view::npos; });
}

std::optional<std::uint16_t> PortOf(std::string_view text) {
  unsigned int port = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stop != end || port == 0 || port > 65535) return std::nullopt;
  return static_cast<std::uint16_t>(port);
}

/// Consumes "[address]", or a name up to its colon, from `rest`.
std::string TakeHost(const std::string& spec, std::string_view& rest) {
  const bool bracketed = rest.starts_with('[');
  const std::size_t end = bracketed ? rest.find(']') : std::min(rest.find(':'), rest.size());
  if (end == std::string_view::npos) ThrowUsage(spec, "'[' without ']'");
  std::string host(rest.substr(bracketed ? 1 : 0, bracketed ? end - 1 : end));
  rest.remove_prefix(bracketed ? end + 1 : end);
  if (host.empty()) ThrowUsage(spec, "no host is given");
  const bool valid = bracketed ? ConsistsOf(host, ":.%-_") && host.find(':') != std::string::npos
                               : ConsistsOf(host, ".-_") && host.front() != '-';
  if (!valid || host.size() > kMaxHost) ThrowUsage(spec, "'" + host + "' is not a host name or address");
  return host;
}

/// Parses what follows the host: nothing, or a colon and the port.
std::uint16_t TakePort(const std::string& spec, std::string_view rest, std::uint16_t standard) {
  if (rest.empty()) return standard;
  if (rest.front() != ':') ThrowUsage(spec, "unexpected '" + std::string(rest) + "' after the address");
  rest.remove_prefix(1);
  const auto port = PortOf(rest);
  if (!port) ThrowUsage(spec, "'" + std::string(rest) + "' is not a port from 1 to 65535");
  return *port;
}

TSecret FirstLine(const std::string& file, ISourceReader& reader) {
  std::string content = reader.Read(file, kMaxPasswordFile);
  std::string_view line(content);
  line = line.substr(0, line.find('\n'));
  if (line.ends_with('\r')) line.remove_suffix(1);
  TSecret secret(line);
  Wipe(content);
  return secret;
}

}  // namespace

TLanOptions ParseLanSpec(const std::string& spec) {
  if (!spec.starts_with(kPrefix)) ThrowUsage(spec, "does not begin with 'lan:'");
  std::string_view rest = std::string_view(spec).substr(kPrefix.size());
  TLanOptions options;
  if (const std::size_t at = rest.rfind('@'); at != std::string_view::npos) {
    options.user = rest.substr(0, at);
    rest.remove_prefix(at + 1);
    if (options.user.empty()) ThrowUsage(spec, "'@' without a user before it");
    if (options.user.find(':') != std::string::npos) ThrowPasswordInUser();
    if (options.user.size() > kMaxUser) ThrowUsage(spec, "the user name is longer than 16 bytes, the limit of IPMI");
  }
  options.host = TakeHost(spec, rest);
  options.port = TakePort(spec, rest, options.port);
  return options;
}

std::optional<ELanPrivilege> LanPrivilegeOf(const std::string& name) {
  for (const auto privilege : {ELanPrivilege::kUser, ELanPrivilege::kOperator, ELanPrivilege::kAdmin}) {
    if (name == NameOf(privilege)) return privilege;
  }
  return std::nullopt;
}

const char* NameOf(ELanPrivilege privilege) {
  switch (privilege) {
    case ELanPrivilege::kUser: return "user";
    case ELanPrivilege::kOperator: return "operator";
    case ELanPrivilege::kAdmin: break;
  }
  return "admin";
}

std::string AddressOf(const TLanOptions& options) {
  const bool bracketed = options.host.find(':') != std::string::npos;
  return (bracketed ? "[" + options.host + "]" : options.host) + ":" + std::to_string(options.port);
}

std::optional<TSecret> TakeSecretVariable(const char* name) {
  char* const value = std::getenv(name);
  if (value == nullptr) return std::nullopt;
  TSecret secret{std::string_view(value)};
  explicit_bzero(value, std::strlen(value));
  unsetenv(name);
  return secret;
}

TSecret LanPassword(const std::string& file, const std::optional<TSecret>& variable, ISourceReader& reader) {
  if (file.empty() && !variable) {
    throw THostError(EFailure::kInvalidArgument,
                     "a service processor on the network needs a password: set VELHOST_IPMI_PASSWORD, "
                     "or use --password-file");
  }
  TSecret password = file.empty() ? *variable : FirstLine(file, reader);
  if (std::strlen(password.Text()) != password.Size()) {
    throw THostError(EFailure::kMalformed, file + ": the password in its first line contains a NUL character");
  }
  if (password.Size() > kMaxPassword) {
    throw THostError(EFailure::kInvalidArgument,
                     (file.empty() ? "the password in VELHOST_IPMI_PASSWORD" : "the password in " + file) +
                         std::string(" is longer than 20 bytes, the limit of IPMI 2.0"));
  }
  return password;
}

std::string PasswordFileWarning(const std::string& file) {
  struct stat status = {};
  if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  if ((status.st_mode & (S_IRWXG | S_IRWXO)) == 0) return {};
  std::ostringstream text;
  text << "permissions " << std::oct << std::setfill('0') << std::setw(4) << (status.st_mode & 07777U) << " for '"
       << file << "' are too open: others may read the password in it (chmod 600)";
  return text.str();
}

}  // namespace velhost
