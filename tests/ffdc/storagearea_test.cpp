// The four storage-area commands: exact requests, exact traces, every kind of failure.
#include <gtest/gtest.h>

#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

class StorageArea : public TPluginTest {
 protected:
  SPLibrary* Node(int node) { return SPLibrary::GetSplibraryInstance(node); }

  unsigned char handle[4] = {0xA1, 0xB2, 0xC3, 0xD4};
};

// `count` copies of a text, such as bytes in a trace.
std::string Repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST_F(StorageArea, OpenSendsModeAndPaddedNameAndKeepsTheHandle) {
  sp.Expect(Ipmi(1, {0x01, 0x20, 0x2E, 0x00, 0x90, 0x13, 0x00, 0x00, 0x00, 0x39, 0x30, 0x00, 0x01, 0x01,
                     0,    0,    0,    0,    0,    0,    0,    'c',  'p',  'u',  '_',  'e',  'r',  'r'})
                .Answers(OemData({0x11, 0x22, 0x33, 0x44})));
  EXPECT_TRUE(plugin.OpenStorageArea(handle, "cpu_err", Node(1)));
  EXPECT_EQ(TBytes(handle, handle + 4), (TBytes{0x11, 0x22, 0x33, 0x44}));
  // 7 characters of the name and 21 bytes before them: 28 bytes.
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{Debug("Enter OpenStorageArea funtion"),
                                Debug("OpenStorageArea IPMI command data:OpenStorageArea IPMI command data:28bits\n"
                                      "01 20 2e 00 90 13 00 00 00 39 30 00 01 01 00 00 00 00 00 00 00 "
                                      "63 70 75 5f 65 72 72 "),
                                Debug("Exit OpenStorageArea funtion")}));
}

TEST_F(StorageArea, TheHandleIsStoredBeforeTheExitIsLogged) {
  sp.Expect(Open("cpu_err").Answers(OemData({0x11, 0x22, 0x33, 0x44})));
  logger.FailAt("Exit OpenStorageArea funtion");
  EXPECT_THROW(plugin.OpenStorageArea(handle, "cpu_err", Node(0)), std::runtime_error);
  EXPECT_EQ(TBytes(handle, handle + 4), (TBytes{0x11, 0x22, 0x33, 0x44}));
}

TEST_F(StorageArea, OpenFailsSilentlyAndLeavesTheHandle) {
  for (const TStep& step : {Open("ioh_err").Fails(0xCB), Open("ioh_err").Lost(),
                            Open("ioh_err").Answers(OemData({1, 2, 3, 4})).WithCode(0x01)}) {
    logger.Clear();
    sp.Expect(step);
    EXPECT_FALSE(plugin.OpenStorageArea(handle, "ioh_err", Node(0)));
    EXPECT_EQ(TBytes(handle, handle + 4), (TBytes{0xA1, 0xB2, 0xC3, 0xD4}));
    EXPECT_EQ(logger.Lines().size(), 2U) << "entry and request alone";
  }
}

TEST_F(StorageArea, OpenReadsTheHandleOfAShortAnswerAsZeros) {
  sp.Expect(Open("cpu_err").Answers({0x39, 0x30, 0x00, 0x55}));
  EXPECT_TRUE(plugin.OpenStorageArea(handle, "cpu_err", Node(0)));
  EXPECT_EQ(TBytes(handle, handle + 4), (TBytes{0x55, 0, 0, 0}));
}

TEST_F(StorageArea, AnEmptyNameIsSentAsZeros) {
  sp.Expect(Ipmi(0, {0x01, 0x20, 0x2E, 0x00, 0x90, 0x0C, 0, 0, 0, 0x39, 0x30, 0x00, 0x01, 0x01}).Fails(0xCB));
  plugin.OpenStorageArea(handle, "", Node(0));
  EXPECT_EQ(logger.Lines()[1], Debug("OpenStorageArea IPMI command data:OpenStorageArea IPMI command data:21bits\n"
                                     "01 20 2e 00 90 0c 00 00 00 39 30 00 01 01 00 00 00 00 00 00 00 "));
}

TEST_F(StorageArea, ANameOf25CharactersFillsTheField) {
  TBytes request = {0x01, 0x20, 0x2E, 0x00, 0x90, 0x25, 0, 0, 0, 0x39, 0x30, 0x00, 0x01, 0x01, 0, 0, 0, 0, 0, 0, 0};
  request.insert(request.end(), 25, 'x');
  sp.Expect(Ipmi(0, request).Fails(0xCB));
  plugin.OpenStorageArea(handle, std::string(25, 'x'), Node(0));
  EXPECT_TRUE(
      logger.Lines()[1].message.ends_with("46bits\n01 20 2e 00 90 25 00 00 00 39 30 00 01 01 00 00 00 00 00 "
                                          "00 00 " +
                                          Repeated("78 ", 25)));
}

TEST_F(StorageArea, ALongerNameIsTruncatedButByteFiveCountsAllOfIt) {
  // 30 characters: byte 5 is 42, and the trace has 51 bytes, the last five of them zero.
  TBytes request = {0x01, 0x20, 0x2E, 0x00, 0x90, 42, 0, 0, 0, 0x39, 0x30, 0x00, 0x01, 0x01, 0, 0, 0, 0, 0, 0, 0};
  request.insert(request.end(), 25, 'x');
  sp.Expect(Ipmi(0, request).Fails(0xCB));
  plugin.OpenStorageArea(handle, std::string(30, 'x'), Node(0));
  EXPECT_TRUE(
      logger.Lines()[1].message.ends_with("51bits\n01 20 2e 00 90 2a 00 00 00 39 30 00 01 01 00 00 00 00 00 "
                                          "00 00 " +
                                          Repeated("78 ", 25) + Repeated("00 ", 5)));
}

TEST_F(StorageArea, ByteFiveIsTheLowByteOfTheLength) {
  // 300 + 12 = 312 = 0x138; the query's 300 + 4 = 304 = 0x130.
  TBytes open = {0x01, 0x20, 0x2E, 0x00, 0x90, 0x38, 0, 0, 0, 0x39, 0x30, 0x00, 0x01, 0x01, 0, 0, 0, 0, 0, 0, 0};
  open.insert(open.end(), 25, 'y');
  TBytes query = {0x01, 0x20, 0x2E, 0x00, 0x90, 0x30, 0, 0, 0, 0x39, 0x30, 0x00, 0x06};
  query.insert(query.end(), 25, 'y');
  sp.Expect({Ipmi(0, open).Fails(0xCB), Ipmi(0, query).Fails(0xCB)});
  const std::string name(300, 'y');
  int size = 5;
  plugin.OpenStorageArea(handle, name, Node(0));
  plugin.QueryStorageAreaSize(size, name, Node(0));
  // The number is 321 or 313, but only the 256 bytes of the buffer are shown.
  const std::string& openLine = logger.Lines()[1].message;
  EXPECT_NE(openLine.find("data:321bits\n"), std::string::npos);
  EXPECT_EQ(openLine.size() - openLine.find('\n') - 1, 256 * 3U);
  const std::string& queryLine = logger.Lines()[3].message;
  EXPECT_NE(queryLine.find("data:313bits\n"), std::string::npos);
  EXPECT_EQ(queryLine.size() - queryLine.find('\n') - 1, 256 * 3U);
}

TEST_F(StorageArea, QuerySendsTheNameAndReadsALittleEndianSize) {
  sp.Expect(Ipmi(2, {0x01, 0x20, 0x2E, 0x00, 0x90, 0x0B, 0x00, 0x00, 0x00, 0x39,
                     0x30, 0x00, 0x06, 'z',  'y',  'n',  '_',  'e',  'r',  'r'})
                .Answers(OemData({0x15, 0xCD, 0x5B, 0x07})));
  int size = -1;
  EXPECT_TRUE(plugin.QueryStorageAreaSize(size, "zyn_err", Node(2)));
  EXPECT_EQ(size, 123456789);
  // 7 characters of the name and 13 bytes before them: 20 bytes. The two prefixes differ.
  EXPECT_EQ(
      logger.Lines(),
      (std::vector<TLine>{Debug("Enter QueryStorageAreaSize funtion"),
                          Debug("QueryStorageArea IPMI command data:QueryStorageAreaSize IPMI command data:20bits\n"
                                "01 20 2e 00 90 0b 00 00 00 39 30 00 06 7a 79 6e 5f 65 72 72 "),
                          Debug("total storage area size:123456789\n"), Debug("Exit QueryStorageAreaSize funtion")}));
}

TEST_F(StorageArea, QuerySizesAreSigned) {
  int size = 0;
  sp.Expect(Size("cpu_err").Answers(OemData({0xFF, 0xFF, 0xFF, 0xFF})));
  EXPECT_TRUE(plugin.QueryStorageAreaSize(size, "cpu_err", Node(0)));
  EXPECT_EQ(size, -1);
  EXPECT_EQ(logger.Lines()[2], Debug("total storage area size:-1\n"));
  sp.Expect(Size("cpu_err").Answers(OemData({0x00, 0x00, 0x00, 0x80})));
  EXPECT_TRUE(plugin.QueryStorageAreaSize(size, "cpu_err", Node(0)));
  EXPECT_EQ(logger.Lines()[6], Debug("total storage area size:-2147483648\n"));
}

TEST_F(StorageArea, QueryReadsOnlyFourBytes) {
  int size = 0;
  sp.Expect(Size("cpu_err").Answers(OemData({0x0A, 0x00, 0x00, 0x00, 0xFF, 0xFF})));
  EXPECT_TRUE(plugin.QueryStorageAreaSize(size, "cpu_err", Node(0)));
  EXPECT_EQ(size, 10);
}

TEST_F(StorageArea, QueryFailsSilentlyAndLeavesTheSize) {
  int size = 77;
  for (const TStep& step : {Size("cpu_err").Fails(0xCB), Size("cpu_err").Lost()}) {
    logger.Clear();
    sp.Expect(step);
    EXPECT_FALSE(plugin.QueryStorageAreaSize(size, "cpu_err", Node(0)));
    EXPECT_EQ(size, 77);
    EXPECT_EQ(logger.Lines().size(), 2U);
  }
}

TEST_F(StorageArea, CloseSendsTheHandleAndTracesSixExtraZeros) {
  sp.Expect(
      Ipmi(0, {0x01, 0x20, 0x2E, 0x00, 0x90, 0x08, 0x00, 0x00, 0x00, 0x39, 0x30, 0x00, 0x05, 0xA1, 0xB2, 0xC3, 0xD4})
          .Answers(OemData({})));
  plugin.CloseStorageArea(handle, Node(0));
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{Debug("Enter CloseStorageArea funtion"),
                                Debug("CloseStorageArea IPMI command data:01 20 2e 00 90 08 00 00 00 39 30 00 05 a1 b2 "
                                      "c3 d4 00 00 00 00 00 00 "),
                                Debug("close file successfully"), Debug("Exit ReadStorageArea funtion")}));
}

TEST_F(StorageArea, AFailedCloseOnlyOmitsItsMessage) {
  for (const TStep& step : {Close({0xA1, 0xB2, 0xC3, 0xD4}).Fails(0xC9), Close({0xA1, 0xB2, 0xC3, 0xD4}).Lost()}) {
    logger.Clear();
    sp.Expect(step);
    plugin.CloseStorageArea(handle, Node(0));
    EXPECT_EQ(logger.Lines().size(), 3U);
    EXPECT_EQ(logger.Count(Debug("close file successfully")), 0U);
    EXPECT_EQ(logger.Lines().back(), Debug("Exit ReadStorageArea funtion"));
  }
}

TEST_F(StorageArea, HandleBytesAreSentUnchanged) {
  const TBytes odd = {0x00, 0xFF, 0x00, 0x80};
  sp.Expect({Open("cpu_err").Answers(OemData(odd)), Read(odd, 0, 10).Fails(0xC9), Close(odd)});
  unsigned char out[10] = {};
  ASSERT_TRUE(plugin.OpenStorageArea(handle, "cpu_err", Node(0)));
  plugin.ReadStorageArea(10, handle, out, Node(0));
  plugin.CloseStorageArea(handle, Node(0));
}

}  // namespace
}  // namespace tests
