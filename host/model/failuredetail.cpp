#include "host/model/failuredetail.h"

#include "nkrovel20/tvelexception.h"

namespace velhost {

namespace {
thread_local std::string lastDetail;
}

void ThrowHostFailure(std::int32_t status, const std::string& detail) {
  lastDetail = detail;
  throw TVELException(status);
}

std::string LastFailureDetail() { return lastDetail; }
void ClearFailureDetail() { lastDetail.clear(); }

}  // namespace velhost
