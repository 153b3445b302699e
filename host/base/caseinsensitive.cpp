#include "host/base/caseinsensitive.h"

#include <unistd.h>

#include <chrono>

namespace velhost {

namespace {

TNameHashKey DrawKey() noexcept {
  TNameHashKey key = {};
  if (getentropy(&key, sizeof key) != 0) {
    key.start = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    key.factor = key.start * 0x9E3779B97F4A7C15ULL;
  }
  key.factor |= 1U;
  return key;
}

}  // namespace

const TNameHashKey& NameHashKey() noexcept {
  static const TNameHashKey key = DrawKey();
  return key;
}

}  // namespace velhost
