// Pairs of results that are compared, for tests.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/change/resultdiff.h"
#include "tests/readback/resulttext.h"

namespace tests {

/// What changed from one text to the other.
inline velhost::TDifferences Compared(const std::string& before, const std::string& after) {
  velhost::TComparedSide one("before.json", Stored(before), nullptr);
  velhost::TComparedSide other("after.json", Stored(after), nullptr);
  return CompareResults(one, other);
}

/// An instance of KROSG_A with these registers, "NAME":{...}, and what is missing from it.
inline std::string InstanceWith(const std::string& registers, const std::string& missing = "",
                                const std::string& key = "KROSG_A/node0/instance0") {
  const std::string gaps = missing.empty() ? "" : R"("incomplete":true,"missing":[)" + missing + "],";
  return R"({"kind":"instance","class":"KROSG_A","key":")" + key +
         R"(","origin":{"path":"r8","node":0,"chip":0,"instance":0},)" + gaps + R"("properties":{},"registers":{)" +
         registers + "}}";
}

/// "NAME":{...} of a register of 32 bits with more members, which begin with a comma.
inline std::string Register(const std::string& name, const std::string& value, const std::string& fields = "",
                            const std::string& more = "") {
  return "\"" + name + R"(":{"address":"0x0000A0","width":32,"value":")" + value + "\"" + more + R"(,"fields":[)" +
         fields + "]}";
}

inline std::string CaptureFile(const std::string& hexPairs, const std::string& missing = "") {
  const std::string gaps = missing.empty() ? "" : R"("incomplete":true,"missing":[)" + missing + "],";
  return R"({"kind":"instance","class":"D","key":"D/node0/cpu_err","origin":{"path":"ffdc","node":0},)" + gaps +
         R"("file":{"area":"cpu_err","reported_size":1,"received":1},"properties":{"ErrRawData":")" + hexPairs + "\"}}";
}

/// The end of a result that has these entries beside its instances.
inline std::string SummaryWith(const std::string& unread, const std::string& reasons = "",
                               const std::string& findings = "") {
  std::string text = kSummary;
  text.insert(text.find("\"unread\":[") + 10, unread);
  text.insert(text.find("\"findings\":[") + 12, findings);
  text.insert(text.find("\"reasons\":[") + 11, reasons);
  return text;
}

inline std::string Unread(const std::string& key, const std::string& code) {
  return R"({"class":"KROSG_A","key":")" + key + R"(","origin":{"path":"r8","node":0,"chip":0,"instance":0},"code":")" +
         code + "\"}";
}

}  // namespace tests
