// Characters that could disturb a terminal or mislead a reader, in every format.
#include "host/base/unsafetext.h"

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include "host/base/utf8.h"
#include "tests/output/outputfixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

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
      EXPECT_EQ(Form(form, text).find(text), std::string::npos) << static_cast<int>(form) << " " << std::uint32_t{character};
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
