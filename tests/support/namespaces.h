// The namespace of all tests, in which the names under test are visible.
#pragma once

namespace NKROVEL20 {}
namespace torgareg {}
namespace velhost {}

namespace tests {

using namespace NKROVEL20;
using namespace torgareg;
using namespace velhost;

}  // namespace tests
