#include "host/model/assertionfailure.h"

#include <cstring>

#include "nkrovel20/api.h"

namespace velhost {

namespace {

// The function's signature ends in "[with T = NKROVEL20::ICIMClass; ...]" (GCC) or "[T = ...]" (Clang).
std::string PointeeOf(const std::string& function) {
  const std::string key = "T = ";
  const std::size_t start = function.rfind(key);
  if (start == std::string::npos) return {};
  std::string name = function.substr(start + key.size());
  name = name.substr(0, name.find_first_of(";]"));
  if (const std::size_t scope = name.rfind("::"); scope != std::string::npos) name = name.substr(scope + 2);
  return name;
}

}  // namespace

TAssertionFailure::TAssertionFailure(const char* expression, const char* function, const char* file, long line)
    : expression_(expression), pointee_(PointeeOf(function)) {
  const char* slash = std::strrchr(file, '/');
  text_ = "assertion " + expression_ + " failed in " + function + " (" + (slash ? slash + 1 : file) + ":" +
          std::to_string(line) + ")";
}

TAssertionFailure::~TAssertionFailure() = default;

}  // namespace velhost

// Boost calls these when a null shared pointer is dereferenced.
namespace boost {

VELHOST_API void assertion_failed(char const* expression, char const* function, char const* file, long line) {
  throw velhost::TAssertionFailure(expression, function, file, line);
}

VELHOST_API void assertion_failed_msg(char const* expression, char const* /*message*/, char const* function,
                                      char const* file, long line) {
  throw velhost::TAssertionFailure(expression, function, file, line);
}

}  // namespace boost
