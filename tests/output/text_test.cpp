// The building blocks of the output formats.
#include <gtest/gtest.h>

#include "host/output/completioncodes.h"
#include "host/output/hexdump.h"
#include "host/output/resulttext.h"
#include "host/output/tablelayout.h"
#include "tests/output/outputfixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

TEST(TextBuffer, PassesEverythingOnInOrderWhateverTheSizes) {
  TFlushedSink sink;
  TTextBuffer buffer(sink);
  const std::string large(TTextBuffer::kCapacity + 1, 'l');
  const std::string full(TTextBuffer::kCapacity - 1, 'f');
  buffer.Append("a");
  buffer.Append(large);
  buffer.Append(full);
  buffer.Append('1');
  buffer.Append('2');
  buffer.Append(full);
  buffer.Append("34");
  buffer.Flush();
  EXPECT_TRUE(sink.Text() == "a" + large + full + "12" + full + "34");
  EXPECT_EQ(sink.flushedAt.size(), 1U);
}

TEST(WrapText, CutsAtBlanksAndSplitsOnlyWordsLongerThanALine) {
  using TLines = std::vector<std::string_view>;
  EXPECT_EQ(WrapText("", 10), TLines{""});
  EXPECT_EQ(WrapText("0123456789", 10), TLines{"0123456789"});
  EXPECT_EQ(WrapText("0123456789a", 10), (TLines{"0123456789", "a"}));
  EXPECT_EQ(WrapText("012345678 a", 10), (TLines{"012345678", "a"}));
  EXPECT_EQ(WrapText("0123456789 a", 10), (TLines{"0123456789", "a"}));
  EXPECT_EQ(WrapText("0 23456789ab", 10), (TLines{"0", "23456789ab"}));
  EXPECT_EQ(WrapText("0 23456789abc", 10), (TLines{"0 23456789", "abc"}));  // the blank is too far back
  EXPECT_EQ(WrapText("012345 789abcdefgh", 10), (TLines{"012345", "789abcdefg", "h"}));
  EXPECT_EQ(WrapText(" 123456789a", 10), (TLines{" 123456789", "a"}));
  EXPECT_EQ(WrapText("0123456789   ", 10), TLines{"0123456789"});
  EXPECT_EQ(WrapText("\u6f22\u6f22", 1), (TLines{"\u6f22", "\u6f22"}));
}

TEST(HexDump, FollowsTheUsualLayout) {
  std::vector<std::uint8_t> bytes(17, 0x41);
  bytes[1] = 0x7F;
  bytes[16] = 0x00;
  std::string text;
  DumpBytes(bytes, 16, [&text](std::string_view line) { text += std::string(line) + "\n"; });
  EXPECT_EQ(text,
            "00000000  41 7f 41 41 41 41 41 41  41 41 41 41 41 41 41 41  |A.AAAAAAAAAAAAAA|\n"
            "00000010  00                                                |.|\n"
            "00000011\n");
}

TEST(HexDump, ShowsRepeatedLinesOnce) {
  std::vector<std::uint8_t> bytes(40, 0);
  bytes[32] = 1;
  std::string text;
  DumpBytes(bytes, 8, [&text](std::string_view line) { text += std::string(line) + "\n"; });
  EXPECT_EQ(text,
            "00000000  00 00 00 00 00 00 00 00  |........|\n"
            "*\n"
            "00000020  01 00 00 00 00 00 00 00  |........|\n"
            "00000028\n");
}

TEST(HexDump, GivesNoLineForNoBytes) {
  DumpBytes({}, 16, [](std::string_view) { FAIL(); });
}

TEST(CompletionCode, DescribesCodesInWords) {
  const std::vector<std::pair<int, std::string>> codes = {
      {0x00, "0x00 completed normally"},
      {0x01, "0x01 device-specific (OEM) error"},
      {0x7E, "0x7E device-specific (OEM) error"},
      {0x7F, "0x7F reserved completion code"},
      {0x80, "0x80 command-specific error"},
      {0xBE, "0xBE command-specific error"},
      {0xBF, "0xBF reserved completion code"},
      {0xC0, "0xC0 node busy"},
      {0xC1, "0xC1 invalid command"},
      {0xC3, "0xC3 timeout while processing command"},
      {0xC9, "0xC9 parameter out of range"},
      {0xCB, "0xCB requested sensor, data, or record not present"},
      {0xCE, "0xCE command response could not be provided"},
      {0xD3, "0xD3 destination unavailable"},
      {0xD5, "0xD5 command or request parameter not supported in present state"},
      {0xD6, "0xD6 parameter illegal: sub-function disabled or unavailable"},
      {0xD7, "0xD7 reserved completion code"},
      {0xFE, "0xFE reserved completion code"},
      {0xFF, "0xFF unspecified error"}};
  for (const auto& [code, words] : codes) EXPECT_EQ(DescribeCompletionCode(static_cast<std::uint8_t>(code)), words);
  EXPECT_EQ(DescribeCompletionCode(std::nullopt), "lost: no answer");
}

TEST(ElapsedText, GrowsWithTheTime) {
  EXPECT_EQ(ElapsedText(0), "0.000 s");
  EXPECT_EQ(ElapsedText(59999), "59.999 s");
  EXPECT_EQ(ElapsedText(60000), "1 min 0.0 s");
  EXPECT_EQ(ElapsedText(3599999), "59 min 59.9 s");
  EXPECT_EQ(ElapsedText(3723000), "1 h 2 min 3 s");
}

TEST(FormName, MatchesTheCommandLine) {
  EXPECT_EQ(FormByName("table"), EOutputForm::kTable);
  EXPECT_EQ(FormByName("json"), EOutputForm::kJson);
  EXPECT_EQ(FormByName("jsonl"), EOutputForm::kJsonl);
  EXPECT_EQ(FormByName("mof"), EOutputForm::kMof);
  EXPECT_EQ(FormByName("cimxml"), EOutputForm::kCimXml);
  EXPECT_EQ(FormByName("JSON"), std::nullopt);
  EXPECT_EQ(FormByName(""), std::nullopt);
}

}  // namespace
}  // namespace tests
