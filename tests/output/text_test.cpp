// The building blocks of the output formats.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include "host/base/text.h"
#include "host/base/utf8.h"
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

const std::vector<char32_t> kBeyondAscii = {0x80,   0x85,   0x9B,   0x9F,   0x061C, 0x200E, 0x200F, 0x2028, 0x2029,
                                            0x202A, 0x202B, 0x202C, 0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069};

std::string Utf8(char32_t character) {
  std::string text;
  AppendUtf8(text, character);
  return text;
}

class UnsafeForms : public TOutputTest {
 protected:
  /// A document whose class, property and value all contain the text.
  std::string Form(EOutputForm form, const std::string& text) {
    const std::string name = "P" + text;
    const auto cimClass = Define("KROSG_" + text, "", {Property(name, TType::kString)});
    TResultSummary summary = Partial();
    summary.message = summary.reasons[0].message = "m" + text;
    return Written(form, {Make(cimClass, {{name, TCIMValue("v" + text)}})}, summary);
  }
};

TEST_F(UnsafeForms, NoFormExceptMofNamesContainsOneUnescaped) {
  for (const char32_t character : kBeyondAscii) {
    const std::string text = Utf8(character);
    for (const auto form : {EOutputForm::kTable, EOutputForm::kJson, EOutputForm::kJsonl, EOutputForm::kCimXml}) {
      EXPECT_EQ(Form(form, text).find(text), std::string::npos)
          << static_cast<int>(form) << " " << std::uint32_t{character};
    }
  }
}

TEST_F(UnsafeForms, UsesTheEscapesOfEachForm) {
  const std::string text = "\u009bA\u202e\u061cB";
  EXPECT_NE(Form(EOutputForm::kTable, text).find("  P\\x9bA\\u202e\\u061cB  v\\x9bA\\u202e\\u061cB\n"),
            std::string::npos);
  EXPECT_NE(Form(EOutputForm::kJson, text).find(R"({"P\u009bA\u202e\u061cB":"v\u009bA\u202e\u061cB"})"),
            std::string::npos);
  EXPECT_NE(Form(EOutputForm::kMof, text).find(R"( = "v\x009bA\x202e\x061cB";)"), std::string::npos);
  EXPECT_NE(Form(EOutputForm::kCimXml, text)
                .find(R"(NAME="P&#x9B;A&#x202E;&#x61C;B" TYPE="string"><VALUE>v&#x9B;A&#x202E;&#x61C;B</VALUE>)"),
            std::string::npos);
}

TEST_F(UnsafeForms, ReadsBackUnchanged) {
  std::string text = "\x7f";
  for (const char32_t character : kBeyondAscii) text += Utf8(character);
  const auto json = nlohmann::json::parse(Form(EOutputForm::kJson, text));
  EXPECT_EQ(json["instances"][0]["properties"]["P" + text], "v" + text);
  EXPECT_EQ(json["instances"][0]["class"], "KROSG_" + text);
  pugi::xml_document xml;
  ASSERT_TRUE(xml.load_string(Form(EOutputForm::kCimXml, text).c_str()));
  const pugi::xml_node property = xml.select_node("//PROPERTY").node();
  EXPECT_EQ(property.child_value("VALUE"), "v" + text);
  EXPECT_EQ(property.attribute("NAME").value(), "P" + text);
}

}  // namespace
}  // namespace tests
