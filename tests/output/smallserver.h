// A small simulated server and what a collection of it gives: three classes, four instances, eight failed exchanges.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/output/outputfixture.h"

namespace tests {

/// One BMC node and two service processors. The register Log of both bridges and two of three storage areas are
/// absent, the second register block has one byte, and the third area holds less than it says.
class TSmallServer : public TOutputTest {
 protected:
  TSmallServer();

  TDocument document_;

 private:
  TPlan MakePlan();
  TPlannedClass Planned(const std::string& className, CollectorProfile::EPath path);
  TInstancePtr Statistics(const std::string& className, const std::string& identity, const std::string& elementName,
                          const TCIMDateTime& time, const std::vector<std::pair<std::string, TCIMValue>>& registers);
  void AddBridge();
  void AddMemoryControllers();
  void AddFile();
  std::vector<TExchangeFailure> Failures() const;
  TResultSummary Summary() const;

  TPlan smallPlan_;
};

}  // namespace tests
