// The order of the fields and virtual functions of the R8 collector and its transport.
#include <gtest/gtest.h>

#include <type_traits>

#include "nkrovel20/splibrary.h"
#include "tests/r8/registertest.h"
#include "tests/support/virtualtable.h"

namespace torgareg {
namespace {

using namespace NKROVEL20;
using namespace velhost;
using namespace testsupport;

struct TTransportFields {
  SPLibrary* library;
  LogMessage* logger;
};
static_assert(sizeof(TTransportFields) == sizeof(IPMIRequestTorgaReg));
static_assert(std::is_standard_layout_v<IPMIRequestTorgaReg>, "no virtual operation, no base");

struct TCollectorFields {
  const void* table;
  LogMessage* logger;
  boost::shared_ptr<ICIMClass> collectedClass;
  std::string reserved;
  const IPMIRequestTorgaReg* transport;
};
static_assert(sizeof(TCollectorFields) == sizeof(R8ErrorData));
static_assert(std::has_virtual_destructor_v<R8ErrorData>);

template <typename TFields, typename TObject>
const TFields& FieldsOf(const TObject& object) {
  return *reinterpret_cast<const TFields*>(&object);
}

class TR8Layout : public TRegisterTest {};

TEST_F(TR8Layout, TheTransportHoldsTheLibraryAndThenTheLogger) {
  const IPMIRequestTorgaReg transport;
  EXPECT_EQ(FieldsOf<TTransportFields>(transport).library, SPLibrary::GetSplibraryInstance(0));
  EXPECT_EQ(FieldsOf<TTransportFields>(transport).logger, LogMessage::getInstance());
}

TEST_F(TR8Layout, TheCollectorHoldsLoggerClassReservedTextAndTransport) {
  const R8ErrorData& made = Collector(Chip().MaxInstances(0));
  const auto& fields = FieldsOf<TCollectorFields>(made);
  EXPECT_EQ(fields.logger, LogMessage::getInstance());
  EXPECT_EQ(fields.collectedClass, chip);
  EXPECT_EQ(fields.reserved, "");
  ASSERT_NE(fields.transport, nullptr);
  EXPECT_EQ(FieldsOf<TTransportFields>(*fields.transport).logger, LogMessage::getInstance());
}

TEST_F(TR8Layout, TheReservedTextStaysEmpty) {
  sp.Expect({Register(0, 0x10).Answers(OneToEight()), Timestamp().Fails(0xCB)});
  Collector(Chip().MaxInstances(1).Register("R", 0x10, 8)).getData();
  EXPECT_EQ(FieldsOf<TCollectorFields>(*collector).reserved, "");
}

TEST_F(TR8Layout, TheCollectorsVirtualTableHasOnlyTheDestructors) { EXPECT_EQ(SlotsOf<R8ErrorData>(), 2U); }

}  // namespace
}  // namespace torgareg
