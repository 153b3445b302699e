// A library with the LAN module's entry point, but of another version.
#include "host/bmc/lan/lanmodule.h"

extern "C" __attribute__((visibility("default"))) const VelLanModule* VelhostLanModule(void);
const VelLanModule* VelhostLanModule(void) {
  static constexpr VelLanModule kOther = {VELHOST_LAN_INTERFACE + 1, nullptr, nullptr, nullptr};
  return &kOther;
}
