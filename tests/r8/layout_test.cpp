// The order of the fields and virtual functions of the R8 collector and its transport.
#include <gtest/gtest.h>

#include <type_traits>

#include "nkrovel20/splibrary.h"
#include "tests/r8/registertest.h"
#include "tests/support/namespaces.h"
#include "tests/support/virtualtable.h"

namespace tests {
namespace {

static_assert(std::is_standard_layout_v<IPMIRequestTorgaReg>, "no virtual operation, no base");
static_assert(std::has_virtual_destructor_v<R8ErrorData>);

class R8Layout : public TRegisterTest {};

TEST_F(R8Layout, TheTransportHoldsTheLibraryAndThenTheLogger) {
  const IPMIRequestTorgaReg transport;
  EXPECT_EQ(TTestPeer::FieldsOf(transport).library, SPLibrary::GetSplibraryInstance(0));
  EXPECT_EQ(TTestPeer::FieldsOf(transport).logger, LogMessage::getInstance());
}

TEST_F(R8Layout, TheCollectorHoldsLoggerClassReservedTextAndTransport) {
  const R8ErrorData& made = Collector(Chip().MaxInstances(0));
  const auto fields = TTestPeer::FieldsOf(made);
  EXPECT_EQ(fields.logger, LogMessage::getInstance());
  EXPECT_EQ(fields.collectedClass, chip);
  EXPECT_EQ(fields.reserved, "");
  ASSERT_NE(fields.transport, nullptr);
  EXPECT_EQ(TTestPeer::FieldsOf(*fields.transport).logger, LogMessage::getInstance());
}

TEST_F(R8Layout, TheReservedTextStaysEmpty) {
  sp.Expect({Register(0, 0x10).Answers(OneToEight()), Timestamp().Fails(0xCB)});
  Collector(Chip().MaxInstances(1).Register("R", 0x10, 8)).getData();
  EXPECT_EQ(TTestPeer::FieldsOf(*collector).reserved, "");
}

TEST_F(R8Layout, TheCollectorsVirtualTableHasOnlyTheDestructors) { EXPECT_EQ(SlotsOf<R8ErrorData>(), 2U); }

}  // namespace
}  // namespace tests
