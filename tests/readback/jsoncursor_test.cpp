#include "host/readback/jsoncursor.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/readback/resulttext.h"
#include "tests/support/expectfailure.h"

namespace tests {

namespace {

TJsonCursor Cursor(const std::string& text) { return {"t.json", Stored(text)}; }

std::string Refusal(const std::string& text) {
  return MessageOf([&text] {
    TJsonCursor json = Cursor(text);
    json.Skip();
    if (!json.IsAtEnd()) json.FailAt(json.Place(), "more text");
  });
}

TEST(JsonCursor, ReadsEachKindOfValue) {
  TJsonCursor json = Cursor(R"( [ "a" , -12 , 1.5e1, true,false , null ,[],{}] )");
  json.EnterArray("an array");
  ASSERT_TRUE(json.NextElement());
  EXPECT_EQ(json.Text("a string"), "a");
  ASSERT_TRUE(json.NextElement());
  EXPECT_EQ(json.Signed(-100, 100), -12);
  ASSERT_TRUE(json.NextElement());
  const TJsonNumber real = json.Number("a number");
  EXPECT_FALSE(real.isInteger);
  EXPECT_EQ(real.real, 15.0);
  ASSERT_TRUE(json.NextElement());
  EXPECT_TRUE(json.Boolean());
  ASSERT_TRUE(json.NextElement());
  EXPECT_FALSE(json.Boolean());
  ASSERT_TRUE(json.NextElement());
  json.Null();
  ASSERT_TRUE(json.NextElement());
  EXPECT_EQ(json.Kind(), TJsonCursor::EKind::kArray);
  json.Skip();
  ASSERT_TRUE(json.NextElement());
  json.Skip();
  EXPECT_FALSE(json.NextElement());
  EXPECT_TRUE(json.IsAtEnd());
}

TEST(JsonCursor, ReadsMembersInTheirOrder) {
  TJsonCursor json = Cursor("{\"a\"\n:1,\"b\":2}");
  std::string_view name;
  json.EnterObject("an object");
  ASSERT_TRUE(json.NextMember(name));
  EXPECT_EQ(name, "a");
  EXPECT_EQ(json.Unsigned(0, 9), 1U);
  ASSERT_TRUE(json.NextMember(name));
  EXPECT_EQ(name, "b");
  json.Skip();
  EXPECT_FALSE(json.NextMember(name));
}

TEST(JsonCursor, DecodesEscapes) {
  EXPECT_EQ(Cursor(R"("\"\\\/\b\f\n\r\t\u0041\u00e9\ud83d\ude00")").Text("a string"),
            "\"\\/\b\f\n\r\tA\xC3\xA9\xF0\x9F\x98\x80");
  EXPECT_EQ(Cursor(R"("\u0000")").Text("a string"), std::string_view("\0", 1));
}

TEST(JsonCursor, KeepsIntegersOfUpTo64Bits) {
  EXPECT_EQ(Cursor("[18446744073709551615]").Kind(), TJsonCursor::EKind::kArray);
  for (const auto& [text, magnitude, isNegative] : std::vector<std::tuple<std::string, std::uint64_t, bool>>{
           {"18446744073709551615 ", 18446744073709551615U, false},
           {"9999999999999999999 ", 9999999999999999999U, false},
           {"-9223372036854775808 ", 9223372036854775808U, true},
           {"0 ", 0, false},
           {"-0 ", 0, true}}) {
    const TJsonNumber number = Cursor(text).Number("a number");
    EXPECT_TRUE(number.isInteger) << text;
    EXPECT_EQ(number.magnitude, magnitude) << text;
    EXPECT_EQ(number.isNegative, isNegative) << text;
  }
  EXPECT_FALSE(Cursor("18446744073709551616 ").Number("a number").isInteger);
  EXPECT_FALSE(Cursor("-9223372036854775809 ").Number("a number").isInteger);
}

TEST(JsonCursor, RefusesWhatIsOutOfRange) {
  EXPECT_EQ(MessageOf([] { Cursor("7 ").Unsigned(0, 6); }),
            "t.json:1:1: error: found 7, expected an integer from 0 to 6\n  7 \n  ^\n");
  EXPECT_EQ(MessageOf([] { Cursor("-1 ").Unsigned(0, 6); }),
            "t.json:1:1: error: found -1, expected an integer from 0 to 6\n  -1 \n  ^\n");
  EXPECT_EQ(MessageOf([] { Cursor("18446744073709551615 ").Signed(-1, 1); }),
            "t.json:1:1: error: found 18446744073709551615, expected an integer from -1 to 1\n  18446744073709551615 "
            "\n  ^\n");
  EXPECT_EQ(MessageOf([] { Cursor("{} ").Signed(-1, 1); }),
            "t.json:1:1: error: found an object, expected an integer from -1 to 1\n  {} \n  ^\n");
}

TEST(JsonCursor, NamesWhatIsWrongAtItsPlace) {
  for (const auto& [text, message] : std::vector<std::pair<std::string, std::string>>{
           {"{\n  \"a\": tru }", "t.json:2:11: error: found \" \", expected true\n    \"a\": tru }\n            ^\n"},
           {"[1,]", "t.json:1:4: error: found \"]\", expected a value after the comma\n  [1,]\n     ^\n"},
           {"[1 2]", "t.json:1:4: error: found a number, expected a comma or the array's end\n  [1 2]\n     ^\n"},
           {"{a:1}", "t.json:1:2: error: found \"a\", expected a member's name in quotes\n  {a:1}\n   ^\n"},
           {"{\"a\"}",
            "t.json:1:5: error: found \"}\", expected a colon after the member's name\n  {\"a\"}\n      ^\n"},
           {"[01]", "t.json:1:2: error: found \"01\", expected a number as JSON writes it\n  [01]\n   ^\n"},
           {"[1.]", "t.json:1:2: error: found \"1.\", expected a number as JSON writes it\n  [1.]\n   ^\n"},
           {"[-]", "t.json:1:2: error: found \"-\", expected a number as JSON writes it\n  [-]\n   ^\n"},
           {"[+1]", "t.json:1:2: error: found \"+\", expected a value\n  [+1]\n   ^\n"},
           {R"(["\x"])",
            "t.json:1:4: error: found \"x\", expected an escape: one of \"\\/bfnrtu\n  [\"\\x\"]\n     ^\n"},
           {R"(["\u12g4"])",
            "t.json:1:7: error: found \"g\", expected four hexadecimal digits after \\u\n  [\"\\u12g4\"]\n        ^\n"},
           {R"(["\ud800x"])",
            "t.json:1:2: error: found half of a surrogate pair in a string, expected both halves\n  "
            "[\"\\ud800x\"]\n   ^\n"},
           {"[\"\x01\"]",
            "t.json:1:3: error: found a control character in a string, expected an escape\n  [\"?\"]\n    ^\n"},
           {"[1] x", "t.json:1:5: error: more text\n  [1] x\n      ^\n"}}) {
    EXPECT_EQ(Refusal(text), message) << text;
  }
  EXPECT_EQ(Refusal("[\"\xC3(\"]").substr(0, 53), "t.json:1:2: error: found a string that is not UTF-8\n ");
}

TEST(JsonCursor, SaysWhereATextEndsTooEarly) {
  const std::string text = "[{\"a\":[1,\"x\\n\xC3\xA9\",true,null,-1.5e3]}]";
  for (std::size_t size = 0; size < text.size(); ++size) {
    TJsonCursor json = Cursor(text.substr(0, size));
    EXPECT_THROW(json.Skip(), TEndOfJson) << size;
  }
  EXPECT_NO_THROW(Cursor(text).Skip());
}

TEST(JsonCursor, LimitsTheDepth) {
  const auto nested = [](int depth) {
    return std::string(static_cast<std::size_t>(depth), '[') + std::string(static_cast<std::size_t>(depth), ']');
  };
  EXPECT_NO_THROW(Cursor(nested(32)).Skip());
  EXPECT_EQ(Refusal(nested(33)).substr(0, 82),
            "t.json:1:33: error: found an array, expected values nested at most 32 deep\n  [[[[[");
}

TEST(JsonCursor, ReadsStringsAndNumbersAcrossItsBuffer) {
  // The buffer is 256 KiB: each of these lies across its end for some length of the padding.
  for (std::size_t padding = 262144 - 64; padding < 262144 + 4; ++padding) {
    TJsonCursor json =
        Cursor("[" + std::string(padding, ' ') + R"("ab\u00e9c",1234567,{"name":true,"other" : [ "\"]" ]},[["\\"]]])");
    std::string_view name;
    json.EnterArray("an array");
    ASSERT_TRUE(json.NextElement());
    EXPECT_EQ(json.Text("a string"),
              "ab\xC3\xA9"
              "c");
    ASSERT_TRUE(json.NextElement());
    EXPECT_EQ(json.Unsigned(0, 9999999), 1234567U);
    ASSERT_TRUE(json.NextElement());
    json.EnterObject("an object");
    ASSERT_TRUE(json.NextMember(name));
    EXPECT_EQ(name, "name");
    EXPECT_TRUE(json.Boolean());
    ASSERT_TRUE(json.NextMember(name));
    EXPECT_EQ(name, "other");
    json.SkipChecked();
    EXPECT_FALSE(json.NextMember(name));
    ASSERT_TRUE(json.NextElement());
    json.SkipChecked();
    EXPECT_FALSE(json.NextElement());
  }
}

TEST(JsonCursor, ReadsAgainFromAPlace) {
  TJsonCursor json = Cursor("[1,\n2]");
  json.EnterArray("an array");
  json.NextElement();
  json.Skip();
  json.NextElement();
  const TJsonPlace second = json.Place();
  json.Skip();
  json.GoTo(second);
  EXPECT_EQ(json.Unsigned(0, 9), 2U);
  json.GoTo(second);
  EXPECT_EQ(MessageOf([&json] { json.Text("a string"); }),
            "t.json:2:1: error: found a number, expected a string\n  2]\n  ^\n");
}

TEST(JsonObject, TakesEachKnownMemberOnce) {
  const std::vector<std::string_view> names = {"alpha", "beta"};
  const auto read = [&names](const std::string& text) {
    TJsonCursor json = Cursor(text);
    TJsonObject object(json, names, "a thing");
    for (auto name = object.Next(); !name.empty(); name = object.Next()) json.Skip();
    object.Require({"alpha"});
  };
  EXPECT_NO_THROW(read(R"({"beta":1,"alpha":2})"));
  EXPECT_EQ(MessageOf([&read] { read(R"({"alpha":1,"alpha":2})"); }),
            "t.json:1:12: error: found a second \"alpha\", expected each member once\n  "
            "{\"alpha\":1,\"alpha\":2}\n             ^\n");
  EXPECT_EQ(
      MessageOf([&read] { read(R"({"alpa":1})"); }),
      "t.json:1:2: error: found the unknown member \"alpa\" of a thing, expected one of alpha, beta; did you mean "
      "\"alpha\"?\n  {\"alpa\":1}\n   ^\n");
  EXPECT_EQ(MessageOf([&read] { read(R"({"beta":1})"); }),
            "t.json:1:1: error: found no \"alpha\", expected it in a thing\n  {\"beta\":1}\n  ^\n");
}

}  // namespace

}  // namespace tests
