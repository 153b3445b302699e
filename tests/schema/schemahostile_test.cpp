// Broken and hostile schemas: whatever the bytes are, the result is diagnostics, in bounded time.
#include <gtest/gtest.h>

#include <random>

#include "host/base/hosterror.h"
#include "host/schema/schemacheck.h"
#include "tests/schema/mofsample.h"
#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

// Reads the text and checks that an unreadable schema has diagnostics, each with a place inside the text.
TSchemaResult ReadHostile(const std::string& text) {
  TSchemaResult result = ReadText(text);
  EXPECT_EQ(result.errors > 0, result.HasErrors());
  EXPECT_LE(result.diagnostics.size(), 202U);
  for (const TTextDiagnostic& diagnostic : result.diagnostics) {
    EXPECT_FALSE(diagnostic.message.empty());
    EXPECT_LE(diagnostic.location.column, text.size() + 1);
    EXPECT_LE(diagnostic.message.size(), 400U);
  }
  return result;
}

TEST(SchemaHostile, EveryTruncation) {
  const std::string sample = kMofSample;
  std::size_t clean = 0;
  for (std::size_t size = 0; size <= sample.size(); ++size) {
    if (ReadHostile(sample.substr(0, size)).diagnostics.empty()) ++clean;
  }
  EXPECT_GE(clean, 2U) << "the empty and the whole text at least";
  EXPECT_LT(clean, sample.size() / 4) << "most cuts are errors";
}

TEST(SchemaHostile, EveryByteLeftOut) {
  const std::string sample = kMofSample;
  for (std::size_t i = 0; i < sample.size(); ++i) ReadHostile(sample.substr(0, i) + sample.substr(i + 1));
}

TEST(SchemaHostile, BytesReplacedInsertedAndMoved) {
  const std::string sample = kMofSample;
  const std::string alphabet = "{}[]();:,=\"'\\/*$#-.0x9aZ \n\xC3\xFF";
  std::mt19937 random(20260131);
  const auto below = [&random](std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
  };
  for (int round = 0; round < 1500; ++round) {
    std::string text = sample;
    for (std::size_t change = below(6) + 1; change > 0; --change) {
      const std::size_t place = below(text.size());
      const std::size_t size = std::min(below(40) + 1, text.size() - place);
      switch (below(4)) {
        case 0: text[place] = alphabet[below(alphabet.size())]; break;
        case 1: text.insert(place, 1, alphabet[below(alphabet.size())]); break;
        case 2: text.insert(below(text.size()), text.substr(place, size)); break;
        default: text.erase(place, size);
      }
    }
    ReadHostile(text);
  }
}

TEST(SchemaHostile, OnlyBrackets) {
  for (const char* bracket : {"{", "[", "(", "}", "]", ")", "{}", "[]", "{[(", "class A {", "x{", "[Q{"}) {
    std::string text;
    while (text.size() < 100000) text += bracket;
    EXPECT_TRUE(ReadHostile(text).HasErrors()) << bracket;
  }
}

TEST(SchemaHostile, ManyErrorsTakeLittleMemory) {
  const TSchemaResult result = ReadHostile(std::string(1000000, '%'));
  EXPECT_EQ(result.errors, 1000000U);
  EXPECT_EQ(result.diagnostics.back().message, "and 999900 more errors");
}

TEST(SchemaHostile, LongListsAndTokens) {
  std::string values = "class A { uint8 a[] = {0";
  std::string pieces = "class B { string b = ";
  std::string comments = "/*";
  std::string properties = "class C { ";
  for (int i = 0; i < 100000; ++i) {
    values += ",1";
    pieces += "\"x\" ";
    comments += "**/ /*";
    properties += "string p" + std::to_string(i % 4000) + ";";
  }
  EXPECT_EQ(Shown(ReadHostile(values + "}; };")), "");
  EXPECT_EQ(PropertyOf(ReadHostile(pieces + "; };"), "B", "b").defaultValue.ToString(10).size(), 100000U);
  EXPECT_EQ(Shown(ReadHostile(comments + "*/")), "");
  EXPECT_EQ(ReadHostile(properties + "};").errors, 96000U) << "all but the first 4000 are there twice";
}

// Each class is declared before its superclass, in chains of 60.
TEST(SchemaHostile, ManyClassesInTheWorstOrder) {
  std::string text;
  for (int i = 19999; i >= 0; --i) {
    text += "class C" + std::to_string(i) + (i % 60 == 0 ? "" : " : C" + std::to_string(i - 1)) + " {string a;};\n";
  }
  const TSchemaResult result = ReadHostile(text);
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(result.cimNamespace->Classes().size(), 20000U);
  EXPECT_EQ(result.cimNamespace->Classes().front()->Name(), "C19999");
}

TEST(SchemaHostile, LongCircle) {
  std::string text;
  for (int i = 0; i < 10000; ++i) {
    text += "class C" + std::to_string(i) + " : C" + std::to_string((i + 1) % 10000) + " {};\n";
  }
  EXPECT_EQ(Messages(ReadHostile(text)),
            "1:12 the class 'C0' derives from itself (C0 : C1 : C2 : C3 : C4 : C5 : C6 : C7 : ... : C0)\n");
}

TEST(SchemaHostile, TheModelStaysWithinItsLimit) {
  std::string text = "class Base {";
  for (int i = 0; i < 4000; ++i) text += "string p" + std::to_string(i) + ";";
  text += "};\n";
  for (int i = 0; i < 2000; ++i) text += "class C" + std::to_string(i) + " : Base {};\n";
  const TSchemaResult result = ReadHostile(text);
  EXPECT_EQ(result.errors, 1U);
  EXPECT_EQ(result.diagnostics.at(0).message,
            "the classes have more than 4194304 properties and qualifiers in all, including inherited ones");
}

}  // namespace
}  // namespace tests
