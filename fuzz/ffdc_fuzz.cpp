// The capture-file path over arbitrary storage areas: every committed file must be complete.
#include <cstdlib>

#include "host/bmc/iserviceprocessor.h"
#include "host/model/cimnamespace.h"
#include "host/model/hostservices.h"
#include "host/plugins/pluginloader.h"
#include "plugin/torgaplugin.h"
#include "tests/support/bytedriven.h"
#include "tests/support/classbuilder.h"
#include "wire/storagearea.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;
using namespace tests;

// Sizes keep their sign but stay below 1 MiB: with gigabytes, most of the time would go into the sanitizer's
// bookkeeping, which finds nothing.
class TModestSizes : public TByteDrivenServiceProcessor {
 public:
  using TByteDrivenServiceProcessor::TByteDrivenServiceProcessor;
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override {
    auto answer = TByteDrivenServiceProcessor::SendIpmi(request, stop);
    constexpr std::size_t kHighest = wire::StorageArea::kResponseSize + 3 - wire::TCommandBuffer::kData;
    if (answer && answer->data.size() > kHighest && KindOfRequest(request) == EExchangeKind::kSize) {
      const bool negative = (answer->data[kHighest] & 1U) != 0;
      answer->data[kHighest - 1] &= 0x0F;
      answer->data[kHighest] = negative ? 0xFF : 0;
    }
    return answer;
  }
};

void Check(const TInstance& file) {
  const TCIMValue* const text = file.Find("ErrRawData");
  if (text == nullptr || text->ToString(10).size() % 3 != 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TByteStream bytes(data, size);
  const auto ns = TNamespace::Create();
  ns->AddClass(TClassBuilder("KROSG_DCAPFile").CaptureProperties());
  ns->SetCommitCallback([](const boost::shared_ptr<const TInstance>& file) { Check(*file); });
  TModestSizes sp(bytes);
  sp.nodes = bytes.Next() % 4;
  TServiceProcessorHub::Install(&sp, nullptr);
  THostServices::SetPluginManager(boost::shared_ptr<ICIMNamespace>(new TPluginRegistry()));
  auto* const plugin = new torgareg::TTORGARegPluginCallbacks();
  for (const char* const name : {"cpu_err", "ioh_err", "a name that is longer than its field"})
    plugin->ReadErrFFDC(ns, name);
  plugin->PrepareForUnload();
  THostServices::SetPluginManager({});
  TServiceProcessorHub::Install(nullptr, nullptr);
  return 0;
}
