#include "host/output/progress.h"

#include <gtest/gtest.h>

#include "tests/support/namespaces.h"
namespace tests {
namespace {

using std::chrono::milliseconds;

/// A progress line with a clock that is set by hand; Written() returns what was written since the last call.
class Progress : public testing::Test {
 protected:
  TProgressTarget Target() {
    return {[this](std::string_view text) { written_ += text; }, [this] { return width_; }, [this] { return now_; }};
  }
  std::string Written() { return std::exchange(written_, {}); }
  void Wait(int time) { now_ += milliseconds(time); }

  void Register() { Answered(TIpmiRequest(0, 0x3A, 0, 0x62, {}), {}); }
  void Answered(const TIpmiRequest& request, const TIpmiAnswer& answer) { line_->OnIpmi({request, &answer, {}}); }
  /// A storage-area request to node 1: the sub-command and its data.
  static TIpmiRequest Area(std::uint8_t subCommand, const std::string& rest = {}) {
    std::vector<std::uint8_t> data = {0x39, 0x30, 0x00, subCommand};
    data.insert(data.end(), rest.begin(), rest.end());
    return {1, 0x2E, 0, 0x90, data};
  }
  /// A size request for "cpu_err" on node 1, answered with four bytes.
  void Size(const std::array<std::uint8_t, 4>& size, std::uint8_t completionCode = 0) {
    Answered(Area(0x06, "cpu_err"), {completionCode, {0x39, 0x30, 0x00, size[0], size[1], size[2], size[3]}});
  }
  static TIpmiAnswer ReadAnswer(std::uint8_t count, std::uint8_t completionCode = 0) {
    TIpmiAnswer answer = {completionCode, {0x39, 0x30, 0x00, count, 0x00}};
    answer.data.resize(5U + count);
    return answer;
  }
  /// A read request that is answered with `count` bytes.
  void Read(std::uint8_t count, std::uint8_t completionCode = 0) {
    Answered(Area(0x02), ReadAnswer(count, completionCode));
  }
  void Close() { Answered(Area(0x05), {0, {0x39, 0x30, 0x00}}); }

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

TEST_F(Progress, ShowsHowManyPlannedReadsWereMade) {
  std::uint64_t made = 12;
  line_->SetPlanned(84, [&made] { return made; });
  line_->BeginClass(3, 7, "KROSG_A");
  EXPECT_EQ(Written(), "\r[3/7] KROSG_A  reads 12 of 84, 0 exchanges, 0:00");
  Wait(500);
  made = 13;
  Register();
  EXPECT_EQ(Written(), "\r[3/7] KROSG_A  reads 13 of 84, 1 exchange, 0:00 ");
}

TEST_F(Progress, ShowsNoReadsWhereNoneIsPlanned) {
  line_->SetPlanned(0, [] { return 0; });
  line_->BeginClass(1, 1, "A");
  EXPECT_EQ(Written(), "\r[1/1] A  0 exchanges, 0:00");
}

TEST_F(Progress, KeepsPlannedReadsLongerThanExchanges) {
  line_->SetPlanned(84, [] { return 84; });
  width_ = 30;
  line_->BeginClass(3, 7, "KROSG_A");
  EXPECT_EQ(Written(), "\r[3/7]  reads 84 of 84, 0:00");
  width_ = 26;
  line_->BeginClass(4, 7, "KROSG_A");
  Wait(100);
  Register();
  EXPECT_EQ(Written(), "\r[4/7]  0:00" + std::string(16, ' '));
}

TEST_F(Progress, CountsDotCommands) {
  const dotCmd command(2, 0, 0, nullptr, nullptr);
  const TDotAnswer answer;
  line_->OnDot({{0, command, 0}, &answer, {}});
  EXPECT_EQ(Written(), "\r1 exchange, 0:00");
}

TEST_F(Progress, DoesNotCountExchangesRefusedAfterAStop) {
  const dotCmd command(2, 0, 0, nullptr, nullptr);
  line_->OnDot({{0, command, 0}, nullptr, {}, ENoAnswer::kNotSent});
  line_->OnIpmi({Area(0x02), nullptr, {}, ENoAnswer::kNotSent});
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
  Register();  // 250 bytes in ten seconds: the remaining 750 take thirty
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

TEST_F(Progress, CountsNoMoreBytesThanAResponseCarries) {
  Size({0xFF, 0xFF, 0, 0});
  TIpmiAnswer answer = ReadAnswer(100);
  answer.data[3] = answer.data[4] = 0xFF;  // claims 65535
  Answered(Area(0x02), answer);
  answer.data.resize(3);  // too short for a count
  Answered(Area(0x02), answer);
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
  width_ = 41;  // the last column stays free
  Wait(100);
  Register();
  EXPECT_EQ(Written(), "\r[1/2] KROSG_VO_MEMCT..  1 exchange, 0:00");
}

TEST_F(Progress, LeavesOutPartsRatherThanCutAFigure) {
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

TEST_F(Progress, StaysHiddenWhileItIsHeld) {
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
