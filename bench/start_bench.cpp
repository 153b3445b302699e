// A whole collection from the default server, from start to end of the process, compared with one ipmitool process that
// sends one raw command to the simulated BMC. Measures processor time, including that of the BMC.
//
// start_bench [--quick]. Requires ipmi_sim (package openipmi) and ipmitool.
#include "bench/benchsupport.h"
#include "bench/processes.h"

namespace {

void Compare(bool quick) {
  const bench::TSimulator simulator(bench::SharedData() + "/servers/demo.toml");
  const int repeated = quick ? 1 : 5;
  const auto repeat = [repeated](const std::vector<std::string>& command) {
    return [repeated, command] {
      for (int i = 0; i < repeated; ++i) bench::Run(command);
    };
  };
  const std::vector<std::string> raw = {"raw", "0x3a", "0x6f"};  // the timestamp; the server has no fault for it
  const auto clock = [&] { return bench::ChildrenTime() + simulator.ProcessorTime(); };
  const auto times =
      bench::Measure({{repeat({bench::Velhost(), "collect", "--format", "json"}), static_cast<double>(repeated)},
                      {repeat(simulator.Ipmitool(raw)), static_cast<double>(repeated)}},
                     quick ? 1 : 15, clock);
  const double ratio = times[0] / times[1];
  bench::Print({"7", "`velhost collect` on the default server, start to end, against one `ipmitool raw` process",
                "≤ 0.5", fmt::format("{:.2f}", ratio), ratio <= 0.5,
                fmt::format("{:.1f} ms against {:.1f} ms", times[0] * 1e3, times[1] * 1e3)});
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Compare(bench::IsQuick(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "start_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
