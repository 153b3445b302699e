// Text that is erased from memory once it is no longer needed.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// Copies share one text in memory, which is wiped along with the last of them. While any exists, the process leaves
/// no core dump, and no other process of the same user can read its memory or environment (PR_SET_DUMPABLE). May be
/// used by any thread.
class VELHOST_API TSecret {
 public:
  TSecret() : TSecret(std::string_view()) {}
  explicit TSecret(std::string_view text);

  /// NUL-terminated; valid for as long as a copy exists.
  const char* Text() const;
  std::size_t Size() const;

 private:
  class TBuffer;
  std::shared_ptr<const TBuffer> buffer_;
};

/// Overwrites the text's whole capacity, then empties it.
VELHOST_API void Wipe(std::string& text);

}  // namespace velhost
