#include "host/output/commenttext.h"

#include <fmt/format.h>

#include <map>

#include "host/base/text.h"
#include "host/output/planturns.h"
#include "host/output/resulttext.h"

namespace velhost {

namespace {

std::string SourceComment(const TSourceFacts& source) {
  std::string text = "source: " + source.target;
  if (!source.recorded.empty()) text += ", recorded " + source.recorded;
  if (!source.serial.empty()) text += ", serial number " + source.serial;
  if (!source.uuid.empty()) text += ", UUID " + source.uuid;
  return SafeText(text);
}

}  // namespace

std::vector<std::string> HeaderComments(const TResultHeader& header, ELabels labels) {
  std::vector<std::string> lines;
  if (header.source.simulated) lines.push_back(SimulatedText(header.source));
  lines.push_back(SafeText(fmt::format("Instances collected by velhost {}, run {}, started {}, on {}",
                                       header.run.velhost, header.run.id, header.run.started, header.run.host)));
  lines.push_back(SourceComment(header.source));
  if (labels == ELabels::kShown) {
    for (const auto& [key, value] : header.run.labels) lines.push_back(SafeText("label " + key + "=" + value));
  }
  lines.push_back(MachineText(header));
  lines.push_back(
      SafeText(fmt::format("schema: {}, SHA-256 {}", Listed(header.schema.paths, ", "), header.schema.sha256)));
  return lines;
}

std::vector<std::string> InstanceComments(const TInstanceFacts& facts) {
  std::vector<std::string> lines = {SafeText(facts.key)};
  for (const TMissing& missing : facts.missing) lines.push_back("missing: " + MissingText(missing));
  return lines;
}

std::vector<std::string> SummaryComments(const TResultSummary& summary) {
  std::vector<std::string> lines = {"status: " + StatusText(summary),
                                    fmt::format("exit status: {}", summary.exitStatus)};
  for (const TReason& reason : summary.reasons) lines.push_back("reason: " + ReasonText(reason));
  const TPlanTurns turns(summary.plan);
  for (const TUnread& unread : summary.unread) {
    lines.push_back(SafeText("unread: " + turns.Key(unread.turn, unread.place) + ": " + NameOfUnread(unread.code)));
  }
  lines.push_back("exchanges: " + ExchangesText(summary));
  lines.push_back("elapsed: " + ElapsedText(summary.elapsedMs));
  return lines;
}

}  // namespace velhost
