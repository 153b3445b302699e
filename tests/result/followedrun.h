// A run that is followed along its plan, exchange by exchange, without a collector:
//
//   Plans({{"KROSG_VO_MEMCTL_StatisticData"}});
//   Sees(Register(0, 0x10).Answers(RegisterData({1, 2, 3, 4, 5, 6, 7, 8})));
//   EXPECT_EQ(Commits("KROSG_VO_MEMCTL_StatisticData"), "VO_MEMCTL/node0/instance0 ...");
//   EXPECT_THAT(Ends(), ElementsAre("1 exchange", "failed ...", "unread ...", "reason ..."));
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/result/planfollower.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"
#include "tests/support/scriptedserviceprocessor.h"

namespace tests {

inline const std::string kVoMemory = "KROSG_VO_MEMCTL_StatisticData";
inline const std::string kVoBridge = "KROSG_VO_PCIIOBRIDGE_StatisticData";
inline const std::string kBlockClass = "KROSG_J";  ///< below the base class of the memory controllers
inline const std::string kFileClass = "KROSG_DCAPFile";

/// One line: "VO_MEMCTL/node0/instance0, chip 1, time 12 34 56 78, A 000010 = 00000102; missing B 000020 code 203;
/// found A 1 without B".
std::string Shown(const TInstanceFacts& facts, const TInstance& instance);

class TFollowedRun : public testing::Test {
 protected:
  TFollowedRun();

  /// A class that serves the machine, with the direct superclass "Chipset" unless it is named.
  static TClassBuilder Class(const std::string& name, std::uint16_t instances);
  void Add(const TClassBuilder& builder) { schema_->AddClass(builder); }

  /// Makes the plan of these requests and begins the first one.
  void Plans(const std::vector<std::vector<std::string>>& requests);
  /// The planned registers of a class have these meanings, in their order.
  void Means(const std::string& className, TClassMeaning meaning);
  void Begins(std::size_t request) { follower_->BeginRequest(request); }
  /// The exchange is made and has this answer.
  void Sees(const TStep& step) { See(step, true); }
  /// The run is stopped, and refuses the exchange.
  void SeesRefused(const TStep& step) { See(step.Lost(), false); }
  void SeesSizeRefused() { follower_->OnSizeRefused("too large"); }
  /// Commits an instance of the class in which these registers are set.
  std::string Commits(const std::string& name, const std::map<std::string, TBytes>& registers = {});
  /// The request ends.
  void Returns(const std::string& exception = {}) { follower_->EndRequest(exception); }
  /// The request and the run end. What is missing, one line each: exchanges, failures, unread instances, reasons.
  std::vector<std::string> Ends(const std::string& exception = {});
  /// The message of the reason, of this class or else the first one.
  std::string MessageOf(EReason code, const std::string& className = {}) const;

  TPlanServer server = {1, true, true, true, 2};
  bool isCollector = true;
  ENoAnswer noAnswer = ENoAnswer::kLost;
  std::unique_ptr<TPlanFollower> follower_;

 private:
  void See(const TStep& step, bool isAttempted);
  TInstance Filled(const std::string& name, const std::map<std::string, TBytes>& registers) const;

  boost::shared_ptr<TNamespace> schema_;
  TPlan plan_;
  std::unique_ptr<TResultReasons> reasons_;
  TResultSummary summary_;
};

}  // namespace tests
