// Properties with several addresses, and which properties are registers at all.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "tests/r8/registertest.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using TNumbers = std::vector<unsigned int>;

class Offsets : public TRegisterTest {
 protected:
  // The value of a register whose reads succeed (true) or fail (false), in order of its addresses.
  TCIMValue Value(const std::vector<bool>& answers, std::uint32_t maxLen = 8) {
    std::vector<std::uint32_t> addresses;
    for (std::size_t i = 0; i < answers.size(); ++i) {
      addresses.push_back(0x110000 + static_cast<std::uint32_t>(i));
      const TStep step = Register(0, addresses.back());
      sp.Expect(answers[i] ? step.Answers(OneToEight()) : step.Fails(0xCB));
    }
    return Collector(Chip().Register("R", addresses, maxLen)).getRegisterData(Property(kVoMemory, "R"), 0);
  }
};

TEST_F(Offsets, AnArrayOfOneAddressActsLikeAScalar) {
  EXPECT_EQ(NumbersOf(Value({true})), (TNumbers{0x11, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}));
}

TEST_F(Offsets, TwoReadsAreNotConvertedAndGiveNull) {
  SetMachineType("4411");
  const TCIMValue value = Value({true, true});
  EXPECT_TRUE(value.IsNull());
  EXPECT_EQ(value.GetType().GetCode(), 2);
  EXPECT_EQ(value.GetDeclaredSize(), 8U);
  // Each read is 14 bytes: eight of value, six zeros.
  EXPECT_EQ(logger.Count(Debug("1 2 3 4 5 6 7 8 0 0 0 0 0 0 1 2 3 4 5 6 7 8 0 0 0 0 0 0 ")), 1U);
  EXPECT_EQ(logger.Count(Debug("Size of cimvalues 28")), 1U);
  EXPECT_EQ(logger.Lines().back(), Debug("Register data value "));
}

TEST_F(Offsets, OneReadOfSeveralIsConvertedWithTheLastAddress) {
  for (const std::vector<bool>& answers : std::vector<std::vector<bool>>{{true, false}, {false, true}}) {
    StartAnew();
    EXPECT_EQ(NumbersOf(Value(answers)), (TNumbers{0x11, 0, 1, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}));
  }
  StartAnew();
  EXPECT_EQ(NumbersOf(Value({false, true, false})), (TNumbers{0x11, 0, 2, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}));
}

TEST_F(Offsets, EveryOtherNumberOfReadsGivesNull) {
  for (const std::vector<bool>& answers :
       std::vector<std::vector<bool>>{{}, {false}, {false, false}, {true, true, true}, {true, false, true}}) {
    StartAnew();
    EXPECT_TRUE(Value(answers).IsNull()) << answers.size();
  }
}

TEST_F(Offsets, WithoutAddressesNothingIsReadOrLogged) {
  EXPECT_TRUE(Value({}).IsNull());
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Displaying messenger\n"), Debug("Size of cimvalues 0"),
                                                Debug("Register data value ")}));
}

TEST_F(Offsets, TheTranscriptGrowsWithEachAddress) {
  SetMachineType("4523");
  Value({true, false});
  const std::string first = "R\n\t at 1114112 with length 8\nAbout to call the BMC.. \n2MachineType = 4523\n";
  EXPECT_EQ(
      logger.StartingWith("R\n\t"),
      (std::vector<TLine>{
          Debug(first), Debug(first + " at 1114113 with length 8\nAbout to call the BMC.. \n2MachineType = 4523\n")}));
}

TEST_F(Offsets, TheRecordIsZeroedBeforeEachRead) {
  SetMachineType("4411");
  Value({true, false});
  // The answer of the failed read has no data, so one byte of the zeroed record is shown.
  EXPECT_EQ(logger.StartingWith("Contents of registerData"),
            (std::vector<TLine>{Debug("Contents of registerData:\n\n1 2 3 4 5 6 7 8 \n0 0 0 0 0 0 0 \n"),
                                Debug("Contents of registerData:\n\n0 \n")}));
}

TEST_F(Offsets, AnElementThatIsNotANumberEndsTheReads) {
  sp.Expect(Register(0, 0x10).Answers(OneToEight()));
  Collector(Chip().Bytes("R", {{"Offset", Strings({"16", "x"})}, {"MaxLen", Number(TType::kUint32, 8)}}));
  EXPECT_THROW(collector->getRegisterData(Property(kVoMemory, "R"), 0), TVELException);
}

class Selection : public TRegisterTest {
 protected:
  void ExpectRead(std::uint32_t address) { sp.Expect(Register(0, address).Answers(OneToEight())); }
  std::vector<std::string> Names(const TPropertyMap& map) {
    std::vector<std::string> names;
    for (const auto& entry : map) names.push_back(entry.first);
    return names;
  }
};

TEST_F(Selection, OwnAndDirectlyInheritedPropertiesAreRead) {
  ns->AddClass(TClassBuilder("GRANDPARENT", "KROSG_StatisticBase").Register("Far", 0x30, 8));
  ns->AddClass(TClassBuilder("PARENT", "GRANDPARENT").Register("Near", 0x20, 8));
  ExpectRead(0x20);
  ExpectRead(0x10);
  EXPECT_EQ(Names(Collector(TClassBuilder(kVoMemory, "PARENT").Register("Own", 0x10, 8)).getRegisterValues(0)),
            (std::vector<std::string>{"Near", "Own"}));
}

TEST_F(Selection, APropertyOfAnUnrelatedClassIsNotRead) {
  const auto unrelated = ns->AddClass(TClassBuilder("UNRELATED").Register("Elsewhere", 0x30, 8));
  probe.EnumerateAlso(unrelated->Properties()[unrelated->FindProperty("Elsewhere")]);
  ExpectRead(0x10);
  EXPECT_EQ(Names(Collector(Chip().Register("Own", 0x10, 8)).getRegisterValues(0)), std::vector<std::string>{"Own"});
  EXPECT_EQ(probe.CallsWith("Elsewhere."),
            (std::vector<std::string>{"Elsewhere.GetName() {}", "Elsewhere.GetClassOrigin() {}"}));
}

TEST_F(Selection, AnOverridingPropertyKeepsItsOriginAndIsSkipped) {
  ns->AddClass(TClassBuilder("GRANDPARENT", "KROSG_StatisticBase").Register("Far", 0x30, 8));
  ns->AddClass(TClassBuilder("PARENT", "GRANDPARENT"));
  EXPECT_TRUE(Collector(TClassBuilder(kVoMemory, "PARENT").Register("Far", 0x10, 8)).getRegisterValues(0).empty());
}

TEST_F(Selection, IdentificationIsNeverRead) {
  TClassBuilder definition = TClassBuilder(kVoMemory, "PARENT");
  ns->AddClass(TClassBuilder("PARENT"));
  for (const char* const name : {"MachineType", "DateTimeOfCollection", "StatisticTime", "InstanceID", "ElementName"}) {
    definition.Register(name, 0x10, 8);
  }
  definition.Register("machinetype_", 0x20, 8);
  ExpectRead(0x20);
  EXPECT_EQ(Names(Collector(definition).getRegisterValues(0)), std::vector<std::string>{"machinetype_"});
}

TEST_F(Selection, SkippedNamesAreCaseSensitive) {
  ns->AddClass(TClassBuilder("PARENT"));
  ExpectRead(0x20);
  EXPECT_EQ(Names(Collector(TClassBuilder(kVoMemory, "PARENT").Register("ELEMENTNAME", 0x20, 8)).getRegisterValues(0)),
            std::vector<std::string>{"ELEMENTNAME"});
}

TEST_F(Selection, NullValuesAreLeftOut) {
  sp.Expect(Register(0, 0x10).Lost());
  ExpectRead(0x20);
  EXPECT_EQ(Names(Collector(Chip().Register("A", 0x10, 8).Register("B", 0x20, 8)).getRegisterValues(0)),
            std::vector<std::string>{"B"});
}

TEST_F(Selection, ANegativeIndexLeavesEverythingOut) {
  EXPECT_TRUE(Collector(Chip().Register("A", 0x10, 8)).getRegisterValues(-1).empty());
}

TEST_F(Selection, TheFirstOfTwoPropertiesWithTheSameNameWins) {
  probe.EnumeratePropertiesTwice();
  ExpectRead(0x10);
  sp.Expect(Register(0, 0x10).Answers(RegisterData({9, 9, 9, 9, 9, 9, 9, 9})));
  const TPropertyMap map = Collector(Chip().Register("A", 0x10, 8)).getRegisterValues(0);
  EXPECT_EQ(NumbersOf(map.at("A")), (TNumbers{0, 0, 0x10, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}));
}

TEST_F(Selection, AClassWithoutASuperClassAsserts) {
  EXPECT_THROW(Collector(TClassBuilder(kVoMemory).Register("A", 0x10, 8)).getRegisterValues(0), TAssertionFailure);
}

TEST_F(Selection, ExceptionsFromTheEnumerationPropagate) {
  probe.FailAt(std::string(kVoMemory) + ".EnumeratePropertyDecls() {}", 1);
  EXPECT_THROW(Collector(Chip()).getRegisterValues(0), TVELException);
}

}  // namespace
}  // namespace tests
