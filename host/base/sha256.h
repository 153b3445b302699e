// SHA-256 (FIPS 180-4), by which a schema is recognised.
#pragma once

#include <nettle/sha2.h>

#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// The hash of a text that is added piece by piece; where it is split makes no difference.
class VELHOST_API TSha256 {
 public:
  TSha256();
  void Add(std::string_view bytes);
  /// The hash of everything added so far as 64 lower-case hexadecimal digits. More may be added afterwards.
  std::string HexDigest() const;

 private:
  sha256_ctx context_;
};

}  // namespace velhost
