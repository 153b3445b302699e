// Reads one capture file from every BMC node.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <string>

#include "plugin/torgaplugin.h"
#include "wire/storagearea.h"

namespace torgareg {

using namespace NKROVEL20;

namespace {

// The first read always requests ten bytes, even if the area is smaller.
constexpr int kSmallestBuffer = 10;

using TFileBuffer = std::unique_ptr<unsigned char, decltype(&std::free)>;

// Zero-filled; null if no buffer of that size is available. Untouched pages cost nothing, so if a broken BMC
// reports a huge size, only what is actually read takes memory.
TFileBuffer allocateFile(int size) {
  void* bytes = nullptr;
  if (size >= 0) bytes = std::calloc(static_cast<std::size_t>(std::max(size, kSmallestBuffer)), 1);
  return TFileBuffer(static_cast<unsigned char*>(bytes), &std::free);
}

}  // namespace

void TTORGARegPluginCallbacks::ReadErrFFDC(boost::shared_ptr<ICIMNamespace> ns, const std::string& name) {
  logger->writeDebug("Enter ReadErrFFDC funtion");
  SPLibrary* const first = SPLibrary::GetSplibraryInstance(0);
  const int nodes = first->GetNumberBMCNode();
  if (nodes == 0) {
    logger->writeStatus("No eQT/BMC on the system. TORGA log is not available.");
    return;
  }
  if (!first->IsIPMIDriversPresent()) {
    logger->writeDebug("IPMI driver is not installed on the system. TORGA log is not available.");
    return;
  }
  for (int node = 0; node < nodes; ++node) {
    logger->writeDebug("The system has" + dataToString<int>(nodes) + " . Now reading Node" + dataToString<int>(node));
    SPLibrary* const sp = SPLibrary::GetSplibraryInstance(node);
    std::array<unsigned char, wire::StorageArea::kHandleSize> handle{};
    if (!OpenStorageArea(handle.data(), name, sp)) {
      logger->writeDebug("Error when opening files. Exit.");  // continue with the other nodes
      continue;
    }
    int size = 0;
    if (!QueryStorageAreaSize(size, name, sp)) continue;  // deliberately does not close the area
    const TFileBuffer file = allocateFile(size);
    if (!file) {
      CloseStorageArea(handle.data(), sp);
      logger->writeDebug("Unable to allocate memory for the storage area.");
      continue;
    }
    const int bytesRead = ReadStorageArea(size, handle.data(), file.get(), sp);
    // Closed before the instance is built, so that a failure there does not leave the area open.
    CloseStorageArea(handle.data(), sp);
    AddErrFFDCinstance(ns, file.get(), bytesRead, name, node);
  }
  logger->writeDebug("Exit ReadErrFFDC funtion");
}

}  // namespace torgareg
