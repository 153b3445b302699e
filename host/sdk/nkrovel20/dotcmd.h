// One dot command to a service processor.
#pragma once

#include <cstdint>
#include <vector>

#include "nkrovel20/api.h"

namespace NKROVEL20 {

/// A dot command: a command byte, identifier bytes and parameter bytes. The arrays are copied. A null
/// pointer, or a length of zero or less, gives an empty array.
class NKROVEL20_API dotCmd {
 public:
  dotCmd(unsigned char command, int identifierLength, int parameterLength, const unsigned char* identifier,
         const unsigned char* parameters);
  ~dotCmd();

  std::uint8_t GetCommand() const noexcept { return command_; }
  const std::vector<std::uint8_t>& GetIdentifier() const noexcept { return identifier_; }
  const std::vector<std::uint8_t>& GetParameters() const noexcept { return parameters_; }

 private:
  std::uint8_t command_;
  std::vector<std::uint8_t> identifier_;
  std::vector<std::uint8_t> parameters_;
};

}  // namespace NKROVEL20
