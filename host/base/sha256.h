// SHA-256 (FIPS 180-4), by which schemas and recorded requests are recognised.
#pragma once

#include <nettle/sha2.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// The hash of a text that is added piece by piece; where it is split makes no difference.
class VELHOST_API TSha256 {
 public:
  TSha256();
  void Add(std::string_view bytes);
  // The hash of everything added so far. More may be added afterwards.
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> Digest() const;
  /// As 64 lower-case hexadecimal digits.
  std::string HexDigest() const;

 private:
  sha256_ctx context_;
};

}  // namespace velhost
