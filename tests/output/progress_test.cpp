#include "host/output/progress.h"

#include <gtest/gtest.h>

#include "tests/support/namespaces.h"
#include "wire/registerread.h"
#include "wire/storagearea.h"

namespace tests {
namespace {

using std::chrono::milliseconds;

/// A progress line on paper: a clock that is set by hand, and what was written since the last look.
class Progress : public testing::Test {
 protected:
  TProgressTarget Target() {
    return {[this](std::string_view text) { written_ += text; }, [this] { return width_; }, [this] { return now_; }};
  }
  std::string Written() { return std::exchange(written_, {}); }
  void Wait(int time) { now_ += milliseconds(time); }

  void Register() {
    const wire::TCommandBuffer request(wire::RegisterRead::kNetworkFunction, wire::RegisterRead::kRegisterRead, 4);
    line_->OnIpmi({0, true, request, true, request, 9, {}});
  }
  static wire::TCommandBuffer Area(std::uint8_t subCommand) {
    wire::TCommandBuffer request(wire::StorageArea::kNetworkFunction, wire::StorageArea::kCommand, 14);
    request[9] = 0x39;
    request[10] = 0x30;
    request[wire::StorageArea::kSubCommand] = subCommand;
    return request;
  }
  /// A size request for "cpu_err" on node 1, answered with four bytes.
  void Size(const std::array<std::uint8_t, 4>& size, std::uint8_t completionCode = 0) {
    wire::TCommandBuffer request = Area(wire::StorageArea::kQuerySize);
    const std::string name = "cpu_err";
    for (std::size_t i = 0; i < name.size(); ++i) request[13 + i] = static_cast<std::uint8_t>(name[i]);
    wire::TCommandBuffer response = request;
    response[4] = completionCode;
    response[5] = 7;
    for (std::size_t i = 0; i < size.size(); ++i) response[12 + i] = size.at(i);
    line_->OnIpmi({1, true, request, true, response, 16, {}});
  }
  /// A read request answered with so many bytes.
  void Read(std::uint8_t count, std::uint8_t completionCode = 0) {
    const wire::TCommandBuffer request = Area(wire::StorageArea::kRead);
    wire::TCommandBuffer response = request;
    response[4] = completionCode;
    response[5] = static_cast<std::uint8_t>(5 + count);
    response[12] = count;
    response[13] = 0;
    line_->OnIpmi({1, true, request, true, response, 14 + count, {}});
  }
  void Close() {
    const wire::TCommandBuffer request = Area(wire::StorageArea::kClose);
    line_->OnIpmi({1, true, request, true, request, 12, {}});
  }

  std::string written_;
  int width_ = 100;
  TProgressTarget::TClock::time_point now_{};
  std::optional<TProgressLine> line_{std::in_place, Target()};
};

TEST_F(Progress, ShowsClassExchangesRateAndTime) {
  line_->BeginClass(3, 7, "KROSG_A");
  EXPECT_EQ(Written(), "\r[3/7] KROSG_A  0 exchanges, 0:00");
  Wait(500);
  Register();
  EXPECT_EQ(Written(), "\r[3/7] KROSG_A  1 exchange, 0:00 ");
  Wait(62000);
  for (int i = 0; i < 249; ++i) Register();
  Wait(100);
  Register();  // 251 in 62.6 seconds
  EXPECT_EQ(Written(), "\r[3/7] KROSG_A  2 exchanges, 0/s, 1:02\r[3/7] KROSG_A  251 exchanges, 4/s, 1:02");
}

TEST_F(Progress, CountsDotCommands) {
  const dotCmd command(2, 0, 0, nullptr, nullptr);
  line_->OnDot({0, true, command, true, {}, 0, {}});
  EXPECT_EQ(Written(), "\r1 exchange, 0:00");
}

TEST_F(Progress, DoesNotCountWhatIsRefusedAfterAStop) {
  const dotCmd command(2, 0, 0, nullptr, nullptr);
  line_->OnDot({0, false, command, false, {}, 0, {}});
  const wire::TCommandBuffer request(wire::RegisterRead::kNetworkFunction, wire::RegisterRead::kRegisterRead, 4);
  line_->OnIpmi({0, false, request, false, request, 0, {}});
  EXPECT_EQ(Written(), "");
}

TEST_F(Progress, DrawsAtMostTenTimesASecond) {
  line_->BeginClass(1, 1, "A");
  for (int i = 0; i < 1000; ++i) {
    Wait(1);
    Register();
  }
  const std::string text = Written();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), 11);
}

TEST_F(Progress, ShowsACaptureFileWithItsSizeAndTheTimeLeft) {
  line_->BeginClass(1, 1, "F");
  Size({0xE8, 0x03, 0, 0});  // 1000 bytes
  for (int i = 0; i < 25; ++i) Read(10);
  Written();
  Wait(10000);
  Register();  // 250 bytes in ten seconds: 750 more take thirty
  EXPECT_EQ(Written(), "\r[1/1] F  node 1 cpu_err 250 of 1000 bytes, 0:30 left  27 exchanges, 3/s, 0:10");
  Wait(100);
  Close();
  EXPECT_EQ(Written(), "\r[1/1] F  28 exchanges, 3/s, 0:10" + std::string(45, ' '));
}

TEST_F(Progress, ShowsACaptureFileWithoutAUsableSize) {
  Size({0xFF, 0xFF, 0xFF, 0xFF});  // -1
  Written();
  Wait(1000);
  Read(100);
  EXPECT_EQ(Written(), "\rnode 1 cpu_err 100 bytes  2 exchanges, 2/s, 0:01");
}

TEST_F(Progress, IgnoresRefusedSizesAndReads) {
  Size({1, 0, 0, 0}, 0xCB);
  Written();
  Wait(200);
  Register();
  EXPECT_EQ(Written(), "\r2 exchanges, 0:00");
  Size({0xE8, 3, 0, 0});
  Read(10, 0xC3);
  Wait(200);
  Register();
  EXPECT_EQ(Written(), "\rnode 1 cpu_err 0 of 1000 bytes  5 exchanges, 0:00");
}

TEST_F(Progress, BelievesNoMoreBytesThanAResponseCarries) {
  Size({0xFF, 0xFF, 0, 0});
  const wire::TCommandBuffer request = Area(wire::StorageArea::kRead);
  wire::TCommandBuffer response = request;
  response[4] = 0;
  response[5] = 5 + 100;
  response[12] = response[13] = 0xFF;  // says 65535
  line_->OnIpmi({1, true, request, true, response, 114, {}});
  response[5] = 3;  // too short for a count
  line_->OnIpmi({1, true, request, true, response, 12, {}});
  Wait(200);
  Written();
  Register();
  EXPECT_EQ(Written(), "\rnode 1 cpu_err 0.1 of 65.5 kB  4 exchanges, 0:00");
}

TEST_F(Progress, FitsTheTerminal) {
  width_ = 20;
  line_->BeginClass(1, 2, "KROSG_VO_MEMCTL_StatisticData");
  EXPECT_EQ(Written(), "\r[1/2]  0:00");
  line_->Clear();
  Written();
  width_ = 41;  // the last one stays free
  Wait(100);
  Register();
  EXPECT_EQ(Written(), "\r[1/2] KROSG_VO_MEMCT..  1 exchange, 0:00");
}

TEST_F(Progress, LeavesOutPartsRatherThanToCutAFigure) {
  line_->BeginClass(7, 7, "KROSG_DCAPFile");
  Size({0, 0xFA, 0, 0});  // 64000 bytes
  for (int i = 0; i < 120; ++i) Read(100);
  const auto shown = [this](int width) {
    width_ = width;
    Wait(10000);
    line_->Clear();
    Written();
    Register();
    return Written();
  };
  EXPECT_EQ(shown(100), "\r[7/7] KROSG_DCAPFile  node 1 cpu_err 12.0 of 64.0 kB, 0:43 left  122 exchanges, 12/s, 0:10");
  EXPECT_EQ(shown(80), "\r[7/7] KROSG_DCAPFile  node 1 cpu_err 12.0 of 64.0 kB  123 exchanges, 6/s, 0:20");
  EXPECT_EQ(shown(75), "\r[7/7] KROSG_DCAPFile  node 1 cpu_err 12.0 of 64.0 kB  124 exchanges, 0:30");
  EXPECT_EQ(shown(70), "\r[7/7]  node 1 cpu_err 12.0 of 64.0 kB  125 exchanges, 0:40");
  EXPECT_EQ(shown(50), "\r[7/7]  node 1 cpu_err 12.0 of 64.0 kB  0:50");
  EXPECT_EQ(shown(30), "\r[7/7]  1:00");
}

TEST_F(Progress, StaysAwayWhileItIsHeld) {
  line_->BeginClass(1, 1, "A");
  Written();
  line_->Hold();
  EXPECT_EQ(Written(), "\r                          \r");
  Wait(1000);
  Register();
  EXPECT_EQ(Written(), "");
  line_->Resume();
  EXPECT_EQ(Written(), "");
  Register();
  EXPECT_EQ(Written(), "\r[1/1] A  2 exchanges, 2/s, 0:01");
}

TEST_F(Progress, LeavesNothingBehind) {
  line_->BeginClass(1, 1, "A");
  const std::string blanks(27, ' ');
  EXPECT_EQ(Written(), "\r[1/1] A  0 exchanges, 0:00");
  line_->Clear();
  EXPECT_EQ(Written(), "\r" + blanks.substr(1) + "\r");
  line_->Clear();
  EXPECT_EQ(Written(), "");
  Wait(100);
  Register();
  Written();
  line_.reset();
  EXPECT_EQ(Written(), "\r" + std::string(25, ' ') + "\r");
}

TEST_F(Progress, ShowsNamesWithoutDisturbingTheTerminal) {
  line_->BeginClass(1, 1, "A\x1b[2J");
  EXPECT_EQ(Written(), "\r[1/1] A\\x1b[2J  0 exchanges, 0:00");
}

}  // namespace
}  // namespace tests
