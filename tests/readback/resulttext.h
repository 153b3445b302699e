// Results as text, for the tests that read them back.
#pragma once

#include <string>
#include <vector>

#include "host/base/storedbytes.h"
#include "host/base/text.h"
#include "host/readback/resultreader.h"
#include "tests/support/namespaces.h"

namespace tests {

inline velhost::TStoredBytes Stored(const std::string& text) {
  return std::vector<std::uint8_t>(text.begin(), text.end());
}

inline velhost::TResultReader ReadText(const std::string& text,
                                       velhost::EReadDetail detail = velhost::EReadDetail::kAll) {
  return {"r.json", Stored(text), detail};
}

/// "format_version" to "schema", with a comma at the end.
inline const std::string kHeader =
    R"("format_version":2,"source":{"sp":["lan:root@10.0.0.1"],"target":"lan:10.0.0.1","simulated":false,)"
    R"("server":{"serial":"S1"}},"machine_type":"6203",)"
    R"("plugin":{"name":"Collector","version":"1.2","interface_version":"1.0"},)"
    R"("schema":{"paths":["a.mof"],"sha256":"ab","example":false},)";
inline const std::string kRunId = "2b1c5a52-58d8-4e42-9b9d-1f7d3a4e5f60";
/// "status" to "run", of a result that is complete.
inline const std::string kSummary =
    R"("status":"complete","exit_status":0,"reasons":[],"exchanges":{"total":3,"failed":[]},"findings":[],"unread":[],)"
    R"("run":{"id":")" +
    kRunId +
    R"(","started":"2026-01-31T12:34:56.789+01:00","elapsed_ms":12,"host":"h","velhost":"2.0","labels":{"rack":"r1"}})";

/// An R8 instance of the class KROSG_A with one register, Status.
inline std::string Instance(int number, const std::string& value) {
  const std::string place = "node0/instance" + std::to_string(number);
  return R"({"kind":"instance","class":"KROSG_A","key":"KROSG_A/)" + place +
         R"(","origin":{"path":"r8","node":0,"chip":0,"instance":)" + std::to_string(number) +
         R"(},"properties":{"Status":[1,2,3]},"registers":{"Status":{"address":"0x00A0B0","width":32,"value":")" +
         value + R"(","fields":[]}}})";
}

inline std::string Document(const std::vector<std::string>& instances, const std::string& header = kHeader,
                            const std::string& summary = kSummary) {
  return R"({"kind":"instancecollection",)" + header + "\n\"instances\":[\n" + velhost::Listed(instances, ",") +
         "\n]," + summary + "}\n";
}

}  // namespace tests
