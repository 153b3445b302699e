// Exchanges as the lines of a recording hold them: what was asked, and the answer.
#pragma once

#include <cstddef>
#include <string>

#include "host/bmc/exchange.h"
#include "host/bmc/record/recordingline.h"

namespace velhost {

// Lines that ask and have no answer yet.
TRecordedLine LineAsking(const TIpmiRequest& request);
TRecordedLine LineAsking(const TDotRequest& request);
TRecordedLine LineAskingTheTime();

/// Whether both lines ask the same of the same service processor. Command buffers are compared as a whole.
bool AskTheSame(const TRecordedLine& one, const TRecordedLine& other);
/// What the line asks: the request "01 20 3a 00 6f" to node 0.
std::string DescribeAsked(const TRecordedLine& line);

/// The request of a line of kind kIpmi.
TIpmiRequest IpmiRequestOf(const TRecordedLine& line);
/// The answer of such a line. Both lengths are as recorded, whether or not they are true.
TIpmiAnswer IpmiAnswerOf(const TRecordedLine& line);
/// The answer of a line of kind kDot, cut to the capacity.
TDotAnswer DotAnswerOf(const TRecordedLine& line, std::size_t capacity);

}  // namespace velhost
