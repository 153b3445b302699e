// How a class and its registers are described, as text and as JSON.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/velhost/describe/classdescription.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using CollectorProfile::EPath;

constexpr std::size_t kErrors = 0;
constexpr std::size_t kMask = 1;
constexpr std::size_t kPointer = 2;
constexpr std::size_t kLog = 3;
constexpr std::size_t kCount = 4;

// A bridge with an errors register of 32 bits, the registers that it refers to, one of them with two addresses, and a
// counter.
class ClassDescription : public testing::Test {
 protected:
  ClassDescription() : schema_(TNamespace::Create()) {
    schema_->AddClass(TClassBuilder("Top").Text("InstanceID", {{"Description", TCIMValue("Identifies it.")}}));
    AddClass();
    AddMeaning();
  }

  void AddClass() {
    const auto described = [](const char* text) { return TQualifiers{{"Description", TCIMValue(text)}}; };
    schema_->AddClass(TClassBuilder("Bridge", "Top")
                          .Machines({"6203", "6204"})
                          .With("Description", TCIMValue("A bridge.\nIt has \x1b[31mports."))
                          .Bytes("Errors", described("What went wrong."))
                          .Bytes("Mask")
                          .Bytes("Pointer")
                          .Bytes("Log")
                          .Bytes("Count"));
    TPlannedClass& planned = description_.planned;
    planned.cimClass = schema_->FindClass("Bridge");
    planned.path = EPath::kR8;
    planned.turn = ETurn::kPlanned;
    planned.isBridge = true;
    planned.instances = 2;
    for (std::size_t i = 0; i < 5; ++i) planned.registers.push_back({i + 1, {0x2D0100}, 0, i < 2});
    planned.registers[kLog].addresses = {0x000001, 0xFFFFFF};
    description_.machineType = "6203";
    description_.servedBy = "6203";
  }
  void AddMeaning() {
    TClassMeaning meaning;
    for (const ERole role : {ERole::kErrors, ERole::kMask, ERole::kFirstError, ERole::kLog, ERole::kCounter}) {
      TRegisterMeaning& one = meaning.registers.emplace_back();
      one.property = meaning.registers.size();
      one.role = role;
    }
    meaning.registers[kMask].width = 32;
    meaning.registers[kCount].unit = "errors";
    TRegisterMeaning& errors = meaning.registers[kErrors];
    errors.width = 32;
    errors.isMsb0 = true;
    errors.fields = {{{2, 0}, false, "Kind", {{1, 1, "parity"}, {2, 7, "reserved"}}},
                     {{15, 4}, true, "Source\x1b[2J", {{0xAB, 0xAB, "port 1"}}}};
    errors.maskedBy = kMask;
    errors.fatalBy = kMask;
    errors.firstError = {kPointer, {5, 0}};
    errors.evidence = {kLog};
    meaning_ = meaning;
  }

  void Refresh() { description_.planned.meaning = std::make_shared<const TClassMeaning>(meaning_); }
  std::string Text(int width) {
    Refresh();
    TStringSink sink;
    WriteDescriptionAsText(description_, sink, {width, false});
    return sink.Text();
  }
  std::string Json() {
    Refresh();
    return DescriptionAsJson(description_);
  }
  // The line of the text that begins with the label.
  std::string Row(const std::string& label) {
    const std::string text = Text(200);
    const std::size_t at = text.find("\n  " + label);
    if (at == std::string::npos) return "none";
    return text.substr(at + 3, text.find('\n', at + 1) - at - 3);
  }

  boost::shared_ptr<TNamespace> schema_;
  TClassDescription description_;
  TClassMeaning meaning_;
};

TEST_F(ClassDescription, OfAClassHasItsRegistersAndTheirFieldsByName) {
  EXPECT_EQ(Text(80), R"(Bridge
  A bridge.
  It has \x1b[31mports.

  Superclass     Top
  Path           R8: registers read one by one over IPMI
  Machine types  "6203", "6204"
  Served         yes, on machine type 6203
  Instances      2, chips 1 to 2

Registers
  Errors   0x2D0100, 32 bits, errors, msb0
    What went wrong.
    Severity       fatal where Mask has a 1, else error
    Masked by      Mask, where it has a 1
    First error    the bit whose number is in Pointer 5:0
    Evidence       Log, of the first error
    Fields         29:31 Kind; 16:27 Source\x1b[2J

  Mask     0x2D0100, 32 bits, mask

  Pointer  0x2D0100, 64 bits, first-error

  Log      0x000001, 0xFFFFFF, 64 bits, log

  Count    0x2D0100, 64 bits, counter in errors

Other properties
  InstanceID
)");
}

TEST_F(ClassDescription, FitsANarrowTerminal) {
  const std::string narrow = Text(40);
  EXPECT_EQ(narrow.substr(0, narrow.find("\n  Mask")), R"(Bridge
  A bridge.
  It has \x1b[31mports.

  Superclass     Top
  Path           R8: registers read one
                 by one over IPMI
  Machine types  "6203", "6204"
  Served         yes, on machine type
                 6203
  Instances      2, chips 1 to 2

Registers
  Errors   0x2D0100, 32 bits, errors,
           msb0
    What went wrong.
    Severity       fatal where Mask has
                   a 1, else error
    Masked by      Mask, where it has a
                   1
    First error    the bit whose number
                   is in Pointer 5:0
    Evidence       Log, of the first
                   error
    Fields         29:31 Kind;
                   16:27 Source\x1b[2J
)");
  EXPECT_NE(Text(200).find("    Fields         29:31 Kind; 16:27 Source\\x1b[2J\n"), std::string::npos);
}

TEST_F(ClassDescription, OfARegisterHasTheTextsOfItsValues) {
  description_.property = 1;
  EXPECT_EQ(Text(80), R"(Bridge.Errors
  What went wrong.

  Address          0x2D0100
  Width            32 bits
  Numbering        msb0: bit 0 is the most significant
  Role             errors
  Severity         fatal where Mask has a 1, else error
  Masked by        Mask, where it has a 1
  First error      the bit whose number is in Pointer 5:0
  Evidence         Log, of the first error
  Served           yes, on machine type 6203

Fields
  29:31  Kind
           1    parity
           2-7  reserved
  16:27  Source\x1b[2J (in hex)
           0xAB  port 1
)");
}

TEST_F(ClassDescription, OfARegisterNamesTheRegistersThatReferToIt) {
  description_.property = 2;
  EXPECT_EQ(Row("Masks"), "Masks            Errors");
  EXPECT_EQ(Row("Fatal bits of"), "Fatal bits of    Errors");
  description_.property = 3;
  EXPECT_EQ(Row("First error of"), "First error of   Errors");
  description_.property = 4;
  EXPECT_EQ(Row("Evidence for"), "Evidence for     Errors");
  EXPECT_EQ(Row("Addresses"), "Addresses        0x000001, 0xFFFFFF; delivered if exactly one answers");
  EXPECT_EQ(Row("Numbering"), "Numbering        lsb0: bit 0 is the least significant");
  description_.property = 5;
  EXPECT_EQ(Row("Unit"), "Unit             errors");
  meaning_.registers[kErrors].enabledBy = kCount;
  EXPECT_EQ(Row("Enables"), "Enables          Errors");
}

TEST_F(ClassDescription, SaysWhatDecidesTheSeverity) {
  description_.property = 1;
  TRegisterMeaning& errors = meaning_.registers[kErrors];
  errors.fatalBy.reset();
  EXPECT_EQ(Row("Severity"), "Severity         error");
  errors.severity = ESeverity::kCorrected;
  EXPECT_EQ(Row("Severity"), "Severity         corrected");
  errors.fatalBy = kMask;
  EXPECT_EQ(Row("Severity"), "Severity         fatal where Mask has a 1, else error; corrected in bits 63:32");
  errors.fatalBy.reset();
  errors.enabledBy = kMask;
  EXPECT_EQ(Row("Enabled by"), "Enabled by       Mask, where it has a 1");
  errors.firstError = {kPointer, {63, 0}};
  EXPECT_EQ(Row("First error"), "First error      the bit whose number is in Pointer");
  errors.firstError.reset();
  EXPECT_EQ(Row("Evidence"), "Evidence         Log");
}

TEST_F(ClassDescription, SaysWhetherThisMachineServesTheClass) {
  description_.servedBy = "6203, 6204";
  EXPECT_EQ(Row("Served"), "Served         yes, on machine type 6203, which is part of its \"6203, 6204\"");
  description_.planned.whyNotServed = "there is no BMC node";
  EXPECT_EQ(Row("Served"), "Served         not on machine type 6203: there is no BMC node");
  description_.machineType.clear();
  EXPECT_EQ(Row("Served"), "Served         unknown: give the machine type with --machine-type NNNN");
}

TEST_F(ClassDescription, CountsInstancesByPath) {
  TPlannedClass& planned = description_.planned;
  planned.instances = 1;
  EXPECT_EQ(Row("Instances"), "Instances      1, chip 1");
  planned.isBridge = false;
  planned.instances = 3;
  EXPECT_EQ(Row("Instances"), "Instances      3, chip 0");
  planned.instances = 0;
  EXPECT_EQ(Row("Instances"), "Instances      none");
  planned.path = EPath::kJfr;
  planned.instances = 2;
  planned.registers[kLog].index = 84;
  EXPECT_EQ(Row("Instances"), "Instances      2 for each service processor");
  EXPECT_EQ(Row("Log"), "Log      index 84, 64 bits, log");
  description_.property = 4;
  EXPECT_EQ(Row("Record"), "Record           index 84");
}

TEST_F(ClassDescription, OfAClassWithErrorsHasNoRegisters) {
  TPlannedClass& planned = description_.planned;
  planned.turn = ETurn::kUnknown;
  planned.registers.clear();
  meaning_.registers.clear();
  EXPECT_NE(Text(200).find("\nWhich registers are read cannot be told: \"velhost check\" says what is wrong with the "
                           "class.\n\nProperties\n  InstanceID  string\n    Identifies it.\n  Errors  uint8[]\n"),
            std::string::npos);
  description_.property = 1;
  EXPECT_EQ(Row("Register"), "Register         unknown: \"velhost check\" says what is wrong with the class");
  EXPECT_NE(Json().find(R"("usable":false,"registers":[],"properties":[{"name":"Errors","type":"uint8[]")"),
            std::string::npos);
}

TEST_F(ClassDescription, OfAClassThatIsNotCollectedNamesEightSubclassesThatAre) {
  description_.planned = {};
  description_.planned.cimClass = schema_->FindClass("Top");
  description_.planned.whyNotServed = "the collector does not support this class";
  description_.subclasses = {"A", "B", "C", "D", "E", "F", "G", "H"};
  EXPECT_EQ(Text(80), R"(Top

  Served         no: the collector does not support this class
  Collected as   A, B, C, D, E, F, G and H

Properties
  InstanceID  string
    Identifies it.
)");
  description_.subclasses.insert(description_.subclasses.end(), {"I", "J"});
  EXPECT_EQ(Row("Collected"), "Collected as   A, B, C, D, E, F, G, H and 2 more");
}

TEST_F(ClassDescription, OfTheCaptureClassNamesItsStorageAreas) {
  description_.planned.path = EPath::kCapture;
  description_.planned.registers.clear();
  EXPECT_EQ(Row("Served"), "Served         yes, on every machine type");
  EXPECT_EQ(Row("Instances"), "Instances      one for each BMC node and storage area: cpu_err, ioh_err and zyn_err");
  EXPECT_NE(Json().find(R"("served":true,"served_by":"6203","areas":["cpu_err","ioh_err","zyn_err"],"registers":[])"),
            std::string::npos);
}

TEST_F(ClassDescription, AsJsonHasEveryMember) {
  EXPECT_EQ(
      Json(),
      R"({"kind":"classdescription","format_version":1,"machine_type":"6203","class":"Bridge","superclass":"Top",)"
      R"("description":"A bridge.\nIt has \u001b[31mports.","path":"r8","machine_types":["6203","6204"],)"
      R"("served":true,"served_by":"6203","instances":2,"first_chip":1,"usable":true,"registers":[)"
      R"({"name":"Errors","address":"0x2D0100","width":32,"role":"errors","numbering":"msb0","masked_by":"Mask",)"
      R"("fatal_by":"Mask","first_error":{"register":"Pointer","bits":"5:0"},"evidence":["Log"],)"
      R"("description":"What went wrong.","fields":[)"
      R"({"bits":"29:31","name":"Kind","hex":false,"values":[{"first":1,"last":1,"text":"parity"},)"
      R"({"first":2,"last":7,"text":"reserved"}]},)"
      R"({"bits":"16:27","name":"Source\u001b[2J","hex":true,"values":[{"first":171,"last":171,"text":"port 1"}]}]},)"
      R"({"name":"Mask","address":"0x2D0100","width":32,"role":"mask","numbering":"lsb0","description":"","fields":[]},)"
      R"({"name":"Pointer","address":"0x2D0100","width":64,"role":"first-error","numbering":"lsb0","description":"",)"
      R"("fields":[]},)"
      R"({"name":"Log","addresses":["0x000001","0xFFFFFF"],"width":64,"role":"log","numbering":"lsb0",)"
      R"("description":"","fields":[]},)"
      R"({"name":"Count","address":"0x2D0100","width":64,"role":"counter","numbering":"lsb0","unit":"errors",)"
      R"("description":"","fields":[]}],)"
      R"("properties":[{"name":"InstanceID","type":"string","description":"Identifies it."}]})"
      "\n");
}

TEST_F(ClassDescription, AsJsonHasTheNamedRegisterAlone) {
  description_.property = 5;
  meaning_.registers[kCount].fields = {{{63, 0}, false, "All", {{0, 255, "few"}}}};
  description_.machineType.clear();
  description_.baseClass = "Base";
  EXPECT_EQ(Json(),
            R"({"kind":"classdescription","format_version":1,"machine_type":"","class":"Bridge","base_class":"Base",)"
            R"("superclass":"Top","description":"A bridge.\nIt has \u001b[31mports.","path":"r8",)"
            R"("machine_types":["6203","6204"],"served":null,"instances":2,"first_chip":1,"usable":true,"registers":[)"
            R"({"name":"Count","address":"0x2D0100","width":64,"role":"counter","numbering":"lsb0","unit":"errors",)"
            R"("description":"","fields":[{"bits":"63:0","name":"All","hex":false,)"
            R"("values":[{"first":"0x0000000000000000","last":"0x00000000000000FF","text":"few"}]}]}],"properties":[]})"
            "\n");
  description_.machineType = "6203";
  description_.planned.whyNotServed = "its machine types are \"1\"";
  description_.servedBy.clear();
  EXPECT_NE(Json().find(R"("served":false,"why_not":"its machine types are \"1\"","instances":2)"), std::string::npos);
}

}  // namespace
}  // namespace tests
