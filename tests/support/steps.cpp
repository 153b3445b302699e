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

TStep Ipmi(int node, const wire::TCommandBuffer& request) {
  return Ipmi(node, TBytes(request.Data(), request.Data() + wire::TCommandBuffer::kSize));
}

TStep Dot(int serviceProcessor, TBytes request) {
  TStep step = Ipmi(serviceProcessor, std::move(request));
  step.isDot = true;
  return step;
}

TStep DotBlock(int serviceProcessor) { return Dot(serviceProcessor, {0x02, 0x0E, 0x06, 0x00, 0x00, 0x00, 0x10}); }

TStep Register(std::uint8_t chip, std::uint32_t address) { return Ipmi(0, ReadRegister(chip, address)); }
TStep Timestamp() { return Ipmi(0, ReadTimestamp()); }
TStep Open(const std::string& name, int node) { return Ipmi(node, OpenArea(name)); }
TStep Size(const std::string& name, int node) { return Ipmi(node, QuerySize(name)); }
TStep Read(const TBytes& handle, std::uint32_t offset, std::uint8_t count, int node) {
  return Ipmi(node, ReadArea(handle, offset, count));
}
TStep Close(const TBytes& handle, int node) { return Ipmi(node, CloseArea(handle)); }

TBytes RegisterData(const TBytes& value, const TBytes& header) { return header + value; }
TBytes OemData(const TBytes& bytes) { return TBytes{0x39, 0x30, 0x00} + bytes; }
TBytes SizeData(std::int32_t size) { return OemData(LittleEndian(static_cast<std::uint32_t>(size))); }
TBytes ReadData(const TBytes& bytes) { return OemData(TBytes{static_cast<std::uint8_t>(bytes.size()), 0x00} + bytes); }

}  // namespace tests
