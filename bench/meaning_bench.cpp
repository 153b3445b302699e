// The time to read a schema whose registers are described, compared with the same schema without descriptions.
//
// 1,600 classes with the proportions of the public CIM schema, except that each property is a register. The registers
// of the one have "Fields" of nine elements, as many as those of the example schema have on average, and a "Role".
#include <cstddef>
#include <string>
#include <vector>

#include "bench/benchsupport.h"
#include "host/schema/schemareader.h"
#include "tests/support/memoryreader.h"

namespace {

using namespace velhost;

constexpr double kTarget = 1.5;
constexpr int kRounds = 15;

const char* const kQualifiers = R"(
Qualifier Description : string = null, Scope(any), Flavor(Translatable);
Qualifier MaxInstanceCount : uint16, Scope(class), Flavor(Restricted);
Qualifier SupportedMachineTypes : string[], Scope(class), Flavor(Restricted);
Qualifier Version : string = null, Scope(class), Flavor(Restricted, Translatable);
Qualifier Offset : uint32[], Scope(property);
Qualifier MaxLen : uint32, Scope(property);
)";

const char* const kMeaning = R"(
       Role ( "errors" ), 
       Fields {
        "0 Corrected read error",
        "1 Corrected error found by scrubbing",
        "2 Corrected error in a partial write",
        "4 Read repeated",
        "9:8 Rank",
        "12:10 Cause",
        "12:10=0 not known",
        "12:10=1-3 internal parity",
        "31:16/hex Channel and bank" }, )";

std::string Description(int lines) {
  std::string text = "Description (";
  for (int line = 0; line < lines; ++line) {
    text += " \n         \"The way in which the element is managed, as its owner states it in \"";
  }
  return text + " )";
}

void AppendClass(std::string& mof, int i, bool isDescribed) {
  const std::string number = std::to_string(i);
  mof += "   [Version ( \"2.13.0\" ), SupportedMachineTypes { \"6203\" }, MaxInstanceCount ( 2 ), \n    " +
         Description(4) + "]\nclass KROSG_Element" + number +
         (i % 4 == 0 ? std::string() : " : KROSG_Element" + std::to_string(i - 1)) + " {\n";
  for (int k = 0; k < 7; ++k) {
    mof += "\n      [" + Description(2 + k % 4) + ", " + (isDescribed ? kMeaning : "") + "\n       Offset { " +
           std::to_string(i * 64 + k * 8) + " }, MaxLen ( 8 )]\n   uint8 Register" + number + "_" + std::to_string(k) +
           "[];\n";
  }
  mof += "};\n\n";
}

std::string MakeSchema(int classes, bool isDescribed) {
  std::string mof = kQualifiers;
  for (int i = 0; i < classes; ++i) AppendClass(mof, i, isDescribed);
  return mof;
}

}  // namespace

int main(int argc, char** argv) {
  const bool isQuick = bench::IsQuick(argc, argv);
  const int classes = isQuick ? 40 : 1600;
  tests::TMemoryReader reader;
  std::vector<bench::TCandidate> candidates;
  std::vector<double> megabytes;
  bool isGood = true;
  for (const bool isDescribed : {true, false}) {
    const std::string name = isDescribed ? "described.mof" : "plain.mof";
    const std::string mof = MakeSchema(classes, isDescribed);
    megabytes.push_back(static_cast<double>(mof.size()) * 1e-6);
    reader.Add(name, mof);
    candidates.push_back(
        {[&reader, &isGood, name] { isGood = isGood && ReadSchema({name}, reader).diagnostics.empty(); }});
  }
  const auto times = bench::MeasureRounds(candidates, isQuick ? 1 : kRounds);
  const double ratio = bench::MedianRatio(times[0], times[1]);
  bench::Print({"11", "reading a schema of 1,600 classes whose registers have fields, against the same without them",
                "≤ 1.5", fmt::format("{:.2f}", ratio), ratio <= kTarget,
                fmt::format("{:.1f} ms for {:.1f} MB against {:.1f} ms for {:.1f} MB", bench::Median(times[0]) * 1e3,
                            megabytes[0], bench::Median(times[1]) * 1e3, megabytes[1])});
  return isGood ? 0 : 1;
}
