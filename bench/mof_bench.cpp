// The time to read a schema, compared with a pass over the same bytes that only counts braces.
//
// By default the schema is generated here: about 5 MB with the proportions of the public CIM schema, that is, 1,600
// classes with long descriptions in several pieces, many properties, value maps and associations. It can also be read
// from disk:
//
//   tests/schema/makeschema.py FOLDER
//   mof_bench FOLDER/schema.mof
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/schema/schemareader.h"
#include "tests/support/memoryreader.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;
using tests::TMemoryReader;

constexpr int kClasses = 1600;
constexpr int kRounds = 9;

const char* const kQualifiers = R"(
Qualifier Abstract : boolean = false, Scope(class, association, indication), Flavor(Restricted);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride);
Qualifier Description : string = null, Scope(any), Flavor(Translatable);
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride);
Qualifier MaxLen : uint32 = null, Scope(property, method, parameter);
Qualifier ModelCorrespondence : string[], Scope(any);
Qualifier Override : string = null, Scope(property, reference, method), Flavor(Restricted);
Qualifier UMLPackagePath : string = null, Scope(class, association, indication);
Qualifier ValueMap : string[], Scope(property, method, parameter);
Qualifier Values : string[], Scope(property, method, parameter), Flavor(Translatable);
Qualifier Version : string = null, Scope(class, association, indication), Flavor(Restricted, Translatable);
)";

std::string Description(int lines) {
  std::string text = "Description (";
  for (int line = 0; line < lines; ++line) {
    text += " \n         \"The way in which the element is managed, as its owner states it in \"";
  }
  return text + " )";
}

void AppendProperties(std::string& mof, const std::string& prefix) {
  for (int i = 0; i < 7; ++i) {
    const std::string name = prefix + std::to_string(i);
    mof += "\n      [" + Description(2 + i % 4) + ", \n";
    if (i == 3) {
      mof +=
          "       ValueMap { \"0\", \"1\", \"2\", \"3\", \"4..\", \"0x8000..\" }, \n"
          "       Values { \"Unknown\", \"Other\", \"Enabled\", \"Disabled\", \"DMTF Reserved\", \"Vendor\" }, \n";
    }
    mof += "       MaxLen ( 256 ), \n       ModelCorrespondence { \"CIM_ManagedElement.Other" + name + "\" }]\n";
    mof += i % 2 == 0 ? "   string " + name + ";\n" : "   uint16 " + name + " = " + std::to_string(i) + ";\n";
  }
}

void AppendClass(std::string& mof, int i) {
  const std::string number = std::to_string(i);
  mof += "// ==================================================================\n//  CIM_Element" + number +
         "\n// ==================================================================\n   [Version ( \"2.13.0\" ), \n"
         "    UMLPackagePath ( \"CIM::Core::Element\" ), \n    " +
         Description(4) + "]\nclass CIM_Element" + number +
         (i % 4 == 0 ? std::string() : " : CIM_Element" + std::to_string(i - 1)) + " {\n";
  AppendProperties(mof, "Property" + number + "_");
  mof += "\n      [" + Description(3) + "]\n   uint32 Change" + number + "(\n      [" + Description(2) +
         "]\n      uint16 Requested, \n      [" + Description(1) + "]\n      CIM_Element" + number +
         " REF Target);\n};\n\n";
}

void AppendAssociation(std::string& mof, int i) {
  const std::string number = std::to_string(i);
  mof += "   [Association, Version ( \"2.6.0\" ), \n    " + Description(3) + "]\nclass CIM_Relation" + number +
         " {\n\n      [Key, " + Description(1) + "]\n   CIM_Element" + number + " REF Antecedent;\n\n      [Key, " +
         Description(1) + "]\n   CIM_Element" + std::to_string(i - 1) + " REF Dependent;\n};\n\n";
}

std::string MakeSchema() {
  std::string mof = kQualifiers;
  for (int i = 0; i < kClasses; ++i) {
    if (i % 4 == 3) {
      AppendAssociation(mof, i - 1);
      continue;
    }
    AppendClass(mof, i);
  }
  return mof;
}

long CountBraces(const std::string& text) {
  long depth = 0;
  long deepest = 0;
  for (const char c : text) {
    if (c == '{') deepest = std::max(deepest, ++depth);
    if (c == '}') --depth;
  }
  return deepest;
}

double ProcessorTime() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// The minimum over several rounds, in seconds of processor time, which excludes other programs.
template <typename TPrepare, typename TWork>
double Shortest(TPrepare prepare, TWork work) {
  double shortest = 1e9;
  for (int round = 0; round < kRounds; ++round) {
    prepare();
    const double start = ProcessorTime();
    work();
    shortest = std::min(shortest, ProcessorTime() - start);
  }
  return shortest;
}

void Print(double megabytes, double pass, double read, const TSchemaResult& result) {
  std::printf("%.1f MB, %zu classes, %zu findings\n", megabytes, result.cimNamespace->Classes().size(),
              result.diagnostics.size());
  std::printf("counting braces %6.2f ms  %7.1f MB/s\n", pass * 1e3, megabytes / pass);
  std::printf("reading         %6.2f ms  %7.1f MB/s\n", read * 1e3, megabytes / read);
  std::printf("ratio           %6.1f\n", read / pass);
}

// Files on disk, opened and read again in every round, as by the command; so does the pass.
TSchemaResult MeasureFiles(const std::string& path) {
  TFileReader reader;
  TSchemaResult result = ReadSchema({path}, reader);
  std::vector<std::string> names;
  for (const auto& source : *result.sources) names.push_back(source->Name());
  std::size_t size = 0;
  for (const std::string& name : names) size += reader.Read(name, SIZE_MAX).size();
  volatile long braces = 0;
  const auto countAll = [&] {
    for (const std::string& name : names) braces = CountBraces(reader.Read(name, SIZE_MAX));
  };
  const double pass = Shortest([] {}, countAll);
  const double read = Shortest([&] { result = {}; }, [&] { result = ReadSchema({path}, reader); });
  std::printf("%zu files on disk, ", names.size());
  Print(static_cast<double>(size) / 1e6, pass, read, result);
  return result;
}

TSchemaResult MeasureMemory() {
  const std::string mof = MakeSchema();
  TMemoryReader reader;
  reader.Add("bench.mof", mof);
  TSchemaResult result;
  volatile long braces = 0;
  const double pass = Shortest([] {}, [&] { braces = CountBraces(mof); });
  const double read = Shortest([&] { result = {}; }, [&] { result = ReadSchema({"bench.mof"}, reader); });
  std::printf("one text in memory, ");
  Print(static_cast<double>(mof.size()) / 1e6, pass, read, result);
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  const TSchemaResult result = argc > 1 ? MeasureFiles(argv[1]) : MeasureMemory();
  return result.diagnostics.empty() ? 0 : 1;
}
