#include "tests/profile/collectorfixture.h"

#include <algorithm>

#include "host/plugins/pluginloader.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

// Loaded only once: in sanitizer builds, a library stays mapped and would not register again.
TLoadedPlugin& Collector() {
  static auto* const libraries = new TDynamicLibraryLoader();
  static auto* const loader = new TPluginLoader(*libraries);
  static auto* const plugin = loader->Load(COLLECTOR_PLUGIN).release();
  return *plugin;
}

}  // namespace

TRememberingProcessor::TRememberingProcessor() : block{} {
  const std::array<std::uint8_t, 7> header = {0x00, 0x18, 0x0C, 0x1F, 0x17, 0x3B, 0x3A};
  std::copy(header.begin(), header.end(), block.begin());
}

void TRememberingProcessor::Forget() {
  registerReads.clear();
  blockReads.clear();
  openedAreas.clear();
}

std::optional<TIpmiAnswer> TRememberingProcessor::SendIpmi(const TIpmiRequest& request, const TStopSignal&) {
  const wire::TCommandBuffer& buffer = request.Buffer();
  if (buffer[2] == 0x3A && buffer[4] == 0x62) {
    const auto address = static_cast<std::uint32_t>(buffer[10] << 16 | buffer[11] << 8 | buffer[12]);
    registerReads.push_back({buffer[9], address});
    return TIpmiAnswer{0x00, {0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8}};
  }
  if (buffer[2] == 0x3A && buffer[4] == 0x6F) return TIpmiAnswer{0x00, {0x12, 0x34, 0x56, 0x78}};
  return AnswerStorageArea(buffer);
}

TIpmiAnswer TRememberingProcessor::AnswerStorageArea(const wire::TCommandBuffer& request) {
  if (request[12] == 0x01) openedAreas.emplace_back(reinterpret_cast<const char*>(request.Data() + 21));
  // The manufacturer id, followed by a handle, a size of zero, or a count of zero.
  return {hasStorageAreas ? std::uint8_t{0x00} : std::uint8_t{0xCB}, {0x39, 0x30, 0x00, 0x00, 0x00, 0x00, 0x00}};
}

std::optional<TDotAnswer> TRememberingProcessor::SendDot(const TDotRequest& request, const TStopSignal&) {
  blockReads.push_back(request.serviceProcessor);
  return TDotAnswer{{block.begin(), block.end()}};
}

TLoadedCollectorTest::TLoadedCollectorTest() {
  THostServices::SetEnvironment(this);
  TServiceProcessorHub::Install(&processor_, nullptr);
  Collector().Callbacks().Init();
}

TLoadedCollectorTest::~TLoadedCollectorTest() {
  Collector().Callbacks().DeInit();
  TServiceProcessorHub::Install(nullptr, nullptr);
  THostServices::SetEnvironment(nullptr);
}

boost::shared_ptr<TNamespace> TLoadedCollectorTest::NewSchema() {
  auto schema = TNamespace::Create();
  schema->SetCommitCallback(
      [this](const boost::shared_ptr<const TInstance>& instance) { committed_.push_back(instance); });
  return schema;
}

void TLoadedCollectorTest::Collect(const boost::shared_ptr<TNamespace>& schema,
                                   const boost::shared_ptr<TCIMClass>& requested, const std::string& machineType) {
  processor_.Forget();
  committed_.clear();
  machineType_ = machineType;
  schema->SetMachineType(machineType);
  std::vector<boost::shared_ptr<ICIMClass>> classes = {requested};
  Collector().Query()->GetData(schema, classes);
}

void AddRoot(TNamespace& schema) { schema.AddClass(TClassBuilder("CIM_StatisticalData").Identification()); }

}  // namespace tests
