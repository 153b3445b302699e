#include "host/bmc/serve/servedrecording.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "host/base/digits.h"
#include "host/bmc/record/recordedexchange.h"
#include "host/bmc/sim/simulatedserver.h"

namespace velhost {

namespace {

std::string ReasonOfLengths(const TIpmiAnswer& answer) {
  const int data = answer.DataLength();
  const int expected = static_cast<int>(wire::TCommandBuffer::kData) + data;
  const bool fits = expected <= static_cast<int>(wire::TCommandBuffer::kSize);
  if (answer.Length() == expected && fits) return {};
  return "found a length of " + std::to_string(answer.Length()) + " with " + std::to_string(data) +
         " bytes of data in byte 5, but over IPMI an answer has only one length; expected " + std::to_string(expected);
}

std::string ReasonOfData(const TIpmiRequest& request, const TIpmiAnswer& answer) {
  const std::vector<std::uint8_t> id = DataOfBareAnswer(request);
  if (answer.DataLength() >= id.size() && std::equal(id.begin(), id.end(), answer.data.begin())) return {};
  return "found an answer without the manufacturer id, but ipmi_sim puts it in every answer to an OEM/Group request; "
         "expected data that begin with " +
         FormatHexPairs(id);
}

/// Why ipmi_sim cannot answer as this line does.
std::string ReasonOfLine(const TRecordedLine& line, int node) {
  if (line.kind == TRecordedLine::EKind::kClock) return {};
  if (!line.answered) {
    return "found an exchange without an answer, but ipmi_sim answers every request; expected a recording in which "
           "none "
           "was lost";
  }
  if (line.kind != TRecordedLine::EKind::kIpmi || line.node != node) return {};
  const TIpmiAnswer answer = IpmiAnswerOf(line);
  std::string reason = ReasonOfLengths(answer);
  return reason.empty() ? ReasonOfData(IpmiRequestOf(line), answer) : reason;
}

TNotServed ReasonOfHeader(const TRecordingHeader& header, int node) {
  TNotServed refusal = ReasonOfNode(node, static_cast<std::size_t>(header.discovery.bmcNodes));
  if (refusal.reason.empty() && !header.discovery.ipmiDriver) {
    refusal.reason = "the recorded server has no IPMI driver, so no IPMI exchange takes place";
  }
  return refusal;
}

TNotServed ReasonNotToServe(const std::string& path, const TStoredBytes& bytes, ISourceReader* reader, int node) {
  TNotServed first;
  const TCheckedRecording recording(path, bytes, reader,
                                    [&](const TRecordedLine& line, std::string_view /*text*/, std::size_t /*start*/) {
                                      if (!first.reason.empty()) return;
                                      first = {ReasonOfLine(line, node), line.number, 1};
                                    });
  TNotServed refusal = ReasonOfHeader(recording.Header(), node);
  return refusal.reason.empty() ? first : refusal;
}

const TStoredBytes& Servable(const std::string& path, const TStoredBytes& recording, ISourceReader* reader, int node) {
  RefuseNotServed(ReasonNotToServe(path, recording, reader, node), path);
  return recording;
}

}  // namespace

TServedRecording::TServedRecording(const std::string& path, const TStoredBytes& recording, ISourceReader* reader,
                                   int node)
    : TServedNode(node), image_(path, Servable(path, recording, reader, node), reader) {
  bare_.nodes.resize(1);
}

std::optional<TIpmiAnswer> TServedRecording::Send(const TIpmiRequest& request, std::size_t capacity) {
  auto answer = image_.SendIpmi(request, never_);
  if (!answer) return AnswerIpmi(bare_, TIpmiRequest(0, request.Buffer()), capacity);
  answer->data.resize(std::min<std::size_t>(answer->DataLength(), capacity));
  return answer;
}

}  // namespace velhost
