#include "tests/support/steps.h"

#include <utility>

namespace tests {

namespace {

template <typename TChange>
TStep Changed(const TStep& step, TChange change) {
  TStep copy = step;
  change(copy);
  return copy;
}

void Append(TBytes& bytes, const TBytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void AppendName(TBytes& bytes, const std::string& name) {
  for (std::size_t i = 0; i < 25; ++i) bytes.push_back(i < name.size() ? static_cast<std::uint8_t>(name[i]) : 0);
}

std::uint8_t ByteOf(std::uint32_t number, int place) { return static_cast<std::uint8_t>(number >> (8 * place)); }

// Frame of every storage-area request up to the sub-command.
TBytes StorageAreaRequest(std::uint8_t dataLength, std::uint8_t subCommand) {
  return {0x01, 0x20, 0x2E, 0x00, 0x90, dataLength, 0, 0, 0, 0x39, 0x30, 0x00, subCommand};
}

}  // namespace

TStep TStep::Answers(TBytes bytes) const {
  return Changed(*this, [&bytes](TStep& step) { step.data = std::move(bytes); });
}
TStep TStep::WithCode(std::uint8_t code) const {
  return Changed(*this, [code](TStep& step) { step.completionCode = code; });
}
TStep TStep::Fails(std::uint8_t code) const { return WithCode(code).Answers({}); }
TStep TStep::Lost() const {
  return Changed(*this, [](TStep& step) { step.answered = false; });
}
TStep TStep::WithDataLength(std::uint8_t lie) const {
  return Changed(*this, [lie](TStep& step) { step.dataLength = lie; });
}
TStep TStep::WithLength(int lie) const {
  return Changed(*this, [lie](TStep& step) { step.length = lie; });
}
TStep TStep::After(std::chrono::milliseconds time) const {
  return Changed(*this, [time](TStep& step) { step.delay = time; });
}
TStep TStep::Doing(std::function<void()> what) const {
  return Changed(*this, [&what](TStep& step) { step.action = std::move(what); });
}

TStep Ipmi(int node, TBytes request) {
  TStep step;
  step.target = node;
  step.request = std::move(request);
  return step;
}

TStep Dot(int serviceProcessor, TBytes request) {
  TStep step = Ipmi(serviceProcessor, std::move(request));
  step.isDot = true;
  return step;
}

TStep DotBlock(int serviceProcessor) { return Dot(serviceProcessor, {0x02, 0x0E, 0x06, 0x00, 0x00, 0x00, 0x10}); }

TStep Register(std::uint8_t chip, std::uint32_t address) {
  return Ipmi(0, {0x01, 0x20, 0x3A, 0x00, 0x62, 0x04, 0, 0, 0, chip, ByteOf(address, 2), ByteOf(address, 1),
                  ByteOf(address, 0)});
}

TStep Timestamp() { return Ipmi(0, {0x01, 0x20, 0x3A, 0x00, 0x6F}); }

TStep Open(const std::string& name, int node) {
  TBytes request = StorageAreaRequest(static_cast<std::uint8_t>(name.size() + 12), 0x01);
  Append(request, {0x01, 0, 0, 0, 0, 0, 0, 0});
  AppendName(request, name);
  return Ipmi(node, request);
}

TStep Size(const std::string& name, int node) {
  TBytes request = StorageAreaRequest(static_cast<std::uint8_t>(name.size() + 4), 0x06);
  AppendName(request, name);
  return Ipmi(node, request);
}

TStep Read(const TBytes& handle, std::uint32_t offset, std::uint8_t count, int node) {
  TBytes request = StorageAreaRequest(14, 0x02);
  Append(request, handle);
  Append(request, {ByteOf(offset, 0), ByteOf(offset, 1), ByteOf(offset, 2), ByteOf(offset, 3), count, 0x00});
  return Ipmi(node, request);
}

TStep Close(const TBytes& handle, int node) {
  TBytes request = StorageAreaRequest(8, 0x05);
  Append(request, handle);
  return Ipmi(node, request);
}

TBytes RegisterData(const TBytes& value, const TBytes& header) {
  TBytes data = header;
  Append(data, value);
  return data;
}

TBytes OemData(const TBytes& bytes) {
  TBytes data = {0x39, 0x30, 0x00};
  Append(data, bytes);
  return data;
}

TBytes SizeData(std::int32_t size) {
  const auto bits = static_cast<std::uint32_t>(size);
  return OemData({ByteOf(bits, 0), ByteOf(bits, 1), ByteOf(bits, 2), ByteOf(bits, 3)});
}

TBytes ReadData(const TBytes& bytes) {
  TBytes data = OemData({static_cast<std::uint8_t>(bytes.size()), 0x00});
  Append(data, bytes);
  return data;
}

}  // namespace tests
