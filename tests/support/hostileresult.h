// A result in which every text is the same. Header-only: the fuzz target is built without the tests.
#pragma once

#include <memory>
#include <string>
#include <utility>

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

inline velhost::TFinding HostileFinding(const std::string& text) {
  velhost::TErrorRegister place = {text, text, {}, text, 1, false, {text}, {{text, 1, false}, {text, {}, false}}};
  place.origin.timeRaw = text;
  velhost::TFinding finding;
  finding.place = std::make_shared<const velhost::TErrorRegister>(std::move(place));
  finding.bits = text;
  finding.name = text;
  finding.text = text;
  return finding;
}

inline velhost::TInstanceFacts HostileFacts(const std::string& text) {
  velhost::TInstanceFacts facts;
  facts.key = text;
  facts.origin.emplace().timeRaw = text;
  facts.file = {text, 0, 0};
  facts.missing = {{text, {}, {}}};
  facts.findings = {HostileFinding(text)};
  return facts;
}

inline velhost::TResultSummary HostileSummary(const std::string& text) {
  velhost::TResultSummary summary;
  summary.status = velhost::EResultStatus::kFailed;
  summary.message = text;
  summary.reasons = {{velhost::EReason::kStopped, text, 1, text}};
  summary.findings = {HostileFinding(text)};
  return summary;
}

}  // namespace tests
