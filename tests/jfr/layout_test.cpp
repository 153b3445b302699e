// The order of the fields and virtual functions of the JFR collector and its transport.
#include <gtest/gtest.h>

#include <type_traits>

#include "jfr/TNOVRequesttorgareg.h"
#include "nkrovel20/splibrary.h"
#include "tests/jfr/blocktest.h"
#include "tests/support/namespaces.h"
#include "tests/support/virtualtable.h"

namespace tests {
namespace {

static_assert(std::is_standard_layout_v<TNOVRequestTorgaReg>, "no virtual operation, no base");
static_assert(std::has_virtual_destructor_v<TJFRErrorData>);

class JfrLayout : public TBlockTest {
 protected:
  JfrLayout() { sp.serviceProcessors = 300; }  // of which eight bits are kept
};

TEST_F(JfrLayout, TheTransportHoldsLibraryLoggerAndCount) {
  const TNOVRequestTorgaReg transport;
  const auto fields = TTestPeer::FieldsOf(transport);
  EXPECT_EQ(fields.spLibrary, SPLibrary::GetSplibraryInstance(0));
  EXPECT_EQ(fields.log, LogMessage::getInstance());
  EXPECT_EQ(fields.spInstances, 44);
}

TEST_F(JfrLayout, TheCollectorHoldsItsFieldsInOrder) {
  const auto fields = TTestPeer::FieldsOf(Collector(Chip()));
  EXPECT_EQ(fields.timeStampFromSecondCopy, 0);
  EXPECT_EQ(fields.log, LogMessage::getInstance());
  EXPECT_EQ(fields.baseClass, Class(kBridgeBase));
  EXPECT_EQ(fields.requestedClass, requested);
  ASSERT_NE(fields.transport, nullptr);
  EXPECT_EQ(TTestPeer::FieldsOf(*fields.transport).spInstances, 44);
  EXPECT_EQ(fields.className, "");
  EXPECT_EQ(fields.spInstances, 44);
}

TEST_F(JfrLayout, TheFlagSaysWhichCopyTheTimeCameFrom) {
  Collector(Chip());
  TBlock block;
  collector->getTimeStamp(block.TimeInSecondCopy().Data());
  EXPECT_EQ(TTestPeer::FieldsOf(*collector).timeStampFromSecondCopy, 1);
}

TEST_F(JfrLayout, TheCollectorsVirtualTableHasOnlyTheDestructors) { EXPECT_EQ(SlotsOf<TJFRErrorData>(), 2U); }

}  // namespace
}  // namespace tests
