// A stopped run does not finish reading its inputs.
#include <gtest/gtest.h>

#include "host/bmc/record/image.h"
#include "host/bmc/record/replay.h"
#include "host/bmc/sim/serverfile.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

TEST(StopReading, EndsAServerFileBetweenItsNodes) {
  TStoppingReader reader;
  reader.Add("server.toml", "machine_type = \"6203\"\n[[bmc_node]]\n[[bmc_node]]\n[[bmc_node]]\n");
  EXPECT_EQ(LooksThatEnd(reader, [&reader] { ReadServerFile("server.toml", reader); }), 4U);
}

TEST(StopReading, EndsARecordingBetweenItsLines) {
  TStoppingReader reader;
  reader.Add(
      "run.jsonl",
      "{\"format\":\"velhost-recording\",\"version\":1,\"machine_type\":\"6203\",\"started\":\"2026-01-31T12:34:56Z\","
      "\"utc_offset_minutes\":0,\"discovery\":{\"bmc_nodes\":1,\"ipmi_driver\":true,\"dot_command\":false,"
      "\"sp_comm\":false,\"service_processors\":0}}\n"
      "{\"kind\":\"clock\",\"local_time\":\"2026-01-31T12:34:56Z\"}\n"
      "{\"kind\":\"clock\",\"local_time\":\"2026-01-31T12:34:56Z\"}\n");
  EXPECT_EQ(LooksThatEnd(reader, [&reader] { TReplay("run.jsonl", reader); }), 3U);
  const TStoredBytes recording = TCheckedRecording::Open("run.jsonl", reader);
  EXPECT_EQ(LooksThatEnd(reader, [&] { TImage("run.jsonl", recording, &reader); }), 3U);
}

}  // namespace
}  // namespace tests
