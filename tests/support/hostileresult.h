// A result in which every text is the same. Header-only: the fuzz target is built without the tests.
#pragma once

#include <string>

#include "host/result/instancefacts.h"
#include "host/result/resultfacts.h"
#include "tests/support/namespaces.h"

namespace tests {

inline velhost::TResultHeader HostileHeader(const std::string& text) {
  velhost::TResultHeader header;
  header.run = {text, text, text, text, {{text, text}}};
  header.source = {{text, text}, text, true, text, text, text};
  header.machineType = text;
  header.plugin = {text, text, text};
  header.schema = {{text}, text, true};
  return header;
}

inline velhost::TInstanceFacts HostileFacts(const std::string& text) {
  velhost::TInstanceFacts facts;
  facts.key = text;
  facts.origin.emplace().timeRaw = text;
  facts.file = {text, 0, 0};
  facts.missing = {{text, {}, {}}};
  return facts;
}

inline velhost::TResultSummary HostileSummary(const std::string& text) {
  velhost::TResultSummary summary;
  summary.status = velhost::EResultStatus::kFailed;
  summary.message = text;
  summary.reasons = {{velhost::EReason::kStopped, text, 1, text}};
  return summary;
}

}  // namespace tests
