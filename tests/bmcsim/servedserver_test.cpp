#include "host/bmc/serve/servedserver.h"

#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

constexpr const char* kServer = R"(
machine_type = "6203"
[[bmc_node]]
timestamp = "12 34 56 78"
[[bmc_node.register]]
chip = 7
address = 0x345678
value = "01 02 03 04 05 06 07 08"
[[bmc_node.storage_area]]
name = "cpu_err"
data = "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f 20 21 22 23 24 25 26 27"
[[bmc_node]]
timestamp = "9a bc de f0"
)";

constexpr std::size_t kRoom = 36;  // the capacity of ipmi_sim's answers

TBytes Answer(TServedNode& node, int networkFunction, int command, const TBytes& data, std::size_t capacity = kRoom) {
  return node.Answer(static_cast<std::uint8_t>(networkFunction), 0, static_cast<std::uint8_t>(command), data, capacity);
}

TEST(ServedServer, AnswersWithCompletionCodeAndData) {
  TServedServer node(ServerFrom(kServer), 0);
  EXPECT_EQ(Answer(node, 0x3A, 0x62, {0x07, 0x34, 0x56, 0x78}),
            (TBytes{0x00, 0, 0, 0, 0, 0, 0, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08}));
  EXPECT_EQ(Answer(node, 0x3A, 0x62, {0x07, 0x34, 0x56, 0x79}), (TBytes{0xCB}));
  EXPECT_EQ(Answer(node, 0x3A, 0x63, {}), (TBytes{0xC1}));
}

TEST(ServedServer, IsTheRequestedNode) {
  TServedServer node(ServerFrom(kServer), 1);
  EXPECT_EQ(Answer(node, 0x3A, 0x6F, {}), (TBytes{0x00, 0x9A, 0xBC, 0xDE, 0xF0}));
}

TEST(ServedServer, StorageAreaAnswersCarryTheManufacturerId) {
  TServedServer node(ServerFrom(kServer), 0);
  EXPECT_EQ(Answer(node, 0x2E, 0x90, {0x39, 0x30, 0x00, 0x06, 'c', 'p', 'u', '_', 'e', 'r', 'r'}),
            (TBytes{0x00, 0x39, 0x30, 0x00, 0x28, 0x00, 0x00, 0x00}));
  EXPECT_EQ(Answer(node, 0x2E, 0x90, {0x39, 0x30, 0x00, 0x06, 'x'}), (TBytes{0xCB, 0x39, 0x30, 0x00}));
}

TEST(ServedServer, LongReadReturnsWhatTheWireHoldsAndCountsIt) {
  TServedServer node(ServerFrom(kServer), 0);
  const TBytes answer = Answer(node, 0x2E, 0x90, {0x39, 0x30, 0x00, 0x02, 1, 0, 0, 0, 0, 0, 0, 0, 40, 0});
  ASSERT_EQ(answer.size(), 36U);
  EXPECT_EQ(TBytes(answer.begin(), answer.begin() + 8), (TBytes{0x00, 0x39, 0x30, 0x00, 0x1E, 0x00, 0x00, 0x01}));
  EXPECT_EQ(answer.back(), 0x1D);
}

TEST(ServedServer, AnswerFitsAnyCapacity) {
  TServedServer node(ServerFrom(kServer), 0);
  for (std::size_t room = 0; room < 20; ++room) {
    const TBytes answer = Answer(node, 0x3A, 0x62, {0x07, 0x34, 0x56, 0x78}, room);
    EXPECT_EQ(answer.size(), std::max<std::size_t>(1, std::min<std::size_t>(room, 15))) << room;
  }
}

TEST(ServedServer, RequestLongerThanABufferIsCut) {
  TServedServer node(ServerFrom(kServer), 0);
  TBytes request = {0x07, 0x34, 0x56, 0x78};
  request.resize(300, 0x5A);
  EXPECT_EQ(Answer(node, 0x3A, 0x62, request).size(), 15U);
}

TEST(ServedServer, FaultsApply) {
  TServedServer node(ServerFrom(std::string(kServer) + R"(
[[fault]]
on = "timestamp"
nth = 2
completion_code = 0xC3
[[fault]]
on = "register"
truncate = 12
)"),
                     0);
  EXPECT_EQ(Answer(node, 0x3A, 0x6F, {}), (TBytes{0x00, 0x12, 0x34, 0x56, 0x78}));
  EXPECT_EQ(Answer(node, 0x3A, 0x6F, {}), (TBytes{0xC3}));
  EXPECT_EQ(Answer(node, 0x3A, 0x6F, {}), (TBytes{0x00, 0x12, 0x34, 0x56, 0x78}));
  EXPECT_EQ(Answer(node, 0x3A, 0x62, {0x07, 0x34, 0x56, 0x78}), (TBytes{0x00, 0, 0, 0}));
}

TEST(ServedServer, FaultsOfOtherNodesDoNotApply) {
  TServedServer node(ServerFrom(std::string(kServer) + "[[fault]]\non = \"ipmi\"\nnode = 0\ncompletion_code = 0xC3\n"),
                     1);
  EXPECT_EQ(Answer(node, 0x3A, 0x6F, {}).front(), 0x00);
}

std::string ReasonWith(const std::string& addition, int node = 0) {
  return ReasonNotToServe(ServerFrom(kServer + addition), node).reason;
}

TEST(ReasonNotToServe, NoneForAnOrdinaryServer) {
  EXPECT_EQ(ReasonWith(""), "");
  EXPECT_EQ(ReasonWith("", 1), "");
  EXPECT_EQ(ReasonWith("[[fault]]\non = \"read\"\ntruncate = 12\n"), "");
  EXPECT_EQ(ReasonWith("[[fault]]\non = \"register\"\ntruncate = 9\n"), "");
  EXPECT_EQ(ReasonWith("[[fault]]\non = \"ipmi\"\ndelay_ms = 5\n"), "");
}

TEST(ReasonNotToServe, MissingNode) {
  EXPECT_EQ(ReasonWith("", 2), "there is no BMC node 2; the server has nodes 0 and 1");
  EXPECT_EQ(ReasonWith("", -1), "there is no BMC node -1; the server has nodes 0 and 1");
}

TEST(ReasonNotToServe, LostAnswers) {
  EXPECT_EQ(ReasonWith("[[fault]]\non = \"register\"\nlost = true\n"),
            "found lost = true, but ipmi_sim answers every request; expected another fault, such as completion_code = "
            "0xC3 (timeout)");
}

TEST(ReasonNotToServe, StorageAreaAnswersWithoutTheWholeManufacturerId) {
  for (const std::string on : {"read", "ipmi"}) {
    EXPECT_EQ(ReasonWith("[[fault]]\non = \"" + on + "\"\ntruncate = 11\n"),
              "found truncate = 11, but ipmi_sim puts the manufacturer id in every answer to a storage-area "
              "request; expected 12 or more, or on = \"register\" or \"timestamp\"");
  }
}

TEST(ReasonNotToServe, NoDriver) {
  EXPECT_EQ(
      ReasonNotToServe(ServerFrom("machine_type = \"1\"\n[ipmi]\ndriver_present = false\n[[bmc_node]]\n"), 0).reason,
      "with driver_present = false, no IPMI exchange takes place");
}

}  // namespace
}  // namespace tests
