// Reading and decoding the value of a register property, and its byte order; every index was worked out by hand.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "r8/r8errordata.h"
#include "tests/r8/registertest.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"
#include "tests/support/tracefile.h"

namespace tests {
namespace {

using TNumbers = std::vector<unsigned int>;

const TNumbers kDecoded = {0xAB, 0xCD, 0xEF, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0};

class Decoding : public TRegisterTest {
 protected:
  // The value of the class's only register, "R".
  TCIMValue Value(const TClassBuilder& definition, int index = 0, const std::string& name = kVoMemory) {
    return Collector(definition).getRegisterData(Property(name, "R"), index);
  }
  // The same, with address 0xABCDEF and one answer.
  TCIMValue Decoded(const std::string& machineType, std::uint32_t maxLen, const TBytes& data) {
    SetMachineType(machineType);
    sp.Expect(Register(0, 0xABCDEF).Answers(data));
    return Value(Chip().Register("R", 0xABCDEF, maxLen));
  }
  void ExpectTypedNull(const TCIMValue& value, unsigned int declaredSize) {
    EXPECT_TRUE(value.IsNull());
    EXPECT_TRUE(value.IsArray());
    EXPECT_EQ(value.GetType().GetCode(), TType::kUint8);
    EXPECT_EQ(value.GetType().GetCode(), 2);
    EXPECT_EQ(value.GetDeclaredSize(), declaredSize);
  }
};

TEST_F(Decoding, EightByteFamilyWith64Bits) {
  const TCIMValue value = Decoded("4411", 8, OneToEight());
  EXPECT_EQ(NumbersOf(value), kDecoded);
  EXPECT_EQ(value.GetDeclaredSize(), 8U) << "which cuts nothing: all 14 are there";
  EXPECT_EQ(value.GetType().GetCode(), TType::kUint8);
}

TEST_F(Decoding, EightByteFamilyWith32Bits) {
  EXPECT_EQ(NumbersOf(Decoded("4524", 4, OneToEight())),
            (TNumbers{0xAB, 0xCD, 0xEF, 0x0C, 7, 6, 5, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF}));
}

TEST_F(Decoding, LabelledFamilyWith64BitsGivesTheSame) {
  const TCIMValue value = Decoded("6203", 8, OneToEight());
  EXPECT_EQ(NumbersOf(value), kDecoded);
  EXPECT_EQ(value.GetDeclaredSize(), 14U);
}

// The fold ORs byte 2 of the label (value byte 0) with byte 6 of the record (value byte 1): 1 | 2 = 3.
TEST_F(Decoding, LabelledFamilyWith32BitsFoldsTheLabel) {
  EXPECT_EQ(NumbersOf(Decoded("6203", 4, OneToEight())),
            (TNumbers{0xAB, 0xCD, 0xEF, 4, 3, 2, 3, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF}));
}

TEST_F(Decoding, OnlyMaxLenFourIs32Bits) {
  for (const std::uint32_t maxLen : {0U, 1U, 2U, 5U, 8U, 14U, 6U, 0xFFFFFFFFU}) {
    StartAnew();
    EXPECT_EQ(NumbersOf(Decoded("4523", maxLen, OneToEight())), kDecoded) << maxLen;
  }
}

TEST_F(Decoding, MaxLenIsConvertedByTheHost) {
  SetMachineType("4411");
  sp.Expect(Register(0, 0x10).Answers(OneToEight()));
  EXPECT_EQ(NumbersOf(Value(Chip().Bytes("R", {{"Offset", TCIMValue("0x10")}, {"MaxLen", TCIMValue("4")}}))).back(),
            0xEFU);
}

TEST_F(Decoding, AnswersOfEveryLengthInBothFamilies) {
  const TBytes full = RegisterData({1, 2, 3, 4, 5, 6, 7, 8}, {0x81, 0x82, 0x83, 0x84, 0x85, 0x86});
  for (const char* const machineType : {"4411", "6203"}) {
    const bool raw = machineType == std::string("4411");
    for (std::size_t count = 0; count <= 30; ++count) {
      TBytes data = full;
      data.resize(count, 0x99);  // after the value: bytes that must not show
      StartAnew();
      logger.Clear();
      const TCIMValue value = Decoded(machineType, 8, data);
      if (count < 14) {
        ExpectTypedNull(value, raw ? 8 : 14);
        EXPECT_EQ(logger.Count(Debug("Command sent to the BMC failed.")), 1U);
        EXPECT_EQ(logger.Count(Debug("Contents of registerData:\n" + DumpText({}, count + 1))), 1U) << count;
      } else {
        EXPECT_EQ(NumbersOf(value), kDecoded) << machineType << " " << count;
        const std::uint8_t behind = count > 14 ? 0x99 : 0;
        const TBytes record =
            raw ? TBytes{1, 2, 3, 4, 5, 6, 7, 8} : TBytes{0x85, 0x86, 1, ' ', '=', ' ', 2, 3, 4, 5, 6, 7, 8, behind};
        EXPECT_EQ(logger.Count(Debug("Contents of registerData:\n" + DumpText(record, 15))), 1U) << count;
      }
    }
  }
}

TEST_F(Decoding, ALostAnswerDumpsTheWholeEmptyRecord) {
  sp.Expect(Register(0, 0xABCDEF).Lost());
  ExpectTypedNull(Value(Chip().Register("R", 0xABCDEF, 8)), 14);
  EXPECT_EQ(logger.Count(Debug("Contents of registerData:\n\n0 0 0 0 0 0 0 0 \n0 0 0 0 0 0 0 \n")), 1U);
}

TEST_F(Decoding, TheTraceOfOneRegister) {
  Decoded("4411", 8, OneToEight());
  std::vector<TLine> lines = logger.Lines();
  ASSERT_EQ(lines.size(), 8U);
  lines.erase(lines.begin() + 2);  // the transport's transcript
  EXPECT_EQ(
      lines,
      (std::vector<TLine>{
          Debug("R\n\t at 11259375 with length 8\nAbout to call the BMC.. \n1MachineType = 4411\n"),
          Debug("Entered torgareg request."), Debug("Contents of registerData:\n\n1 2 3 4 5 6 7 8 \n0 0 0 0 0 0 0 \n"),
          Debug("Displaying messenger\n"), Debug("171 205 239 8 7 6 5 4 3 2 1 0 0 0 "), Debug("Size of cimvalues 14"),
          Debug("Register data value {171, 205, 239, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}")}));
}

TEST_F(Decoding, TheTraceOfAFailedRegister) {
  Decoded("", 8, {});
  std::vector<TLine> lines = logger.Lines();
  lines.erase(lines.begin() + 2);
  // The line with the bytes would be empty, so it is dropped.
  EXPECT_EQ(lines,
            (std::vector<TLine>{Debug("R\n\t at 11259375 with length 14\nAbout to call the BMC.. \n1MachineType = \n"),
                                Debug("Entered torgareg request."), Debug("Command sent to the BMC failed."),
                                Debug("Contents of registerData:\n\n0 \n"), Debug("Displaying messenger\n"),
                                Debug("Size of cimvalues 0"), Debug("Register data value ")}));
}

TEST_F(Decoding, ANegativeIndexReadsNothing) {
  const TCIMValue value = Value(Chip().Register("R", 0xABCDEF, 8), -1);
  EXPECT_TRUE(value.IsNull());
  EXPECT_FALSE(value.IsArray());
  EXPECT_EQ(value.GetType().GetCode(), TType::kNone);
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{Debug("getRegisterData - Invalid data passed to getRegisterData. Unable to parse data "
                                      "for register value"),
                                Debug("Size of cimvalues 0"), Debug("Register data value ")}));
}

TEST_F(Decoding, BridgesAreNumberedFromOneAndEverythingElseIsChipZero) {
  struct TCase {
    const char* name;
    int index;
    std::uint8_t chip;
  };
  for (const TCase& one :
       {TCase{kVoBridge, 0, 1}, TCase{kVoBridge, 2, 3}, TCase{kVoBridge, 254, 255}, TCase{kVoBridge, 255, 0},
        TCase{kVoBridge, 256, 1}, TCase{kT4Bridge, 0, 1}, TCase{kT4Bridge, 7, 8}, TCase{kVoMemory, 2, 0},
        TCase{kT4Memory, 2, 0}, TCase{"KROSG_MEMCTL_StatisticData", 2, 0},
        TCase{"KROSG_PCIIOBRIDGE_StatisticData", 2, 0}, TCase{"krosg_vo_pciiobridge_statisticdata", 2, 0}}) {
    StartAnew();
    sp.Expect(Register(one.chip, 0x10).Fails(0xCB));
    Value(Chip(one.name).Register("R", 0x10, 8), one.index, one.name);
  }
}

TEST_F(Decoding, TheTopAddressByteIsLostEverywhere) {
  sp.Expect(Register(0, 0xABCDEF).Answers(OneToEight()));
  EXPECT_EQ(NumbersOf(Value(Chip().Register("R", 0x12ABCDEF, 8))), kDecoded);
  EXPECT_EQ(logger.StartingWith("R\n\t at 313249263 with length 14\n").size(), 1U) << "but not in the trace";
}

TEST_F(Decoding, TheDeclaredTypeIsKept) {
  sp.Expect(Register(0, 0xABCDEF).Answers(OneToEight()));
  const TCIMValue value =
      Value(Chip().Property(TType::kUint16, "R", true,
                            {{"Offset", Number(TType::kUint32, 0xABCDEF)}, {"MaxLen", Number(TType::kUint32, 8)}}));
  EXPECT_EQ(value.GetType().GetCode(), TType::kUint16);
  EXPECT_EQ(NumbersOf(value), kDecoded);
}

TEST_F(Decoding, AFailingOffsetIsLoggedAndReadsAddressZero) {
  probe.FailAt("R.GetQualifier(Offset) {}", 1);
  sp.Expect(Register(0, 0).Answers(OneToEight()));
  EXPECT_EQ(NumbersOf(Value(Chip().Register("R", 0xABCDEF, 8))), (TNumbers{0, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}));
  EXPECT_EQ(logger.Lines().front(), Debug("Getting Qualifier 'Offset' Failed"));
}

TEST_F(Decoding, ANullOffsetReadsAddressZero) {
  TCIMValue null;
  null.SetNullValue(TType::kUint32, 0);
  sp.Expect(Register(0, 0).Fails(0xCB));
  Value(Chip().Bytes("R", {{"Offset", null}, {"MaxLen", Number(TType::kUint32, 8)}}));
  EXPECT_EQ(logger.Count(Debug("Getting Qualifier 'Offset' Failed")), 0U);
}

TEST_F(Decoding, AnAbsentQualifierAsserts) {
  EXPECT_THROW(Value(Chip().Bytes("R", {{"MaxLen", Number(TType::kUint32, 8)}})), TAssertionFailure);
  collector.reset();
  EXPECT_THROW(Value(Chip(kVoBridge).Bytes("R", {{"Offset", Number(TType::kUint32, 1)}}), 0, kVoBridge),
               TAssertionFailure);
  EXPECT_TRUE(logger.Lines().empty()) << "no read takes place";
}

TEST_F(Decoding, OtherFailuresPropagate) {
  probe.FailAt("R.GetQualifier(MaxLen) {}", 13);
  EXPECT_THROW(Value(Chip().Register("R", 1, 8)), TVELException);
  collector.reset();
  probe.DoAt("R.GetQualifier(Offset) {}", [] { throw std::runtime_error("other"); });
  EXPECT_THROW(Value(Chip(kVoBridge).Register("R", 1, 8), 0, kVoBridge), std::runtime_error);
}

TEST_F(Decoding, AnOffsetThatIsNotANumberThrowsBeforeTheRead) {
  EXPECT_THROW(Value(Chip().Bytes("R", {{"Offset", TCIMValue("here")}, {"MaxLen", Number(TType::kUint32, 8)}})),
               TVELException);
  EXPECT_TRUE(logger.Lines().empty());
}

TEST_F(Decoding, TheHostIsCalledInOrderAndOncePerUseOfTheMachineType) {
  sp.Expect(Register(0, 0x10).Answers(OneToEight()));
  const auto property = (Collector(Chip().Register("R", 0x10, 8)), Property(kVoMemory, "R"));
  probe.Clear();
  collector->getRegisterData(property, 0);
  const std::string className = kVoMemory;
  EXPECT_EQ(probe.Calls(),
            (std::vector<std::string>{className + ".GetNamespace() {}", "namespace.GetMachineType()",  // the family
                                      className + ".GetName() {}",  // the chip selector
                                      "R.GetName() {}", "R.GetQualifier(Offset) {}", "R.GetQualifier(MaxLen) {}",
                                      className + ".GetNamespace() {}", "namespace.GetMachineType()",  // the conversion
                                      "R.GetType() {}"}));
}

class Conversion : public TPartTest {
 protected:
  Conversion() : collector((ns->AddClass(TClassBuilder("CHIP")), Class("CHIP"))) {}

  TBytes Convert(const std::string& machineType, TBytes bytes, unsigned int mode, unsigned int address = 0x99123456) {
    SetMachineType(machineType);
    collector.ConvertToBigEndian(&bytes, address, mode);
    return bytes;
  }

  R8ErrorData collector;
};

// Byte i is 0xA0 + i.
const TBytes kSource = {0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA, 0xAB, 0xAC, 0xAD};

TEST_F(Conversion, EightByteFamily) {
  EXPECT_EQ(Convert("4411", kSource, 0),
            (TBytes{0x12, 0x34, 0x56, 0xA7, 0xA6, 0xA5, 0xA4, 0xA3, 0xA2, 0xA1, 0xA0, 0, 0, 0}));
  // Folded: A0|A4, A1|A5, A2|A6, A3|A7 = A4, A5, A6, A7.
  EXPECT_EQ(Convert("4411", kSource, 4),
            (TBytes{0x12, 0x34, 0x56, 0xA7, 0xA6, 0xA5, 0xA4, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF}));
}

TEST_F(Conversion, LabelledFamily) {
  EXPECT_EQ(Convert("6203", kSource, 0),
            (TBytes{0x12, 0x34, 0x56, 0xAC, 0xAB, 0xAA, 0xA9, 0xA8, 0xA7, 0xA6, 0xA2, 0, 0, 0}));
  // Byte 2 is folded with byte 6: A2|A6 = A6.
  EXPECT_EQ(Convert("6203", kSource, 4),
            (TBytes{0x12, 0x34, 0x56, 0xA8, 0xA7, 0xA6, 0xA6, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF}));
}

TEST_F(Conversion, IntermediateModesFollowTheSameFormulas) {
  EXPECT_EQ(Convert("4414", kSource, 1),
            (TBytes{0x12, 0x34, 0x56, 0xA6, 0xA5, 0xA4, 0xA3, 0xA2, 0xA1, 0xA0, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("4414", kSource, 2), (TBytes{0x12, 0x34, 0x56, 0xA5, 0xA4, 0xA3, 0xA2, 0xA1, 0xA0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("4414", kSource, 3), (TBytes{0x12, 0x34, 0x56, 0xA4, 0xA3, 0xA2, 0xA1, 0xA0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("", kSource, 1), (TBytes{0x12, 0x34, 0x56, 0xAB, 0xAA, 0xA9, 0xA8, 0xA7, 0xA6, 0xA2, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("", kSource, 2), (TBytes{0x12, 0x34, 0x56, 0xAA, 0xA9, 0xA8, 0xA7, 0xA6, 0xA2, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("", kSource, 3), (TBytes{0x12, 0x34, 0x56, 0xA9, 0xA8, 0xA7, 0xA6, 0xA2, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Conversion, WiderModesChangeNothing) {
  for (const unsigned int mode : {5U, 8U, 0xFFFFFFFFU}) EXPECT_EQ(Convert("4411", kSource, mode), kSource);
}

TEST_F(Conversion, OnlyFourteenBytesAreConverted) {
  for (const std::size_t size : {0U, 1U, 13U, 15U, 28U}) {
    const TBytes bytes(size, 0x5A);
    EXPECT_EQ(Convert("6203", bytes, 0), bytes);
    EXPECT_EQ(Convert("4411", bytes, 4), bytes);
  }
}

TEST_F(Conversion, FourMachineTypesFormTheEightByteFamily) {
  for (const char* const type : {"4411", "4414", "4523", "4524"})
    EXPECT_EQ(Convert(type, kSource, 0)[10], 0xA0) << type;
  for (const char* const type : {"", "6203", "4412", "441", "44111", " 4411", "4525"}) {
    EXPECT_EQ(Convert(type, kSource, 0)[10], 0xA2) << type;
  }
}

}  // namespace
}  // namespace tests
