// The whole trace of one request for a JFR class, line by line.
#include <gtest/gtest.h>

#include "tests/jfr/blocktest.h"
#include "tests/support/namespaces.h"
#include "tests/support/tracefile.h"

namespace tests {
namespace {

class JfrTrace : public TPluginTest {
 protected:
  JfrTrace() {
    AddStatisticBase();
    AddJfrBases(*ns, "KROSG_StatisticBase");
    ns->AddClass(TClassBuilder("Bridge6203", kBridgeBase)
                     .Machines({"6203"})
                     .MaxInstances(2)
                     .Record("First", 0)
                     .Record("Fourth", 3));
    sp.takesDotCommands = true;
    sp.serviceProcessors = 3;
  }
};

TEST_F(JfrTrace, AWholeBlockNoBlockAndAShortOne) {
  TBytes twenty;
  for (std::uint8_t byte = 100; byte < 120; ++byte) twenty.push_back(byte);
  twenty[3] = 0;
  sp.Expect({DotBlock(0).Returns(TBlock().Bytes()), DotBlock(1).Returns({}), DotBlock(2).Returns(twenty)});
  GetData({"Bridge6203"});
  EXPECT_EQ(committed.size(), 4U);
  ExpectTrace(logger.Lines(), TRACE_FOLDER "/two-blocks.trace");
}

}  // namespace
}  // namespace tests
