#include "host/model/assertionfailure.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "nkrovel20/icimobjects.h"
#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tvelexception.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

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
