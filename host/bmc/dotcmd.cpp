#include "nkrovel20/dotcmd.h"

namespace NKROVEL20 {

namespace {

std::vector<std::uint8_t> Copy(const unsigned char* bytes, int length) {
  if (bytes == nullptr || length <= 0) return {};
  return std::vector<std::uint8_t>(bytes, bytes + length);
}

}  // namespace

dotCmd::dotCmd(unsigned char command, int identifierLength, int parameterLength, const unsigned char* identifier,
               const unsigned char* parameters)
    : command_(command),
      identifier_(Copy(identifier, identifierLength)),
      parameters_(Copy(parameters, parameterLength)) {}

dotCmd::~dotCmd() = default;

}  // namespace NKROVEL20
