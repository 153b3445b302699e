// Register reads over the network: velhost against a bare loop over the same library, and against the usual tools, all
// with one simulated BMC. Times are those of client and simulator together.
//
// lan_bench [--quick | loop | collector]; with a word, only that way of reading is run, once, for use with perf.
// Requires ipmi_sim (package openipmi), ipmitool and ipmi-raw (freeipmi-tools).
#include <dlfcn.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "bench/benchsupport.h"
#include "bench/collectorsupport.h"
#include "bench/processes.h"
#include "host/bmc/lan/lanmodule.h"
#include "host/bmc/lan/lanserviceprocessor.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;

constexpr int kFirstAddress = 0x1000;
constexpr int kStride = 8;
constexpr const char* kClass = "KROSG_VO_PCIIOBRIDGE_StatisticData";  // one instance per chip, from chip 1

const char* const kServer = R"(machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "12 34 56 78"
)";

struct TReads {
  int chips;
  int registers;  ///< per chip
};

std::string MakeSchema(const TReads& reads) {
  std::string mof = "class CIM_Top {};\n";
  for (const char* base :
       {"KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"}) {
    mof += fmt::format("class {} : CIM_Top {{}};\n", base);
  }
  mof += fmt::format("[SupportedMachineTypes{{\"6203\"}}, MaxInstanceCount({})] class {} : CIM_Top {{\n", reads.chips,
                     kClass);
  mof += "string InstanceID; string ElementName; string MachineType; datetime StatisticTime;\n";
  for (int i = 0; i < reads.registers; ++i) {
    mof += fmt::format("[Offset{{{}}}, MaxLen(8)] uint8 Register{}[];\n", kFirstAddress + kStride * i, i);
  }
  return mof + "};\n";
}

/// Calls back with the request data of each read, in the order of the collector.
void ForEachRead(const TReads& reads, const std::function<void(const std::array<std::uint8_t, 4>&)>& callback) {
  for (int chip = 1; chip <= reads.chips; ++chip) {
    for (int i = 0; i < reads.registers; ++i) {
      const auto address = static_cast<unsigned int>(kFirstAddress + kStride * i);
      callback({static_cast<std::uint8_t>(chip), static_cast<std::uint8_t>(address >> 16U),
                static_cast<std::uint8_t>(address >> 8U), static_cast<std::uint8_t>(address)});
    }
  }
}

/// The same reads as a file of commands for a tool; each line is `begin` followed by the request data.
std::string MakeCommands(const TReads& reads, const std::string& begin) {
  std::string lines;
  ForEachRead(reads, [&](const auto& data) { lines += fmt::format("{} {:#04x}\n", begin, fmt::join(data, " ")); });
  return lines;
}

/// A session of the LAN module, used directly on this thread.
class TBareSession {
 public:
  explicit TBareSession(const bench::TSimulator& simulator) {
    const std::string file = bench::BuildFolder() + "/lib/velhost/modules/" + kLanModuleFile;
    void* const library = dlopen(file.c_str(), RTLD_NOW);
    if (library == nullptr) throw std::runtime_error("no LAN module");
    module_ = reinterpret_cast<VelLanEntry>(dlsym(library, VELHOST_LAN_ENTRY))();
    const std::string address = simulator.Address();
    const VelLanOpening opening = {
        address.c_str(), bench::TSimulator::kUser, bench::TSimulator::kPassword, 4, 3, 1, 15'000, 14'999};
    std::array<char, 128> message{};
    int status = VEL_LAN_OK;
    session_ = module_->open(&opening, &status, message.data(), message.size());
    if (session_ == nullptr) throw std::runtime_error(message.data());
  }
  ~TBareSession() { module_->close(session_); }
  TBareSession(const TBareSession&) = delete;
  TBareSession& operator=(const TBareSession&) = delete;

  /// The bytes of the response, starting with the completion code; valid until the next request.
  std::span<const std::uint8_t> Exchange(std::uint8_t networkFunction, std::span<const std::uint8_t> request) {
    std::size_t size = 0;
    const int status = module_->exchange(session_, networkFunction, 0, request.data(), request.size(), response_.data(),
                                         response_.size(), &size);
    if (status != VEL_LAN_OK || size < 1) throw std::runtime_error("no answer");
    return std::span(response_).first(size);
  }

 private:
  const VelLanModule* module_ = nullptr;
  VelLanSession* session_ = nullptr;
  std::array<std::uint8_t, 256> response_{};
};

void ReadAll(const bench::TSimulator& simulator, const TReads& reads) {
  TBareSession session(simulator);
  ForEachRead(reads, [&session](const auto& data) {
    const std::array<std::uint8_t, 5> request = {0x62, data[0], data[1], data[2], data[3]};
    session.Exchange(0x3A, request);
  });
}

/// Passes the collector's requests to a bare session and does nothing else.
class TBareServiceProcessor : public IServiceProcessor {
 public:
  explicit TBareServiceProcessor(const bench::TSimulator& simulator) : session_(simulator) {}

  TDiscovery Discover() override { return {1, true, false, false, 0}; }

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal&) override {
    const auto data = request.Data();
    std::array<std::uint8_t, 1 + wire::TCommandBuffer::kMaxData> bytes{request.Command()};
    std::copy(data.begin(), data.end(), bytes.begin() + 1);
    const auto response = session_.Exchange(request.NetworkFunction(), std::span(bytes).first(1 + data.size()));
    return TIpmiAnswer{response.front(), {response.begin() + 1, response.end()}};
  }

 private:
  TBareSession session_;
};

/// The loop with the collector in it: creates texts, values and instances, discards the trace, and prints
/// nothing.
void CollectOnBareSession(const bench::TSimulator& simulator, const TReads& reads) {
  TBareServiceProcessor serviceProcessor(simulator);
  const bench::THost host(serviceProcessor);
  const auto schema = bench::MakeSchema();
  bench::AddR8Class(*schema, reads.registers, reads.chips);
  torgareg::TTORGARegPluginCallbacks plugin;
  bench::Collect(plugin, schema, bench::kR8Class);
}

using TSeries = std::vector<double>;  // seconds per register, one number per round

std::string Rates(const TSeries& own, const TSeries& other) {
  return fmt::format("{:.0f}/s against {:.0f}/s", 1 / bench::Median(own), 1 / bench::Median(other));
}

void PrintRow(const char* number, const std::string& what, double target, const TSeries& own, const TSeries& other) {
  const double ratio = bench::MedianRatio(other, own);
  bench::Print({number, "registers per second of `velhost collect` over LAN, against " + what,
                fmt::format("≥ {}", target), fmt::format("{:.2f}", ratio), ratio >= target, Rates(own, other)});
}

/// Has no target: an upper bound for the row of the same number.
void PrintPart(const char* number, const char* what, const TSeries& own, const TSeries& other) {
  bench::Print({number, what, "", fmt::format("{:.2f}", bench::MedianRatio(other, own)), true, Rates(own, other)});
}

void Compare(bool quick) {
  const TReads reads = quick ? TReads{2, 10} : TReads{10, 1000};
  const bench::TFolder folder;
  const bench::TSimulator simulator(folder.Write("server.toml", kServer));
  const std::string password = folder.Write("password", bench::TSimulator::kPassword);
  std::filesystem::permissions(password, std::filesystem::perms::owner_read);
  const std::string schema = folder.Write("schema.mof", MakeSchema(reads));
  const std::string toolFile = folder.Write("ipmitool", MakeCommands(reads, "raw 0x3a 0x62"));
  const std::string rawFile = folder.Write("ipmi-raw", MakeCommands(reads, "0 0x3a 0x62"));
  const std::vector<std::string> collect = {bench::Velhost(),
                                            "collect",
                                            kClass,
                                            "--schema",
                                            bench::SharedData() + "/schema/00-qualifiers.mof",
                                            "--schema",
                                            schema,
                                            "--sp",
                                            std::string("lan:") + bench::TSimulator::kUser + "@" + simulator.Address(),
                                            "--password-file",
                                            password,
                                            "--cipher-suite",
                                            "3",
                                            "--machine-type",
                                            "6203",
                                            "--format",
                                            "json"};
  const auto units = static_cast<double>(reads.chips) * reads.registers;
  const int rounds = quick ? 1 : 11;
  // Our own share cannot be separated from other programs by wall-clock time, and the tools also sleep.
  const auto clock = [&] { return bench::ProcessorTime() + bench::ChildrenTime() + simulator.ProcessorTime(); };
  const auto used = bench::MeasureRounds({{[&] { bench::Run(collect); }, units},
                                          {[&] { ReadAll(simulator, reads); }, units},
                                          {[&] { CollectOnBareSession(simulator, reads); }, units}},
                                         rounds, clock);
  PrintRow("5a", "a bare loop of the same requests over the same library, in processor time", 0.9, used[0], used[1]);
  PrintPart("5a'", "the collector inside that loop, its trace discarded and nothing printed, against the bare loop",
            used[2], used[1]);
  const auto times = bench::MeasureRounds({{[&] { bench::Run(collect); }, units},
                                           {[&] {
                                              bench::Run(simulator.Ipmitool({"exec", toolFile}));
                                            },
                                            units},
                                           {[&] { bench::Run(simulator.IpmiRaw({"--file=" + rawFile})); }, units},
                                           {[&] { ReadAll(simulator, reads); }, units}},
                                          rounds, &bench::ElapsedTime);
  PrintRow("5b", "`ipmitool exec`, in elapsed time", 5, times[0], times[1]);
  PrintRow("5c", "`ipmi-raw --file`, in elapsed time", 1.5, times[0], times[2]);
  PrintPart("5b'", "the bare loop, against `ipmitool exec`, in elapsed time", times[3], times[1]);
  PrintPart("5c'", "the bare loop, against `ipmi-raw --file`, in elapsed time", times[3], times[2]);
}

/// Runs one way of reading once, for use with perf.
void ReadOnce(const std::string& way) {
  const TReads reads = {10, 1000};
  const bench::TFolder folder;
  const bench::TSimulator simulator(folder.Write("server.toml", kServer));
  way == "loop" ? ReadAll(simulator, reads) : CollectOnBareSession(simulator, reads);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc == 2 && argv[1][0] != '-') {
      ReadOnce(argv[1]);
      return 0;
    }
    Compare(bench::IsQuick(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "lan_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
