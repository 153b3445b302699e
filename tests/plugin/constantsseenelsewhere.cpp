#include "tests/plugin/constantslist.h"

namespace tests {

std::vector<const std::string*> ConstantsSeenElsewhere() { return Constants(); }

}  // namespace tests
