// The environment of a collector under test: a host with a double for each of its services.
#pragma once

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "host/model/ciminstance.h"
#include "host/model/cimnamespace.h"
#include "host/model/hostservices.h"
#include "tests/support/classbuilder.h"
#include "tests/support/fakepluginmanager.h"
#include "tests/support/namespaces.h"
#include "tests/support/recordinglogger.h"
#include "tests/support/scriptedserviceprocessor.h"

namespace tests {

class TFakeEnvironment : public velhost::IHostEnvironment {
 public:
  std::string MachineType() override {
    ++machineTypeQueries;
    return machineType;
  }
  NKROVEL20::TCIMDateTime LocalTime() override {
    ++clockReadings;
    return localTime;
  }

  std::string machineType = "6203";
  NKROVEL20::TCIMDateTime localTime{2026, 1, 31, 12, 34, 56, 789, 60};
  int machineTypeQueries = 0;
  int clockReadings = 0;
};

/// Installs the doubles and removes them again. Keeps instances that are committed to `ns`.
class TCollectorTest : public ::testing::Test {
 protected:
  TCollectorTest();
  ~TCollectorTest() override;

  /// The machine type for the dispatcher (the host's) and for the collectors (the namespace's).
  void SetMachineType(const std::string& machineType);
  boost::shared_ptr<velhost::TCIMClass> Class(const std::string& name) const { return ns->FindClass(name); }
  /// The root class of the register classes, with the four identification properties.
  void AddStatisticBase() { ns->AddClass(TClassBuilder("KROSG_StatisticBase").Identification()); }
  void AddCaptureClass() { ns->AddClass(TClassBuilder("KROSG_DCAPFile").CaptureProperties()); }

  TRecordingLogger logger;
  TFakeEnvironment environment;
  TScriptedServiceProcessor sp;
  boost::shared_ptr<TFakePluginManager> pluginManager;
  boost::shared_ptr<velhost::TNamespace> ns;
  std::vector<boost::shared_ptr<const velhost::TInstance>> committed;
};

/// Adds the three base classes under which the collector looks for delegates.
void AddJfrBases(velhost::TNamespace& schema, const std::string& superClass = {});

/// The text of an instance's property; "(not set)" if it is not set.
std::string TextOf(const velhost::TInstance& instance, const std::string& property);
/// The text of a collected property; "(absent)" if it is absent.
std::string TextOf(const NKROVEL20::TPropertyMap& map, const std::string& property);
/// The numbers in an array value.
std::vector<unsigned int> NumbersOf(const NKROVEL20::TCIMValue& value);

}  // namespace tests
