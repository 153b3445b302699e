#include "host/bmc/record/recordedexchange.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/base/digits.h"

namespace velhost {

using wire::TCommandBuffer;

TRecordedLine LineAsking(const TIpmiRequest& request) {
  TRecordedLine line;
  line.node = request.Node();
  const unsigned char* const buffer = request.Buffer().Data();
  std::size_t size = TCommandBuffer::kSize;
  while (size > 0 && buffer[size - 1] == 0) --size;
  line.request.assign(buffer, buffer + size);
  return line;
}

TRecordedLine LineAsking(const TDotRequest& request) {
  TRecordedLine line;
  line.kind = TRecordedLine::EKind::kDot;
  line.node = request.serviceProcessor;
  line.command = request.command.GetCommand();
  line.identifier = request.command.GetIdentifier();
  line.parameters = request.command.GetParameters();
  return line;
}

TRecordedLine LineAskingTheTime() {
  TRecordedLine line;
  line.kind = TRecordedLine::EKind::kClock;
  return line;
}

bool AskTheSame(const TRecordedLine& one, const TRecordedLine& other) {
  return one.kind == other.kind && one.node == other.node && one.request == other.request &&
         one.command == other.command && one.identifier == other.identifier && one.parameters == other.parameters;
}

std::string DescribeAsked(const TRecordedLine& line) {
  switch (line.kind) {
    case TRecordedLine::EKind::kIpmi:
      return "the request \"" + FormatHexPairs(line.request) + "\" to node " + std::to_string(line.node);
    case TRecordedLine::EKind::kDot:
      return "the dot command " + std::to_string(line.command) + " \"" + FormatHexPairs(line.identifier) + "\" \"" +
             FormatHexPairs(line.parameters) + "\" to service processor " + std::to_string(line.node);
    case TRecordedLine::EKind::kClock: break;
  }
  return "a reading of the clock";
}

TIpmiRequest IpmiRequestOf(const TRecordedLine& line) {
  TCommandBuffer buffer;
  std::copy_n(line.request.begin(), std::min(line.request.size(), TCommandBuffer::kSize), buffer.Data());
  return {line.node, buffer};
}

TIpmiAnswer IpmiAnswerOf(const TRecordedLine& line) {
  std::vector<std::uint8_t> buffer = line.response;
  buffer.resize(TCommandBuffer::kSize);
  return {buffer[TCommandBuffer::kCompletionCode],
          {buffer.begin() + TCommandBuffer::kData, buffer.end()},
          buffer[TCommandBuffer::kDataLength],
          line.length};
}

TDotAnswer DotAnswerOf(const TRecordedLine& line, std::size_t capacity) {
  TDotAnswer answer{line.response};
  answer.data.resize(std::min(static_cast<std::size_t>(line.length), capacity));
  return answer;
}

}  // namespace velhost
