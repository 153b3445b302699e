// An ipmi_sim module that serves one BMC node of a server file or recording:
//
//   loadlib "/.../velbmcsim.so" "NODE FILE"
//
// ipmi_sim makes all calls on one thread. It removes the manufacturer id from a storage-area request before
// the call and puts it back into the answer.
extern "C" {
#include <OpenIPMI/mcserv.h>
}

#include <algorithm>
#include <array>
#include <boost/endian/conversion.hpp>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/sourcereader.h"
#include "host/bmc/serve/servedfile.h"
#include "wire/registerread.h"
#include "wire/storagearea.h"

#define BMCSIM_EXPORT extern "C" __attribute__((visibility("default")))
BMCSIM_EXPORT int ipmi_sim_module_print_version(sys_data_t* system, char* options);
BMCSIM_EXPORT int ipmi_sim_module_init(sys_data_t* system, char* options);

namespace velhost {

namespace {

constexpr auto& kId = wire::StorageArea::kManufacturerId;
constexpr std::uint8_t kUnspecifiedError = 0xFF;

std::vector<std::uint8_t> Answer(TServedNode& node, const msg_t& message, std::size_t capacity) {
  std::vector<std::uint8_t> request(message.data, message.data + message.len);
  const bool group = message.netfn == wire::StorageArea::kNetworkFunction;
  if (group) request.insert(request.begin(), kId.begin(), kId.end());
  auto answer = node.Answer(message.netfn, message.rs_lun, message.cmd, request, capacity);
  if (group) {
    const auto data = answer.begin() + 1;
    answer.erase(data, data + std::min<std::ptrdiff_t>(kId.size(), answer.end() - data));
  }
  return answer;
}

/// ipmi_sim's handler. On entry, `*size` is the capacity of `response`; on return, the number of bytes used.
void Handle(lmc_data_t* /*mc*/, msg_t* message, unsigned char* response, unsigned int* size, void* node) {
  try {
    const auto answer = Answer(*static_cast<TServedNode*>(node), *message, *size);
    const std::size_t count = std::min<std::size_t>(answer.size(), *size);
    std::copy_n(answer.begin(), count, response);
    *size = static_cast<unsigned int>(count);
  } catch (const std::exception&) {
    response[0] = kUnspecifiedError;
    *size = 1;
  }
}

/// Registers all commands of the network function of register reads, so that unknown ones advance the fault
/// counters too. Returns 0 or an error number.
int Register(TServedNode& node) {
  for (unsigned int command = 0; command <= 0xFF; ++command) {
    const int error = ipmi_emu_register_cmd_handler(wire::RegisterRead::kNetworkFunction,
                                                    static_cast<unsigned char>(command), Handle, &node);
    if (error != 0) return error;
  }
  return ipmi_emu_register_iana_handler(boost::endian::load_little_u24(kId.data()), Handle, &node);
}

/// Parses "NODE FILE" from the configuration.
std::unique_ptr<TServedNode> NodeOf(const std::string& options) {
  char* behind = nullptr;
  const long number = std::strtol(options.c_str(), &behind, 10);
  if (behind == options.c_str() || *behind != ' ' || behind[1] == '\0' || number < 0 || number > 0xFFFF) {
    throw THostError(EFailure::kInvalidArgument, "found the options '" + options + "', expected 'NODE FILE'");
  }
  TFileReader reader;
  return OpenServedNode(behind + 1, static_cast<int>(number), reader);
}

}  // namespace

}  // namespace velhost

int ipmi_sim_module_print_version(sys_data_t* /*system*/, char* /*options*/) {
  std::puts("velbmcsim");
  return 0;
}

int ipmi_sim_module_init(sys_data_t* /*system*/, char* options) {
  // Must live until ipmi_sim exits, because its handlers do.
  static velhost::TServedNode* node = nullptr;
  try {
    node = velhost::NodeOf(options != nullptr ? options : "").release();
    return velhost::Register(*node);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "velbmcsim: %s\n", error.what());
    return EINVAL;
  }
}
