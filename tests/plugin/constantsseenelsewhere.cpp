#include "tests/plugin/constantsseenelsewhere.h"

#include "plugin/constants.h"

namespace tests::elsewhere {

std::vector<const std::string*> Constants() {
#include "tests/plugin/constantslist.inc"
}

}  // namespace tests::elsewhere
