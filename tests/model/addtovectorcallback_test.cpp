#include <gtest/gtest.h>

#include <boost/function.hpp>
#include <boost/make_shared.hpp>
#include <type_traits>

#include "nkrovel20/icimobjects.h"
#include "nkrovel20/taddtovectorcallback.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using TClassCallback = TAddToVectorCallback<ICIMClass>;
using TPropertyCallback = TAddToVectorCallback<ICIMPropertyDecl>;
using TNumberCallback = TAddToVectorCallback<int>;

TEST(AddToVectorCallback, HasTheTypeNamesOfAUnaryFunction) {
  EXPECT_TRUE((std::is_same_v<TClassCallback::argument_type, boost::shared_ptr<ICIMClass>>));
  EXPECT_TRUE((std::is_same_v<TClassCallback::result_type, bool>));
  EXPECT_TRUE((std::is_same_v<TPropertyCallback::argument_type, boost::shared_ptr<ICIMPropertyDecl>>));
  EXPECT_TRUE((std::is_same_v<TPropertyCallback::result_type, bool>));
}

TEST(AddToVectorCallback, AppendsInOrderAndAsksForMore) {
  std::vector<boost::shared_ptr<int>> numbers = {boost::make_shared<int>(1)};
  const boost::function<bool(boost::shared_ptr<int>)> callback = TNumberCallback(numbers);
  EXPECT_TRUE(callback(boost::make_shared<int>(2)));
  EXPECT_TRUE(callback(boost::make_shared<int>(3)));
  ASSERT_EQ(numbers.size(), 3U);
  EXPECT_EQ(*numbers[0], 1);
  EXPECT_EQ(*numbers[1], 2);
  EXPECT_EQ(*numbers[2], 3);
}

TEST(AddToVectorCallback, AppendsAnEmptyPointerToo) {
  std::vector<boost::shared_ptr<int>> numbers;
  const boost::function<bool(boost::shared_ptr<int>)> callback = TNumberCallback(numbers);
  EXPECT_TRUE(callback(boost::shared_ptr<int>()));
  ASSERT_EQ(numbers.size(), 1U);
  EXPECT_FALSE(numbers[0]);
}

TEST(AddToVectorCallback, CopiesFillTheSameVector) {
  std::vector<boost::shared_ptr<int>> numbers;
  const TNumberCallback original(numbers);
  const TNumberCallback copy = original;
  original(boost::make_shared<int>(1));
  copy(boost::make_shared<int>(2));
  EXPECT_EQ(numbers.size(), 2U);
}

TEST(AddToVectorCallback, KeepsTheObjectsAlive) {
  std::vector<boost::shared_ptr<int>> numbers;
  auto number = boost::make_shared<int>(7);
  TNumberCallback callback(numbers);
  callback(number);
  number.reset();
  EXPECT_EQ(*numbers[0], 7);
}

}  // namespace
}  // namespace tests
