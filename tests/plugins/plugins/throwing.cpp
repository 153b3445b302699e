// Its initialiser throws.
#include <stdexcept>

#include "nkrovel20/trootobject.h"

namespace {

bool Throw() {
  if (NKROVEL20::TRootObject::GetPluginManager()) throw std::runtime_error("no licence for this server");
  return true;
}

[[maybe_unused]] const bool thrown = Throw();

}  // namespace
