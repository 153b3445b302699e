// The limits of a server file: each is reached, and exceeded by one.
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

const std::string kType = "machine_type = \"\"\n";

std::string Repeated(const std::string& text, std::size_t count) {
  std::string whole;
  for (std::size_t i = 0; i < count; ++i) whole += text;
  return whole;
}

/// The first line of the refusal.
std::string Refusal(const std::string& text) {
  const std::string message = MessageOf([&] { ServerFrom(text); });
  return message.substr(0, message.find('\n'));
}

TEST(ServerLimit, AppliesToNodes) {
  EXPECT_EQ(ServerFrom(kType + Repeated("[[bmc_node]]\n", 256)).nodes.size(), 256U);
  EXPECT_EQ(Refusal(kType + Repeated("[[bmc_node]]\n", 257)),
            "server.toml:258:1: error: found more than 256 [[bmc_node]] tables, expected at most 256");
}

TEST(ServerLimit, AppliesToTheAreasOfEachNode) {
  const auto areas = [](int count) {
    std::string text = "[[bmc_node]]\nstorage_area = [\n";
    for (int i = 0; i < count; ++i) text += "{ name = \"a" + std::to_string(i) + "\", data = \"00\" },\n";
    return text + "]\n";
  };
  const TServerFile server = ServerFrom(kType + areas(256) + areas(256));
  EXPECT_EQ(server.nodes.at(1).areas.size(), 256U);
  EXPECT_EQ(Refusal(kType + areas(257)),
            "server.toml:260:1: error: found more than 256 [[storage_area]] tables, expected at most 256");
}

TEST(ServerLimit, AppliesToServiceProcessors) {
  EXPECT_EQ(ServerFrom(kType + Repeated("[[dot.service_processor]]\nblock = \"00\"\n", 256)).dot->blocks.size(), 256U);
  EXPECT_EQ(Refusal(kType + Repeated("[[dot.service_processor]]\nblock = \"00\"\n", 257)),
            "server.toml:514:1: error: found more than 256 [[service_processor]] tables, expected at most 256");
}

TEST(ServerLimit, AppliesToTheKeysOfATable) {
  std::string text;
  for (int i = 0; i < 100; ++i) text += "k" + std::to_string(i) + " = 1\n";
  EXPECT_THAT(Refusal(text), testing::StartsWith("server.toml:1:1: error: found the unknown key \"k0\""));
  EXPECT_EQ(Refusal(text + "last = 1\n"),
            "server.toml:101:1: error: found more than 100 keys in one table, expected at most 100");
}

// The root table, machine_type, the array and 999,997 elements are a million.
TEST(ServerLimit, AppliesToValues) {
  const std::string start = kType + "fault = [\n";
  EXPECT_EQ(Refusal(start + Repeated("1,", 999'997) + "]"),
            "server.toml:3:1: error: found an integer, expected a [[fault]] table");
  EXPECT_EQ(Refusal(start + Repeated("1,", 999'998) + "]"),
            "server.toml:3:1999995: error: found more than 1000000 values in one file, expected at most 1000000");
}

TEST(ServerLimit, AppliesToTheFilesSize) {
  TMemoryReader reader;
  reader.Add("server.toml", kType + std::string((std::size_t{64} << 20U) - kType.size() + 1, '\n'));
  ExpectHostError(EFailure::kTooLarge, "server.toml is larger than the limit of 67108864 bytes",
                  [&] { ReadFrom("server.toml", reader); });
}

/// A folder of data files of any size, without content.
class TSizesOnly : public IDataFolder {
 public:
  TStoredBytes Open(const std::string& name, std::size_t /*limit*/) override {
    names.push_back(name);
    return {TDescriptor(), size};
  }
  std::size_t size = 0;
  std::vector<std::string> names;
};

std::string Areas(int count, const std::string& tail) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    if (i % 256 == 0) text += "[[bmc_node]]\n";
    text += "[[bmc_node.storage_area]]\nname = \"a" + std::to_string(i) + "\"\ndata_file = \"f" + std::to_string(i) +
            "\"\n";
  }
  return kType + text + tail;
}

TServerFile ReadWith(TSizesOnly& folder, const std::string& text) {
  TMemoryReader reader;
  reader.Add("server.toml", text);
  return ReadServerFile("server.toml", reader, folder);
}

TEST(ServerLimit, AppliesToDataFiles) {
  TSizesOnly folder;
  EXPECT_EQ(ReadWith(folder, Areas(512, "")).nodes.at(1).areas.size(), 256U);
  const std::string message = MessageOf([&] { ReadWith(folder, Areas(513, "")); });
  EXPECT_THAT(message, testing::StartsWith(
                           "server.toml:1543:13: error: found more than 512 data files, expected at most 512\n"));
}

// Two files of 256 MiB, less the text's size, make 512 MiB together with the text.
TEST(ServerLimit, AppliesToTheFileTogetherWithItsDataFiles) {
  const std::string text = Areas(2, "\n");
  ASSERT_EQ(text.size() % 2, 0U);
  TSizesOnly folder;
  folder.size = (std::size_t{256} << 20U) - text.size() / 2;
  EXPECT_EQ(ReadWith(folder, text).nodes.at(0).areas.at(1).data.Size(), folder.size);
  const std::string message = MessageOf([&] { ReadWith(folder, text + "\n"); });
  EXPECT_THAT(message,
              testing::StartsWith("server.toml:8:13: error: found 536870913 bytes in this file and its data files up "
                                  "to here, expected at most 536870912\n"));
}

TEST(ADataFile, CountsOnceWhereverItIsNamed) {
  TSizesOnly folder;
  folder.size = std::size_t{200} << 20U;
  std::string text = kType + "[[bmc_node]]\n";
  for (const char* const name : {"a", "b", "c", "d"}) {
    text += "[[bmc_node.storage_area]]\nname = \"" + std::string(name) + "\"\ndata_file = \"one\"\n";
  }
  EXPECT_EQ(ReadWith(folder, text).nodes.at(0).areas.size(), 4U);
  EXPECT_EQ(folder.names, std::vector<std::string>{"one"});
}

TEST(ADataFile, MustBeInItsServerFilesFolder) {
  for (const std::string name : {"/etc/passwd", "..", "../b", "a/../b", "a/.."}) {
    EXPECT_EQ(Refusal(kType + "[[dot.service_processor]]\nblock_file = \"" + name + "\""),
              "server.toml:3:14: error: found \"" + name +
                  "\", expected a file in this file's folder or below, by a "
                  "relative name without \"..\"");
  }
}

}  // namespace
}  // namespace tests
