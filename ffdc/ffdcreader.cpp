// Reads one kind of capture file from every BMC node.
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

// A read of less than ten bytes still asks for ten.
constexpr int kSmallestBuffer = 10;

using TFileBuffer = std::unique_ptr<unsigned char, decltype(&std::free)>;

// Zero-filled; empty where no buffer of that size can be had. Untouched pages cost nothing, so that
// a size that only a broken BMC reports takes memory for what was read alone.
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
      logger->writeDebug("Error when opening files. Exit.");  // the other nodes are still read
      continue;
    }
    int size = 0;
    if (!QueryStorageAreaSize(size, name, sp)) continue;  // deliberately without closing the area
    const TFileBuffer file = allocateFile(size);
    if (!file) {
      CloseStorageArea(handle.data(), sp);
      logger->writeDebug("Unable to allocate memory for the storage area.");
      continue;
    }
    const int bytesRead = ReadStorageArea(size, handle.data(), file.get(), sp);
    // Closed before the instance is built, so that a failure there leaves no area open.
    CloseStorageArea(handle.data(), sp);
    AddErrFFDCinstance(ns, file.get(), bytesRead, name, node);
  }
  logger->writeDebug("Exit ReadErrFFDC funtion");
}

}  // namespace torgareg
