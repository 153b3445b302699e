// The whole trace of one request for an R8 class, line by line.
#include <gtest/gtest.h>

#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"
#include "tests/support/timezone.h"
#include "tests/support/tracefile.h"

namespace tests {
namespace {

class R8Trace : public TPluginTest {
 protected:
  R8Trace() {
    AddStatisticBase();
    for (const char* const base :
         {"KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"}) {
      ns->AddClass(TClassBuilder(base, "KROSG_StatisticBase"));
    }
    ns->AddClass(TClassBuilder("KROSG_VO_PCIIOBRIDGE_StatisticData", "KROSG_StatisticBase")
                     .Machines({"6203"})
                     .MaxInstances(2)
                     .Register("ErrorRegister", 0xABCDEF, 8)
                     .Register("CountRegister", 0x001000, 4));
  }

  TTimeZone zone{"CET-1"};
};

TEST_F(R8Trace, TwoBridgesOneOfWhichRefusesARegister) {
  sp.Expect(
      {Register(1, 0xABCDEF).Answers(RegisterData({1, 2, 3, 4, 5, 6, 7, 8}, {0x81, 0x82, 0x83, 0x84, 0x85, 0x86})),
       Register(1, 0x001000).Answers(RegisterData({0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70, 0x80})),
       Timestamp().Answers({0x12, 0x34, 0x56, 0x78}), Timestamp().Answers({0x12, 0x34, 0x56, 0x79}),
       Register(2, 0xABCDEF).Fails(0xCB),
       Register(2, 0x001000).Answers(RegisterData({0xFF, 0x00, 0xFE, 0x01, 0x11, 0x22, 0x33, 0x44})),
       Timestamp().Answers({0, 0, 0, 0}), Timestamp().Answers({0, 0, 0xFF, 0xFF})});
  GetData({"KROSG_VO_PCIIOBRIDGE_StatisticData"});
  EXPECT_EQ(committed.size(), 2U);
  ExpectTrace(logger.Lines(), TRACE_FOLDER "/two-bridges.trace");
}

}  // namespace
}  // namespace tests
