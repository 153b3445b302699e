// Register blocks, and a collector that decodes them.
#pragma once

#include <memory>
#include <string>

#include "jfr/TJFRErrorData.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {

inline constexpr const char* kBridgeBase = "KROSG_PCIIOBRIDGE_StatisticData";

/// A block of 4096 bytes in which byte i is the low eight bits of i, with the header 2024-12-31 23:59:58 at
/// its start.
class TBlock {
 public:
  TBlock() {
    for (std::size_t i = 0; i < 4096; ++i) bytes_.push_back(static_cast<std::uint8_t>(i));
    Put(0, {0x00, 0x18, 0x0C, 0x1F, 0x17, 0x3B, 0x3A});
  }
  TBlock& Put(std::size_t offset, const TBytes& bytes) {
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
    return *this;
  }
  /// Clears month and day in both header copies.
  TBlock& WithoutTime() { return Put(2, {0, 0}).Put(2042, {0, 0}); }
  /// Clears the day in the first copy and writes 2001-02-03 04:05:06 into the second.
  TBlock& TimeInSecondCopy() { return Put(3, {0}).Put(2040, {0xAA, 1, 2, 3, 4, 5, 6}); }
  TBytes First(std::size_t count) const {
    return TBytes(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(count));
  }
  const TBytes& Bytes() const { return bytes_; }
  unsigned char* Data() { return bytes_.data(); }

 private:
  TBytes bytes_;
};

class TBlockTest : public TProbedPartTest {
 protected:
  TBlockTest() {
    sp.takesDotCommands = true;
    sp.serviceProcessors = 1;
    AddBases();
  }

  void AddBases() {
    AddStatisticBase();
    ns->AddClass(TClassBuilder(kBridgeBase, "KROSG_StatisticBase"));
  }
  /// Starts with another namespace, for a second class of the same name.
  void StartAnew() {
    collector.reset();
    RenewNamespace();
    AddBases();
  }

  static TClassBuilder Chip() { return TClassBuilder("Bridge6203", kBridgeBase); }
  /// Adds the class and creates its collector, which sees the host through `probe`.
  torgareg::TJFRErrorData& Collector(const TClassBuilder& definition, const std::string& base = kBridgeBase) {
    requested = probe.Wrap(boost::shared_ptr<NKROVEL20::ICIMClass>(ns->AddClass(definition)));
    collector =
        std::make_unique<torgareg::TJFRErrorData>(boost::shared_ptr<NKROVEL20::ICIMClass>(Class(base)), requested);
    logger.Clear();
    return *collector;
  }
  boost::shared_ptr<NKROVEL20::ICIMPropertyDecl> Property(const std::string& name) {
    return TProbedPartTest::Property("Bridge6203", name);
  }

  boost::shared_ptr<NKROVEL20::ICIMClass> requested;
  std::unique_ptr<torgareg::TJFRErrorData> collector;
};

}  // namespace tests
