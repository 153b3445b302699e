#include "host/profile/collectionsize.h"

#include <gtest/gtest.h>

#include "host/model/cimnamespace.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using namespace CollectorProfile;

using TType = TCIMValue::TCIMType;

TCIMValue Numbers(std::size_t count) {
  return TCIMValue(TType::kUint32, 0, std::vector<TCIMValue>(count, TCIMValue(7)));
}

// A class with three inherited properties and the given registers of its own.
class CollectionSize : public testing::Test {
 protected:
  CollectionSize() : schema_(TNamespace::Create()) {
    schema_->AddClass(TClassBuilder("Top").Text("InstanceID").Text("ElementName").Text("MachineType"));
    schema_->AddClass(TClassBuilder("Super", "Top"));
  }
  TCollectionSize Of(TClassBuilder builder, EPath path, std::uint64_t serviceProcessors = 1) {
    return SizeOf(*schema_->AddClass(std::move(builder)), path, serviceProcessors);
  }
  boost::shared_ptr<TNamespace> schema_;
};

TClassBuilder Counted(const TCIMValue& count) { return TClassBuilder("C", "Super").With("MaxInstanceCount", count); }

TEST_F(CollectionSize, AnIpmiClassReadsEachAddressOfEachInstance) {
  const TCollectionSize size =
      Of(Counted(TCIMValue(5)).Bytes("A", {{"Offset", Numbers(1)}}).Bytes("B", {{"Offset", Numbers(4)}}).Bytes("D"),
         EPath::kR8);
  EXPECT_EQ(size.instances, 5U);
  EXPECT_EQ(size.reads, 30U) << "one, four, and one that ends the request";
  EXPECT_EQ(size.properties, 30U);
}

TEST_F(CollectionSize, AScalarOffsetIsOneAddressAndAnEmptyArrayIsNone) {
  const TCollectionSize size = Of(
      Counted(TCIMValue(2)).Bytes("A", {{"Offset", TCIMValue(16)}}).Bytes("B", {{"Offset", Numbers(0)}}), EPath::kR8);
  EXPECT_EQ(size.reads, 2U);
}

TEST_F(CollectionSize, ABlockClassIsReadFromEachServiceProcessor) {
  const TCollectionSize size =
      Of(Counted(TCIMValue(2)).Bytes("A", {{"Offset", Numbers(4)}}).Bytes("B"), EPath::kJfr, 3);
  EXPECT_EQ(size.instances, 6U);
  EXPECT_EQ(size.reads, 12U);
  EXPECT_EQ(size.properties, 30U);
}

TEST_F(CollectionSize, TheCountIsReadAsTheCollectorReadsIt) {
  const auto count = [this](const TCIMValue& value) {
    schema_ = TNamespace::Create();
    schema_->AddClass(TClassBuilder("Top"));
    schema_->AddClass(TClassBuilder("Super", "Top"));
    return Of(Counted(value), EPath::kR8).instances;
  };
  EXPECT_EQ(count(TCIMValue::FromInteger(TType::kUint32, 4294967295)), 65535U);
  EXPECT_EQ(count(TCIMValue::FromInteger(TType::kUint32, 65536)), 0U);
  EXPECT_EQ(count(TCIMValue("513")), 513U);
  EXPECT_EQ(count(TCIMValue("0x201")), 513U);
  EXPECT_EQ(count(TCIMValue("many")), 0U);
  EXPECT_EQ(count(TCIMValue()), 0U);
  EXPECT_EQ(count(Numbers(1)), 0U);
}

TEST_F(CollectionSize, OtherPathsRequireNothing) {
  EXPECT_EQ(Of(Counted(TCIMValue(2)).Bytes("A"), EPath::kCapture).properties, 0U);
}

TEST(CollectionSizeProblem, TheLimitsThemselvesAreAllowed) {
  EXPECT_EQ(ProblemOf({65535, 131072, 2097152}), "");
  EXPECT_EQ(ProblemOf({65536, 0, 0}), "takes 65536 instances, expected at most 65535");
  EXPECT_EQ(ProblemOf({1, 131073, 0}), "takes 131073 register reads, expected at most 131072");
  EXPECT_EQ(ProblemOf({1, 1, 2097153}), "takes 2097153 properties of instances, expected at most 2097152");
}

TEST_F(CollectionSize, AddressesOfOneRegister) {
  const auto cimClass = schema_->AddClass(
      TClassBuilder("C", "Super").Bytes("A", {{"Offset", Numbers(256)}}).Bytes("B", {{"Offset", Numbers(257)}}));
  EXPECT_EQ(AddressProblemOf(*cimClass->Properties().at(3)), "");
  EXPECT_EQ(AddressProblemOf(*cimClass->Properties().at(4)),
            "has 257 addresses in its qualifier 'Offset', expected at most 256");
}

TEST_F(CollectionSize, MachineTypesCountForEachClassThatHasThem) {
  // 64 classes of 65,536 bytes each: a text of 65,520 and 16 for the element.
  const TCIMValue list = Strings({std::string(65520, '1')});
  schema_->AddClass(TClassBuilder("C0", "Super").With("SupportedMachineTypes", list));
  for (int i = 1; i < 64; ++i) {
    schema_->AddClass(TClassBuilder("C" + std::to_string(i), "C" + std::to_string(i - 1)));
  }
  EXPECT_EQ(MachineTypesProblemOf(*schema_), "");
  schema_->AddClass(TClassBuilder("D", "Super").Machines({"6203"}));
  EXPECT_EQ(
      MachineTypesProblemOf(*schema_),
      "the classes have 4194324 bytes in their qualifiers 'SupportedMachineTypes', including inherited ones and 16 "
      "for each element, expected at most 4194304");
}

}  // namespace
}  // namespace tests
