// What a service processor answers to the requests of steps.h, and servers from the texts of their files.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/sim/serverfile.h"
#include "tests/support/expectfailure.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"
#include "tests/support/readerfolder.h"
#include "tests/support/scriptedserviceprocessor.h"

namespace tests {

/// One exchange and its outcome.
struct TIpmiOutcome {
  bool answered = false;
  wire::TCommandBuffer before;
  wire::TCommandBuffer after;
  int length = 0;
};

inline constexpr int kUntouched = -77;

inline TIpmiOutcome Send(IServiceProcessor& processor, int node, const wire::TCommandBuffer& request,
                         const TStopSignal& stop) {
  TIpmiOutcome outcome = {false, request, request, kUntouched};
  const TIpmiRequest sent(node, request);
  if (const auto answer = processor.SendIpmi(sent, stop))
    outcome = {true, request, answer->InBufferOf(sent), answer->Length()};
  return outcome;
}
inline TIpmiOutcome Send(IServiceProcessor& processor, int node, const wire::TCommandBuffer& request) {
  const TStopSignal never;
  return Send(processor, node, request, never);
}

/// The request of a step, to its node.
inline TIpmiOutcome Send(IServiceProcessor& processor, const TStep& step) { return Send(processor, step.target, step); }
inline TIpmiOutcome Send(IServiceProcessor& processor, const TStep& step, const TStopSignal& stop) {
  return Send(processor, step.target, step, stop);
}

/// Expects this completion code and data, and around them what every answer has.
inline void ExpectAnswer(const TIpmiOutcome& outcome, int completionCode, const TBytes& data) {
  ASSERT_TRUE(outcome.answered);
  wire::TCommandBuffer expected = outcome.before;
  expected[4] = static_cast<std::uint8_t>(completionCode);
  expected[5] = static_cast<std::uint8_t>(data.size());
  for (std::size_t i = 9; i < wire::TCommandBuffer::kSize; ++i) expected[i] = i - 9 < data.size() ? data[i - 9] : 0;
  const auto bytes = [](const wire::TCommandBuffer& buffer) {
    return TBytes(buffer.Data(), buffer.Data() + wire::TCommandBuffer::kSize);
  };
  EXPECT_EQ(bytes(outcome.after), bytes(expected));
  EXPECT_EQ(outcome.length, 9 + static_cast<int>(data.size()));
}

inline void ExpectNoAnswer(const TIpmiOutcome& outcome) {
  EXPECT_FALSE(outcome.answered);
  EXPECT_EQ(outcome.after, outcome.before);
  EXPECT_EQ(outcome.length, kUntouched);
}

/// A dot command and its outcome; the caller's buffer is filled with 0xEE beforehand.
struct TDotOutcome {
  bool answered = false;
  TBytes buffer;
  int length = kUntouched;
  TBytes Block() const { return {buffer.begin(), buffer.begin() + length}; }
};

inline dotCmd BlockCommand(int size) {
  const TBytes identifier = {0x0E, 0x06};
  const TBytes parameters = {0x00, 0x00, static_cast<std::uint8_t>(size & 0xFF), static_cast<std::uint8_t>(size >> 8)};
  return dotCmd(0x02, 2, 4, identifier.data(), parameters.data());
}

inline TDotOutcome SendDot(IServiceProcessor& processor, int serviceProcessor, const dotCmd& command,
                           std::size_t bufferSize, const TStopSignal& stop) {
  TDotOutcome outcome = {false, TBytes(bufferSize, 0xEE), kUntouched};
  const auto answer = processor.SendDot({serviceProcessor, command, bufferSize}, stop);
  if (!answer) return outcome;
  EXPECT_LE(answer->data.size(), bufferSize);
  outcome.answered = true;
  std::copy_n(answer->data.begin(), std::min(answer->data.size(), bufferSize), outcome.buffer.begin());
  outcome.length = answer->Length();
  return outcome;
}
inline TDotOutcome SendDot(IServiceProcessor& processor, int serviceProcessor, const dotCmd& command,
                           std::size_t bufferSize) {
  const TStopSignal never;
  return SendDot(processor, serviceProcessor, command, bufferSize, never);
}

inline void ExpectNoAnswer(const TDotOutcome& outcome) {
  EXPECT_FALSE(outcome.answered);
  EXPECT_EQ(outcome.buffer, TBytes(outcome.buffer.size(), 0xEE));
  EXPECT_EQ(outcome.length, kUntouched);
}

inline TServerFile ReadFrom(const std::string& path, ISourceReader& reader) {
  TReaderFolder folder(path, reader);
  return ReadServerFile(path, reader, folder);
}

inline TStoredBytes Stored(const std::string& text) { return TBytes(text.begin(), text.end()); }
inline TBytes AllOf(const TStoredBytes& bytes) { return bytes.Read(0, bytes.Size()); }

/// A server from the text of its file, which is called "server.toml".
inline TServerFile ServerFrom(const std::string& text) {
  TMemoryReader reader;
  reader.Add("server.toml", text);
  return ReadFrom("server.toml", reader);
}

}  // namespace tests
