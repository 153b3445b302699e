#include "tests/plugin/constantsseenelsewhere.h"

#include "plugin/constants.h"

namespace torgareg::elsewhere {

std::vector<const std::string*> Constants() {
#include "tests/plugin/constantslist.inc"
}

}  // namespace torgareg::elsewhere
