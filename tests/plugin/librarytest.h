// A fixture for collector parts that run against a replaced service-processor library.
#pragma once

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <string>
#include <vector>

#include "host/model/hostservices.h"
#include "plugin/torgaplugin.h"
#include "tests/plugin/replacedhost.h"
#include "tests/support/fakepluginmanager.h"
#include "tests/support/namespaces.h"
#include "tests/support/recordinglogger.h"

namespace tests {

/// For parts that work without a plugin object; the log facade is registered.
class TLibraryTest : public ::testing::Test {
 protected:
  TLibraryTest() {
    library = TReplacedHost();
    velhost::THostServices::SetCoreLogger(&logger);
    torgareg::LogMessage::setPluginInstance(&provider);
  }
  ~TLibraryTest() override {
    torgareg::LogMessage::setPluginInstance(nullptr);
    velhost::THostServices::SetCoreLogger(nullptr);
  }
  // Answers with success and no data until a test changes it.
  static bool Succeed(unsigned char* buffer, int* /*length*/) {
    buffer[4] = 0;
    return true;
  }
  static void ExpectArguments(std::size_t requests, int presetLength) {
    ASSERT_EQ(library.sent.size(), requests);
    for (const TSent& sent : library.sent) {
      EXPECT_EQ(sent.capacity, 256);
      EXPECT_TRUE(sent.flag);
      EXPECT_EQ(sent.presetLength, presetLength);
      EXPECT_EQ(sent.buffer[0], 0x01);
      EXPECT_EQ(sent.buffer[1], 0x20);
      for (std::size_t i = 46; i < 256; ++i) EXPECT_EQ(sent.buffer[i], 0) << i;
    }
  }

  TRecordingLogger logger;
  NKROVEL20::TPluginManagerProvider provider{"", nullptr};
  unsigned char out[14] = {};
  unsigned short length = 0;
};

/// With a plugin object, which needs no more than a plugin manager.
class TPluginLibraryTest : public TLibraryTest {
 protected:
  TPluginLibraryTest() {
    velhost::THostServices::SetPluginManager(boost::make_shared<TFakePluginManager>());
    plugin = new torgareg::TTORGARegPluginCallbacks();
  }
  ~TPluginLibraryTest() override {
    plugin->PrepareForUnload();
    velhost::THostServices::SetPluginManager({});
  }

  torgareg::TTORGARegPluginCallbacks* plugin;
};

}  // namespace tests
