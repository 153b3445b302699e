// Arbitrary text as the qualifiers of a register: each line is one string, and its first character says of which. An
// upper-case letter before the lines makes the register narrow. The byte 0x1F stands for a line end inside a string.
#include <algorithm>
#include <map>
#include <sstream>

#include "host/meaning/compile.h"
#include "host/meaning/field.h"
#include "host/model/cimnamespace.h"
#include "tests/support/classbuilder.h"
#include "tests/support/require.h"

using namespace tests;

static const std::map<char, std::string> kNames = {{'f', "Fields"},    {'v', "Evidence"}, {'b', "BitNumbering"},
                                                   {'r', "Role"},      {'s', "Severity"}, {'m', "MaskedBy"},
                                                   {'e', "EnabledBy"}, {'x', "FatalBy"},  {'1', "FirstErrorIn"}};

static void CheckFields(const TRegisterMeaning& meaning, std::uint64_t value) {
  std::uint64_t described = 0;
  for (const TFieldMeaning& field : meaning.fields) {
    Require(field.bits.low <= field.bits.high && field.bits.high < meaning.width && !field.name.empty());
    Require((described >> field.bits.low) == 0);  // in order, and without a bit of another
    described |= MaskOf(field.bits);
    for (std::size_t i = 0; i < field.texts.size(); ++i) {
      Require(field.texts[i].first <= field.texts[i].last &&
              (i == 0 || field.texts[i - 1].last < field.texts[i].first));
      Require(field.texts[i].last <= (described >> field.bits.low) && !field.texts[i].text.empty());
    }
  }
  std::uint64_t seen = 0;
  for (const TField& field : DecodeFields(meaning, value)) seen |= field.value << field.bits.low;
  Require(seen == value || (meaning.fields.empty() && meaning.role != ERole::kErrors));
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream lines(std::string(data, data + size));
  const bool isNarrow = lines.peek() >= 'A' && lines.peek() <= 'Z' && lines.get() > 0;
  std::map<std::string, std::vector<std::string>> texts;
  for (std::string line; std::getline(lines, line);) {
    const auto name = kNames.find(line.empty() ? '\0' : line[0]);
    std::replace(line.begin(), line.end(), '\x1F', '\n');
    if (name != kNames.end()) texts[name->second].push_back(line.substr(1));
  }
  TQualifiers qualifiers;
  for (const auto& [name, strings] : texts) {
    const bool isArray = name == "Fields" || name == "Evidence";
    qualifiers.emplace_back(name, isArray ? Strings(strings) : TCIMValue(strings[0]));
  }
  const auto cimClass = TNamespace::Create()->AddClass(TClassBuilder("C").Bytes("A", qualifiers).Bytes("Mask"));
  std::vector<TMeaningSlip> slips;
  const TClassMeaning meaning = CompileMeaning(*cimClass, {{0, isNarrow}, {1, false}}, &slips);
  for (const TMeaningSlip& slip : slips)
    Require(!slip.offset || *slip.offset <= texts.at(slip.qualifier->Name()).at(slip.element).size());
  const auto& first = meaning.registers[0].firstError;
  Require(!first || first->bits.high < meaning.registers.at(first->registerIndex).width);
  CheckFields(meaning.registers[0], isNarrow ? 0xFEDCBA98 : 0xFEDCBA9876543210);
  return 0;
}
