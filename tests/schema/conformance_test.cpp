// Conformance with DSP0004: the annotated files of conformance/.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/schema/annotatedmof.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

// Names without ".mof".
std::vector<std::string> AnnotatedFiles() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(VELHOST_CONFORMANCE_FOLDER)) {
    if (entry.path().extension() == ".mof") names.push_back(entry.path().stem());
  }
  std::sort(names.begin(), names.end());
  return names;
}

TAnnotatedMof Parse(const std::string& name) {
  std::ifstream file(fs::path(VELHOST_CONFORMANCE_FOLDER) / (name + ".mof"), std::ios::binary);
  return ParseAnnotatedMof(std::string(std::istreambuf_iterator<char>(file), {}));
}

class Conformance : public testing::TestWithParam<std::string> {};

TEST_P(Conformance, CasesAreReadAsAnnotated) {
  const std::string at = GetParam() + ".mof:";
  const TAnnotatedMof annotated = Parse(GetParam());
  for (const std::string& what : annotated.malformed) ADD_FAILURE() << at << what;
  for (const TAnnotatedCase& one : annotated.cases) {
    for (const std::string& difference : Differences(one)) ADD_FAILURE() << at << difference << "\ncase " << one.name;
  }
}

INSTANTIATE_TEST_SUITE_P(Mof, Conformance, testing::ValuesIn(AnnotatedFiles()),
                         [](const auto& file) { return file.param; });

TEST(ConformanceCases, AreNotLost) {
  std::size_t valid = 0;  // some of them with warnings
  std::size_t invalid = 0;
  for (const std::string& name : AnnotatedFiles()) {
    for (const TAnnotatedCase& one : Parse(name).cases) ++(one.hasErrors ? invalid : valid);
  }
  EXPECT_GE(valid, 90U);
  EXPECT_GE(invalid, 216U);
}

}  // namespace
}  // namespace tests
