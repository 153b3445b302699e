#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <type_traits>

#include "host/model/failures.h"
#include "nkrovel20/icimobjects.h"
#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tvelexception.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

TEST(VelStatusCode, EachNumberHasItsText) {
  EXPECT_EQ(TVELStatusCode(1).TranslateStatusCode(), "The operation failed (status 1).");
  EXPECT_EQ(TVELStatusCode(4).TranslateStatusCode(), "Invalid parameter (status 4).");
  EXPECT_EQ(TVELStatusCode(5).TranslateStatusCode(), "Invalid class (status 5).");
  EXPECT_EQ(TVELStatusCode(12).TranslateStatusCode(), "No such property (status 12).");
  EXPECT_EQ(TVELStatusCode(13).TranslateStatusCode(), "Type mismatch (status 13).");
  EXPECT_EQ(TVELStatusCode(21).TranslateStatusCode(), "No valid timestamp header (status 21).");
}

TEST(VelStatusCode, OtherNumbersSpeakForThemselves) {
  EXPECT_EQ(TVELStatusCode(0).TranslateStatusCode(), "Status 0.");
  EXPECT_EQ(TVELStatusCode(22).TranslateStatusCode(), "Status 22.");
  EXPECT_EQ(TVELStatusCode(-1).TranslateStatusCode(), "Status -1.");
  EXPECT_EQ(TVELStatusCode(std::numeric_limits<std::int32_t>::min()).TranslateStatusCode(), "Status -2147483648.");
}

TEST(VelException, CarriesANumberAndItsText) {
  try {
    throw TVELException(21);
  } catch (const std::exception& exception) {
    EXPECT_STREQ(exception.what(), "No valid timestamp header (status 21).");
    const auto* const failure = dynamic_cast<const TVELException*>(&exception);
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(failure->GetStatusCode().GetCode(), 21);
  }
}

TEST(VelException, CopiesKeepTheirOwnText) {
  TVELException copy(1);
  {
    const TVELException original(TVELStatusCode(4711));
    copy = original;
  }
  EXPECT_STREQ(copy.what(), "Status 4711.");
  EXPECT_EQ(copy.GetStatusCode().GetCode(), 4711);
}

TEST(FailureDetail, IsStoredSeparatelyFromTheException) {
  try {
    ThrowHostFailure(12, "class A declares no property \"b\"");
  } catch (const TVELException& exception) {
    EXPECT_EQ(exception.GetStatusCode().GetCode(), 12);
  }
  EXPECT_EQ(LastFailureDetail(), "class A declares no property \"b\"");
  ClearFailureDetail();
  EXPECT_EQ(LastFailureDetail(), "");
}

TEST(FailureDetail, BelongsToItsThread) {
  EXPECT_THROW(ThrowHostFailure(1, "here"), TVELException);
  std::string elsewhere = "not run";
  std::thread([&elsewhere] { elsewhere = LastFailureDetail(); }).join();
  EXPECT_EQ(elsewhere, "");
  EXPECT_EQ(LastFailureDetail(), "here");
}

TEST(AssertionFailure, ANullHostObjectNamesWhatIsMissing) {
  EXPECT_EQ(PointeeOfAssertion([] { boost::shared_ptr<ICIMClass>()->GetName({}); }), "ICIMClass");
  EXPECT_EQ(PointeeOfAssertion([] { boost::shared_ptr<const ICIMQualifier>()->GetValue(); }), "ICIMQualifier");
  EXPECT_EQ(PointeeOfAssertion([] { static_cast<void>(*boost::shared_ptr<ICIMInstance>()); }), "ICIMInstance");
}

TEST(AssertionFailure, AMissingNamespaceReachesTheHandlerInTheHost) {
  EXPECT_EQ(PointeeOfAssertion([] { TCIMSchemaHelper::GetMachineType({}); }), "ICIMNamespace");
}

TEST(AssertionFailure, IsNotAnExceptionThatACollectorHandles) {
  EXPECT_FALSE((std::is_base_of_v<TVELException, TAssertionFailure>));
  EXPECT_TRUE((std::is_base_of_v<std::exception, TAssertionFailure>));
}

TEST(AssertionFailure, TheTextNamesTheFileWithoutItsFolders) {
  const TAssertionFailure failure("a == b", "void f()", "/usr/include/boost/x.hpp", 734);
  EXPECT_STREQ(failure.what(), "assertion a == b failed in void f() (x.hpp:734)");
  EXPECT_EQ(failure.GetPointee(), "");
  EXPECT_STREQ(TAssertionFailure("a", "f", "bare.h", 1).what(), "assertion a failed in f (bare.h:1)");
}

TEST(AssertionFailure, ThePointeeIsParsedFromBothCompilersSignatures) {
  const auto pointee = [](const char* function) { return TAssertionFailure("px != 0", function, "f", 1).GetPointee(); };
  EXPECT_EQ(pointee("T* p<T>::operator->() const [with T = A::ICIMClass; type = A::ICIMClass*]"), "ICIMClass");
  EXPECT_EQ(pointee("T* p<A::ICIMClass>::operator->() const [T = A::ICIMClass]"), "ICIMClass");
  EXPECT_EQ(pointee("T* p<int>::operator->() const [T = int]"), "int");
  EXPECT_EQ(pointee("[T = "), "");
}

TEST(AssertionFailure, BothOfBoostsHandlersThrowIt) {
  EXPECT_THROW(boost::assertion_failed("e", "f", "g", 1), TAssertionFailure);
  EXPECT_THROW(boost::assertion_failed_msg("e", "m", "f", "g", 1), TAssertionFailure);
}

}  // namespace
}  // namespace tests
