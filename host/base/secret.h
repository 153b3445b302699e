// A text that must not be found where it was once it is no longer needed.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// Copies share the one text in memory, which is wiped with the last of them. While there is one in the
/// process, the process leaves no core dump, and no other process of the same user can read its memory
/// or its environment (PR_SET_DUMPABLE). Used by any thread.
class VELHOST_API TSecret {
 public:
  TSecret() : TSecret(std::string_view()) {}
  explicit TSecret(std::string_view text);

  /// NUL-terminated, and valid as long as a copy lives.
  const char* Text() const;
  std::size_t Size() const;

 private:
  class TBuffer;
  std::shared_ptr<const TBuffer> buffer_;
};

/// Overwrites all that the text has room for, and empties it.
VELHOST_API void Wipe(std::string& text);

}  // namespace velhost
