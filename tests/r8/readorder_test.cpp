// The order of the steps of an R8 collection, observed by letting one of them fail, and how its transcripts
// end.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <deque>

#include "host/model/failures.h"
#include "r8/ipmirequesttorgareg.h"
#include "tests/r8/registertest.h"
#include "tests/support/namespaces.h"
#include "tests/support/tracefile.h"

namespace tests {
namespace {

class ReadOrder : public TRegisterTest {};

TEST_F(ReadOrder, ThirteenBytesOfDataAreABadAnswerWithAnyCompletionCode) {
  sp.Expect(Register(7, 0x345678).Answers(TBytes(13, 0)));
  IPMIRequestTorgaReg transport;
  TBytes out(14);
  unsigned short length = 0;
  EXPECT_FALSE(transport.getData(7, 0x345678, out.data(), &length, true));
  EXPECT_TRUE(logger.Lines().back().message.ends_with("\nThe response length is 13\n\nContents of (rspBuf):\n" +
                                                      DumpText({1, 32, 58, 0, 0, 13}, 257) + "Bad RC from ipmi cmd."));
}

TEST_F(ReadOrder, TheTranscriptOfATimestampDoesNotMentionACompletionCode) {
  sp.Expect(Timestamp().Answers({1, 2, 3, 4}).WithCode(0xCB));
  IPMIRequestTorgaReg transport;
  TBytes out(4);
  unsigned short length = 0;
  EXPECT_FALSE(transport.getTimeStamp(out.data(), &length));
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Entered get time stamp request"),
                                                Verbose("Command completed checking success...\n")}));
}

TEST_F(ReadOrder, ARequestIsLoggedBeforeItIsSent) {
  IPMIRequestTorgaReg transport;
  TBytes out(14);
  unsigned short length = 0;
  logger.FailAt("Entered torgareg request.");
  EXPECT_THROW(transport.getData(0, 1, out.data(), &length, true), std::runtime_error);
  logger.FailAt("Entered get time stamp request");
  EXPECT_THROW(transport.getTimeStamp(out.data(), &length), std::runtime_error);
}

TEST_F(ReadOrder, EveryDeclarationCausesFourNameQueries) {
  // First the inherited identification property, which is not read, then R.
  ns->AddClass(TClassBuilder("PARENT").Text("InstanceID"));
  sp.Expect(Register(0, 0x10).Fails(0xCB));
  Collector(TClassBuilder(kVoMemory, "PARENT").Register("R", 0x10, 8));
  probe.Clear();
  EXPECT_TRUE(collector->getRegisterValues(0).empty());
  const std::string own = std::string(kVoMemory) + ".";
  const std::vector<std::string> calls = probe.Calls();
  ASSERT_GE(calls.size(), 13U);
  EXPECT_EQ(std::vector<std::string>(calls.begin(), calls.begin() + 13),
            (std::vector<std::string>{own + "EnumeratePropertyDecls() {}", "InstanceID.GetName() {}",
                                      "InstanceID.GetClassOrigin() {}", "PARENT.GetName() {}", own + "GetName() {}",
                                      own + "GetSuperClass() {}", "PARENT.GetName() {}", "R.GetName() {}",
                                      "R.GetClassOrigin() {}", own + "GetName() {}", own + "GetName() {}",
                                      own + "GetSuperClass() {}", "PARENT.GetName() {}"}));
}

TEST_F(ReadOrder, TheNameOfARegisterThatAnswersIsQueriedTwice) {
  sp.Expect(Register(0, 0x10).Answers(OneToEight()));
  ns->AddClass(TClassBuilder("PARENT"));
  Collector(TClassBuilder(kVoMemory, "PARENT").Register("R", 0x10, 8));
  probe.Clear();
  EXPECT_EQ(collector->getRegisterValues(0).size(), 1U);
  const std::string own = std::string(kVoMemory) + ".";
  EXPECT_EQ(probe.Calls(),
            (std::vector<std::string>{own + "EnumeratePropertyDecls() {}",
                                      // Is it a register?
                                      "R.GetName() {}", "R.GetClassOrigin() {}", own + "GetName() {}",
                                      own + "GetName() {}", own + "GetSuperClass() {}", "PARENT.GetName() {}",
                                      // Its value: family, chip selector, name, qualifiers, conversion.
                                      own + "GetNamespace() {}", "namespace.GetMachineType()", own + "GetName() {}",
                                      "R.GetName() {}", "R.GetQualifier(Offset) {}", "R.GetQualifier(MaxLen) {}",
                                      own + "GetNamespace() {}", "namespace.GetMachineType()", "R.GetType() {}"}));
}

TEST_F(ReadOrder, TheInstanceCountIsLoggedBeforeTheClassNameIsQueried) {
  Collector(Chip().MaxInstances(2));
  probe.Clear();
  logger.FailAt("Class supports 2 instances on this machine");
  EXPECT_THROW(collector->getData(), std::runtime_error);
  EXPECT_EQ(probe.Calls(), std::vector<std::string>{std::string(kVoMemory) + ".GetQualifier(MaxInstanceCount) {}"});
}

TEST_F(ReadOrder, TheConvertedBytesAreLoggedBeforeTheTypeIsQueried) {
  sp.Expect(Register(0, 0x10).Answers(OneToEight()));
  Collector(Chip().Register("R", 0x10, 8));
  const auto property = Property(kVoMemory, "R");
  std::string beforeLast;
  probe.DoAt("R.GetType() {}", [&] { beforeLast = logger.Lines().at(logger.Lines().size() - 2).message; });
  collector->getRegisterData(property, 0);
  EXPECT_EQ(beforeLast, "Displaying messenger\n");
}

TEST_F(ReadOrder, AClassWithoutSuperclassAssertsEvenIfNothingIsToBeRead) {
  Collector(TClassBuilder(kVoMemory).Text("InstanceID"));
  EXPECT_THROW(collector->getRegisterValues(0), TAssertionFailure);
}

TEST_F(ReadOrder, TheDeclaredTypeIsQueriedEvenAfterAFailedRead) {
  sp.Expect(Register(0, 0x10).Fails(0xCB));
  Collector(Chip().Register("R", 0x10, 8));
  const auto property = Property(kVoMemory, "R");
  probe.Clear();
  EXPECT_TRUE(collector->getRegisterData(property, 0).IsNull());
  EXPECT_EQ(probe.CallsWith("R.GetType"), std::vector<std::string>{"R.GetType() {}"});
}

TEST_F(ReadOrder, ANullArrayOfAddressesReadsNothing) {
  TCIMValue none(TType::kUint32, 0, {});
  Collector(Chip().Bytes("R", {{"Offset", none}, {"MaxLen", Number(TType::kUint32, 8)}}));
  EXPECT_TRUE(collector->getRegisterData(Property(kVoMemory, "R"), 0).IsNull());
  EXPECT_EQ(logger.Count(Debug("Entered torgareg request.")), 0U);
  EXPECT_EQ(logger.Count(Debug("Displaying messenger\n")), 1U);
}

TEST_F(ReadOrder, AnInstanceHasTheGivenElementName) {
  sp.Expect({Register(0, 0x10).Answers(OneToEight()), Timestamp().Fails(0xCB)});
  Collector(Chip().Register("R", 0x10, 8));
  const TPropertyMap map = collector->getInstanceData("any name", 4);
  EXPECT_EQ(map.at("ElementName").ToString(10), "any name");
  EXPECT_EQ(map.at("InstanceID").ToString(10), "KROSG:KROSG_VO_MEMCTL_StatisticData:6203:4");
}

// A host may return class objects that live only as long as the pointer to them. Here the freed name of such
// an object then reads like the name of the collected class.
class TShortLivedClass : public ICIMClass {
 public:
  explicit TShortLivedClass(const std::string& name) : name_(names_.emplace_back(name)) {}
  ~TShortLivedClass() override { name_ = "COLLECTED"; }
  const std::string& GetName(const TPropertyMap&) const override { return name_; }
  boost::shared_ptr<const ICIMQualifier> GetQualifier(const std::string&, const TPropertyMap&) const override {
    return {};
  }
  boost::shared_ptr<ICIMClass> GetSuperClass(const TPropertyMap&) const override {
    return boost::make_shared<TShortLivedClass>("SUPER");
  }
  boost::shared_ptr<ICIMNamespace> GetNamespace(const TPropertyMap&) const override { return {}; }
  boost::shared_ptr<ICIMInstance> CreateInstance(const TPropertyMap&) override { return {}; }
  void EnumerateSubClasses(const TClassCallback&, int, const TPropertyMap&) override {}
  void EnumeratePropertyDecls(const TPropertyDeclCallback& callback, const TPropertyMap&) override {
    callback(declaration);
  }

  boost::shared_ptr<ICIMPropertyDecl> declaration;

 private:
  inline static std::deque<std::string> names_;
  std::string& name_;
};

TEST_F(ReadOrder, NamesAreNotUsedAfterTheirClassObjectIsGone) {
  class TDeclaration : public ICIMPropertyDecl {
   public:
    const std::string& GetName(const TPropertyMap&) const override { return name_; }
    boost::shared_ptr<const ICIMQualifier> GetQualifier(const std::string&, const TPropertyMap&) const override {
      return {};
    }
    TCIMValue::TCIMType GetType(const TPropertyMap&) const override { return TType::kUint8; }
    boost::shared_ptr<ICIMClass> GetClassOrigin(const TPropertyMap&) const override {
      return boost::make_shared<TShortLivedClass>("ORIGIN");
    }

   private:
    std::string name_ = "R";
  };
  const auto requested = boost::make_shared<TShortLivedClass>("COLLECTED");
  requested->declaration = boost::make_shared<TDeclaration>();
  R8ErrorData errorData(requested);
  EXPECT_TRUE(errorData.getRegisterValues(0).empty()) << "it belongs to a third class";
}

}  // namespace
}  // namespace tests
