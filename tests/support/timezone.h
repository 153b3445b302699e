// Sets the process's time zone for a scope.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "tests/support/namespaces.h"

namespace tests {

/// Sets TZ and restores the previous value.
class TTimeZone {
 public:
  explicit TTimeZone(const char* zone) {
    if (const char* const old = std::getenv("TZ")) old_ = old;
    setenv("TZ", zone, 1);
  }
  ~TTimeZone() {
    if (old_) {
      setenv("TZ", old_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }
  TTimeZone(const TTimeZone&) = delete;
  TTimeZone& operator=(const TTimeZone&) = delete;

 private:
  std::optional<std::string> old_;
};

}  // namespace tests
