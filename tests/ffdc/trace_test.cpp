// The whole trace of one request for the capture files, line by line.
#include <gtest/gtest.h>

#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"
#include "tests/support/tracefile.h"

namespace tests {
namespace {

const TBytes kOne = {1, 0, 0, 0};
const TBytes kTwo = {2, 0, 0, 0};

class CaptureTrace : public TPluginTest {
 protected:
  CaptureTrace() {
    AddJfrBases(*ns);
    AddCaptureClass();
    plugin.Init();
    logger.Clear();
    sp.nodes = 2;
  }
  void ExpectOpen(const std::string& name, int node) {
    sp.Expect(Open(name, node).Answers(OemData(node == 0 ? kOne : kTwo)));
  }
  TStep ExpectedClose(int node) { return Close(node == 0 ? kOne : kTwo, node).Answers(OemData({})); }
};

TEST_F(CaptureTrace, ThreeFilesOfTwoNodesWithEveryKindOfFailure) {
  ExpectOpen("cpu_err", 0);
  sp.Expect({Size("cpu_err").Answers(SizeData(12)), Read(kOne, 0, 10).Answers(ReadData({0, 1, 2, 3, 4, 5, 6, 7, 8, 9})),
             Read(kOne, 10, 2).Answers(ReadData({0xFE, 0xFF})), ExpectedClose(0)});
  sp.Expect(Open("cpu_err", 1).Fails(0xCB));

  ExpectOpen("ioh_err", 0);
  sp.Expect(Size("ioh_err").Lost());
  ExpectOpen("ioh_err", 1);
  sp.Expect({Size("ioh_err", 1).Answers(SizeData(0)), Read(kTwo, 0, 10, 1).Answers(ReadData(TBytes(10, 0xAA))),
             ExpectedClose(1)});

  ExpectOpen("zyn_err", 0);
  sp.Expect({Size("zyn_err").Answers(SizeData(-1)), ExpectedClose(0)});
  ExpectOpen("zyn_err", 1);
  sp.Expect({Size("zyn_err", 1).Answers(SizeData(25)), Read(kTwo, 0, 10, 1).Answers(ReadData(TBytes(10, 1))),
             Read(kTwo, 10, 10, 1).Answers(ReadData(TBytes(10, 2))), Read(kTwo, 20, 5, 1).Fails(0xC9),
             ExpectedClose(1)});
  GetData({"KROSG_DCAPFile"});
  ASSERT_EQ(committed.size(), 3U);
  EXPECT_EQ(TextOf(*committed[2], "RecordID"), "2");
  EXPECT_EQ(TextOf(*committed[2], "SourceNode"), "2");
  ExpectTrace(logger.Lines(), TRACE_FOLDER "/three-files.trace");
}

}  // namespace
}  // namespace tests
