#include "host/bmc/serve/servedrecording.h"

#include "host/bmc/serve/servedfile.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

std::string Head(int nodes = 1, bool driver = true) {
  return R"({"format":"velhost-recording","version":1,"machine_type":"6203","started":"2026-01-31T12:00:00Z",)"
         R"("utc_offset_minutes":0,"discovery":{"bmc_nodes":)" +
         std::to_string(nodes) + ",\"ipmi_driver\":" + (driver ? "true" : "false") +
         ",\"dot_command\":true,\"sp_comm\":true,\"service_processors\":1}}\n";
}
std::string Ipmi(const std::string& request, const std::string& response, int length, int node = 0) {
  return R"({"kind":"ipmi","node":)" + std::to_string(node) + R"(,"request":")" + request +
         R"(","ok":true,"response":")" + response + R"(","length":)" + std::to_string(length) + ",\"us\":1}\n";
}
const std::string kTime = Ipmi("01 20 3a 00 6f", "01 20 3a 00 00 04 00 00 00 12 34", 13);
const std::string kOtherTime = Ipmi("01 20 3a 00 6f", "01 20 3a 00 00 04 00 00 00 56 78 9a bc", 13);
const std::string kRegister = Ipmi("01 20 3a 00 62 04 00 00 00 07 34 56 78",
                                   "01 20 3a 00 00 0e 00 00 00 a1 a2 a3 a4 a5 a6 01 02 03 04 05 06 07", 23);
const std::string kDot =
    R"({"kind":"dot","sp":0,"command":2,"identifier":"0e 06","parameters":"00 00 00 10","ok":true,"response":"01",)"
    "\"length\":4096,\"us\":1}\n";
const std::string kOpen = "01 20 2e 00 90 13 00 00 00 39 30 00 01 01 00 00 00 00 00 00 00 63 70 75 5f 65 72 72";
const std::string kRead = "01 20 2e 00 90 0e 00 00 00 39 30 00 02 05 00 00 00 00 00 00 00 0a";

constexpr std::size_t kRoom = 36;  // the capacity of ipmi_sim's answers

class TServed : public TServedRecording {
 public:
  explicit TServed(const std::string& text, int node = 0) : TServedRecording("r.jsonl", Stored(text), nullptr, node) {}
  TBytes Ask(int networkFunction, int command, const TBytes& data, std::size_t capacity = kRoom) {
    return Answer(static_cast<std::uint8_t>(networkFunction), 0, static_cast<std::uint8_t>(command), data, capacity);
  }
};

TEST(ServedRecording, AnswersWithTheRecordedBytesInAnyOrder) {
  TServed node(Head() + kTime + kRegister + kDot);
  EXPECT_EQ(node.Ask(0x3A, 0x62, {0x07, 0x34, 0x56, 0x78}),
            (TBytes{0x00, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x00}));
  EXPECT_EQ(node.Ask(0x3A, 0x6F, {}), (TBytes{0x00, 0x12, 0x34, 0x00, 0x00}));
}

TEST(ServedRecording, AnswersAsAnImageDoes) {
  TServed node(Head() + kTime + Ipmi(kOpen, "01 20 2e 00 00 07 00 00 00 39 30 00 05", 16) + kOtherTime +
               Ipmi(kRead, "01 20 2e 00 00 07 00 00 00 39 30 00 02 00 0a ff", 16) +
               Ipmi(kOpen, "01 20 2e 00 00 07 00 00 00 39 30 00 06", 16));
  EXPECT_EQ(node.Ask(0x3A, 0x6F, {}), (TBytes{0x00, 0x12, 0x34, 0x00, 0x00}));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(node.Ask(0x3A, 0x6F, {}), (TBytes{0x00, 0x56, 0x78, 0x9A, 0xBC}));
  const TBytes open = {0x39, 0x30, 0x00, 0x01, 0x01, 0, 0, 0, 0, 0, 0, 0, 'c', 'p', 'u', '_', 'e', 'r', 'r'};
  EXPECT_EQ(node.Ask(0x2E, 0x90, open), (TBytes{0x00, 0x39, 0x30, 0x00, 0x05, 0, 0, 0}));
  EXPECT_EQ(node.Ask(0x2E, 0x90, open), (TBytes{0x00, 0x39, 0x30, 0x00, 0x06, 0, 0, 0}));
  EXPECT_EQ(node.Ask(0x2E, 0x90, {0x39, 0x30, 0x00, 0x02, 6, 0, 0, 0, 0, 0, 0, 0, 10, 0}),
            (TBytes{0x00, 0x39, 0x30, 0x00, 0x02, 0x00, 0x0A, 0xFF}));
}

TEST(ServedRecording, IsTheRequestedNode) {
  TServed node(Head(2) + kTime + Ipmi("01 20 3a 00 6f", "01 20 3a 00 cb", 9, 1), 1);
  EXPECT_EQ(node.Ask(0x3A, 0x6F, {}), (TBytes{0xCB}));
}

TEST(ServedRecording, DoesNotHaveWhatWasNotRecorded) {
  TServed node(Head(2) + kOtherTime, 1);
  EXPECT_EQ(node.Ask(0x3A, 0x6F, {}), (TBytes{0xCB}));
  EXPECT_EQ(node.Ask(0x3A, 0x62, {0x07, 0x34, 0x56, 0x78}), (TBytes{0xCB}));
  EXPECT_EQ(node.Ask(0x3A, 0x62, {}), (TBytes{0xCB}));
  EXPECT_EQ(node.Ask(0x2E, 0x90, {0x39, 0x30, 0x00, 0x06, 'x'}), (TBytes{0xCB, 0x39, 0x30, 0x00}));
  EXPECT_EQ(node.Ask(0x2E, 0x90, {0x39, 0x30, 0x00, 0x02, 5, 0, 0, 0, 0, 0, 0, 0, 10, 0}),
            (TBytes{0xCB, 0x39, 0x30, 0x00}));
}

TEST(ServedRecording, RefusesUnknownCommands) {
  TServed node(Head() + kTime);
  EXPECT_EQ(node.Ask(0x3A, 0x63, {}), (TBytes{0xC1}));
  EXPECT_EQ(node.Ask(0x06, 0x01, {}), (TBytes{0xC1}));
  EXPECT_EQ(node.Ask(0x2E, 0x90, {0x39, 0x30, 0x00, 0x03}), (TBytes{0xC1, 0x39, 0x30, 0x00}));
  EXPECT_EQ(node.Ask(0x2E, 0x91, {0x01, 0x02, 0x03}), (TBytes{0xC1, 0x01, 0x02, 0x03}));
}

TEST(ServedRecording, AnswerFitsAnyCapacity) {
  for (std::size_t room = 0; room < 20; ++room) {
    TServed node(Head() + kRegister);
    const TBytes answer = node.Ask(0x3A, 0x62, {0x07, 0x34, 0x56, 0x78}, room);
    EXPECT_EQ(answer.size(), std::max<std::size_t>(1, std::min<std::size_t>(room, 15))) << room;
  }
}

TEST(ServedRecording, CutRecordingAnswersUpToItsLastWholeLine) {
  TServed node(Head() + kTime + kOtherTime.substr(0, kOtherTime.size() - 1));
  EXPECT_TRUE(node.Recording().CutWarning());
  for (int i = 0; i < 2; ++i) EXPECT_EQ(node.Ask(0x3A, 0x6F, {}), (TBytes{0x00, 0x12, 0x34, 0x00, 0x00}));
}

std::string Refusal(const std::string& text, int node = 0, EFailure kind = EFailure::kMalformed) {
  return MessageOf([&] { TServed(text, node); }, kind);
}

TEST(ServedRecording, RefusesARecordingInWhichAnAnswerWasLost) {
  const std::string message =
      "r.jsonl:3:1: error: found an exchange without an answer, but ipmi_sim answers every request; expected a "
      "recording in which none was lost";
  EXPECT_EQ(Refusal(Head() + kTime + "{\"kind\":\"ipmi\",\"node\":0,\"request\":\"01\",\"ok\":false,\"us\":1}\n"),
            message);
  EXPECT_EQ(Refusal(Head() + kTime + "{\"kind\":\"ipmi\",\"node\":1,\"request\":\"01\",\"ok\":false,\"us\":1}\n"),
            message);
  EXPECT_EQ(Refusal(Head() + kTime +
                    "{\"kind\":\"dot\",\"sp\":0,\"command\":2,\"identifier\":\"\",\"parameters\":\"\",\"ok\":false,"
                    "\"us\":1}\n" +
                    "{\"kind\":\"ipmi\",\"node\":1,\"request\":\"01\",\"ok\":false,\"us\":1}\n"),
            message);
}

TEST(ServedRecording, RefusesAnAnswerWithoutTheWholeManufacturerId) {
  const std::string message =
      "r.jsonl:2:1: error: found an answer without the manufacturer id, but ipmi_sim puts it in every answer to an "
      "OEM/Group request; expected data that begin with 39 30 00";
  EXPECT_EQ(Refusal(Head() + Ipmi(kOpen, "01 20 2e 00 cb", 9)), message);
  EXPECT_EQ(Refusal(Head() + Ipmi(kOpen, "01 20 2e 00 cb 02 00 00 00 39 30", 11)), message);
  EXPECT_EQ(Refusal(Head() + Ipmi(kOpen, "01 20 2e 00 cb 03 00 00 00 39 30 01", 12)), message);
  EXPECT_NO_THROW(TServed(Head() + Ipmi(kOpen, "01 20 2e 00 cb 03 00 00 00 39 30", 12)));
  EXPECT_NO_THROW(TServed(Head() + Ipmi(kOpen, "01 20 2e 00 cb", 9, 1)));
}

TEST(ServedRecording, RefusesAnAnswerWithTwoLengths) {
  EXPECT_EQ(Refusal(Head() + Ipmi("01 20 3a 00 6f", "01 20 3a 00 00 04 00 00 00 12 34 56 78", 12)),
            "r.jsonl:2:1: error: found a length of 12 with 4 bytes of data in byte 5, but over IPMI an answer has only "
            "one length; expected 13");
  EXPECT_EQ(Refusal(Head() + Ipmi("01 20 3a 00 6f", "01 20 3a 00 00 f8", 256)),
            "r.jsonl:2:1: error: found a length of 256 with 248 bytes of data in byte 5, but over IPMI an answer has "
            "only one length; expected 257");
  EXPECT_NO_THROW(TServed(Head() + Ipmi("01 20 3a 00 6f", "01 20 3a 00 00 f7", 256)));
}

TEST(ServedRecording, RefusesAServerWithoutTheNodeOrTheDriver) {
  EXPECT_EQ(Refusal(Head(2) + kTime, 2, EFailure::kInvalidArgument),
            "r.jsonl: there is no BMC node 2; the server has nodes 0 and 1");
  EXPECT_EQ(Refusal(Head(1) + kTime, -1, EFailure::kInvalidArgument),
            "r.jsonl: there is no BMC node -1; the server has node 0 alone");
  EXPECT_EQ(Refusal(Head().substr(0, 50), 0, EFailure::kInvalidArgument),
            "r.jsonl: there is no BMC node 0; the server has none");
  EXPECT_EQ(Refusal(Head(1, false)),
            "r.jsonl: the recorded server has no IPMI driver, so no IPMI exchange takes place");
}

TEST(ServedRecording, RefusesAMalformedLine) {
  EXPECT_THAT(Refusal(Head() + "{}\n"), testing::StartsWith("r.jsonl:2:1: error: found no \"kind\""));
}

TEST(ServedFile, IsOpenedByItsContent) {
  TMemoryReader reader;
  reader.Add("server", "machine_type = \"6203\"\n[[bmc_node]]\ntimestamp = \"12 34 56 78\"\n");
  reader.Add("recording.toml", Head() + kOtherTime);
  reader.Add("empty", "");
  EXPECT_FALSE(IsRecording("server", reader));
  EXPECT_TRUE(IsRecording("recording.toml", reader));
  EXPECT_FALSE(IsRecording("empty", reader));
  const auto answer = [&reader](const std::string& path) {
    return OpenServedNode(path, 0, reader)->Answer(0x3A, 0, 0x6F, {}, kRoom);
  };
  EXPECT_EQ(answer("server"), (TBytes{0x00, 0x12, 0x34, 0x56, 0x78}));
  EXPECT_EQ(answer("recording.toml"), (TBytes{0x00, 0x56, 0x78, 0x9A, 0xBC}));
  EXPECT_EQ(MessageOf([&] { OpenServedNode("server", 1, reader); }, EFailure::kInvalidArgument),
            "server: there is no BMC node 1; the server has node 0 alone");
}

}  // namespace
}  // namespace tests
