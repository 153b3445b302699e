// Prints a full collection under a locale: the trace, and the instances in every output format. Both the C
// and the C++ library use the locale, as in a host that sets it for the whole process.
//
//   underlocale NAME
#include <clocale>
#include <iostream>
#include <locale>
#include <sstream>

#include "host/output/writers.h"
#include "tests/robustness/sweephost.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;

class TStandardOutput : public ITextSink {
 public:
  void Write(std::string_view text) override {
    std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
  }
};

class TTraceHost : public sweep::THost {
 public:
  using sweep::THost::THost;
  void Log(EVELLogSeverity severity, const std::string& message) override {
    std::cout.put(static_cast<char>('0' + severity));
    std::cout << ' ' << message << "\n";
    sweep::THost::Log(severity, message);
  }
};

// Whether the locale can affect numbers: it has a decimal comma and a thousands separator.
bool SetLocale(const char* name) {
  if (std::setlocale(LC_ALL, name) == nullptr) return false;
  const std::locale wanted(name);
  std::locale::global(wanted);
  std::cout.imbue(std::locale::classic());
  std::ostringstream text;
  text << 4096 << ' ' << 0.5;
  std::cerr << name << " writes " << text.str() << "\n";
  return true;
}

void Write(EOutputForm form, const std::vector<boost::shared_ptr<const TInstance>>& instances) {
  TStandardOutput sink;
  const auto writer = MakeWriter(form, sink, {});
  TResultHeader header;
  header.machineType = "6203";
  writer->Begin(header);
  for (const auto& instance : instances) writer->Instance(*instance, {});
  TResultSummary summary;
  summary.exchanges = 4096;
  summary.elapsedMs = 12'345'678;
  writer->End(summary);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 || !SetLocale(argv[1])) {
    std::cerr << "usage: underlocale NAME, of a locale that is there\n";
    return 64;
  }
  for (const char* const machineType : {"6203", "4411"}) {
    TTraceHost host(machineType);
    const auto instances = host.Instances();
    for (const EOutputForm form :
         {EOutputForm::kTable, EOutputForm::kJson, EOutputForm::kJsonl, EOutputForm::kMof, EOutputForm::kCimXml}) {
      Write(form, instances);
    }
  }
  return 0;
}
